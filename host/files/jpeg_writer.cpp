#include "jpeg_codec.h"

#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include "jpeg_errors.h"

namespace tarvo::host {

namespace {

constexpr std::size_t kChunk = 65536;

// The library fills a chunk, which is then added to the file.
struct Target {
    jpeg_destination_mgr manager;  // first: the library's pointer to it is a pointer to this
    Bytes file;
    bool no_memory = false;
    std::uint8_t chunk[kChunk];

    void begin_chunk() {
        manager.next_output_byte = chunk;
        manager.free_in_buffer = kChunk;
    }

    bool take(std::size_t count) noexcept {
        try {
            file.insert(file.end(), chunk, chunk + count);
        } catch (const std::bad_alloc&) {
            no_memory = true;
        }
        begin_chunk();
        return !no_memory;
    }
};
static_assert(std::is_standard_layout_v<Target>);

Target& target_of(j_compress_ptr info) { return *reinterpret_cast<Target*>(info->dest); }

void on_begin(j_compress_ptr info) { target_of(info).begin_chunk(); }

[[noreturn]] void ran_out(j_compress_ptr info) { fail_jpeg(reinterpret_cast<j_common_ptr>(info), "out of memory"); }

boolean on_chunk_full(j_compress_ptr info) {
    if (!target_of(info).take(kChunk)) ran_out(info);
    return TRUE;
}

void on_end(j_compress_ptr info) {
    if (!target_of(info).take(kChunk - info->dest->free_in_buffer)) ran_out(info);
}

class JpegWriter {
public:
    JpegWriter(const Image& image, int quality) : image_(image), quality_(quality), grey_(is_grey(image)) {
        info_.err = &errors_.manager;
        if (!create()) {
            jpeg_destroy_compress(&info_);
            throw std::bad_alloc();
        }
        target_.manager.init_destination = on_begin;
        target_.manager.empty_output_buffer = on_chunk_full;
        target_.manager.term_destination = on_end;
        info_.dest = &target_.manager;
    }
    ~JpegWriter() { jpeg_destroy_compress(&info_); }
    JpegWriter(const JpegWriter&) = delete;
    JpegWriter& operator=(const JpegWriter&) = delete;

    Bytes write() {
        std::vector<Rgba> colors(static_cast<std::size_t>(image_.width));
        Bytes row(colors.size() * 3);
        if (begin_file() && write_rows(colors.data(), row.data()) && end_file()) return std::move(target_.file);
        if (target_.no_memory) throw std::bad_alloc();
        throw FileError(std::string("cannot be made: ") + errors_.message);
    }

private:
    bool create() {
        if (setjmp(errors_.target)) return false;
        jpeg_create_compress(&info_);
        return true;
    }

    bool begin_file() {
        if (setjmp(errors_.target)) return false;
        info_.image_width = static_cast<JDIMENSION>(image_.width);
        info_.image_height = static_cast<JDIMENSION>(image_.height);
        info_.input_components = grey_ ? 1 : 3;
        info_.in_color_space = grey_ ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_set_defaults(&info_);
        jpeg_set_quality(&info_, quality_, TRUE);
        info_.comp_info[0].h_samp_factor = info_.comp_info[0].v_samp_factor = 1;
        jpeg_start_compress(&info_, TRUE);
        return true;
    }

    bool write_rows(Rgba* colors, std::uint8_t* row) {
        if (setjmp(errors_.target)) return false;
        for (int y = 0; y < image_.height; ++y) {
            read_row(image_, y, colors);
            pack(colors, row);
            jpeg_write_scanlines(&info_, &row, 1);
        }
        return true;
    }

    void pack(const Rgba* colors, std::uint8_t* out) const {
        for (const Rgba* color = colors; color != colors + image_.width; ++color) {
            *out++ = color->red;
            if (grey_) continue;
            *out++ = color->green;
            *out++ = color->blue;
        }
    }

    bool end_file() {
        if (setjmp(errors_.target)) return false;
        jpeg_finish_compress(&info_);
        return true;
    }

    const Image& image_;
    const int quality_;
    const bool grey_;
    JpegErrors errors_;
    Target target_ = {};
    jpeg_compress_struct info_ = {};
};

}  // namespace

Bytes encode_jpeg(const Image& image, const EncodeOptions& options) {
    return JpegWriter(image, options.jpeg_quality).write();
}

}  // namespace tarvo::host
