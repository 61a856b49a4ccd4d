#include "jpeg_codec.h"

#include <cmath>
#include <exception>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "jpeg_errors.h"
#include "jpeg_markers.h"

namespace tarvo::host {

namespace {

constexpr std::size_t kChunk = 65536;

// The library fills a chunk, which then goes to the file.
struct Target {
    jpeg_destination_mgr manager;  // first: the library's pointer to it is a pointer to this
    ByteSink* file;
    std::exception_ptr failure;
    std::uint8_t chunk[kChunk];

    void begin_chunk() {
        manager.next_output_byte = chunk;
        manager.free_in_buffer = kChunk;
    }

    // What the file throws waits for the end of the library's call.
    bool pass_on(std::size_t count) noexcept {
        try {
            file->write({chunk, count});
        } catch (...) {
            failure = std::current_exception();
        }
        begin_chunk();
        return !failure;
    }
};
static_assert(std::is_standard_layout_v<Target>);

Target& target_of(j_compress_ptr info) { return *reinterpret_cast<Target*>(info->dest); }

void on_begin(j_compress_ptr info) { target_of(info).begin_chunk(); }

[[noreturn]] void stop(j_compress_ptr info) { fail_jpeg(reinterpret_cast<j_common_ptr>(info), "cannot be written"); }

boolean on_chunk_full(j_compress_ptr info) {
    if (!target_of(info).pass_on(kChunk)) stop(info);
    return TRUE;
}

void on_end(j_compress_ptr info) {
    if (!target_of(info).pass_on(kChunk - info->dest->free_in_buffer)) stop(info);
}

class JpegWriter {
public:
    JpegWriter(const PixelSource& image, const EncodeOptions& how, ByteSink& file)
        : image_(image), form_(image.form()), how_(how), markers_(markers_of(how.metadata)), grey_(is_grey(form_)) {
        target_.file = &file;
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

    void write() {
        std::vector<Rgba> colors(static_cast<std::size_t>(form_.width));
        Bytes pixels(form_.row_bytes()), row(colors.size() * 3);
        if (begin_file() && write_rows(pixels.data(), colors.data(), row.data()) && end_file()) return;
        if (target_.failure) std::rethrow_exception(target_.failure);
        if (errors_.out_of_memory()) throw std::bad_alloc();
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
        info_.image_width = static_cast<JDIMENSION>(form_.width);
        info_.image_height = static_cast<JDIMENSION>(form_.height);
        info_.input_components = grey_ ? 1 : 3;
        info_.in_color_space = grey_ ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_set_defaults(&info_);
        jpeg_set_quality(&info_, how_.jpeg.quality, TRUE);
        info_.comp_info[0].h_samp_factor = grey_ ? 1 : how_.jpeg.across;
        info_.comp_info[0].v_samp_factor = grey_ ? 1 : how_.jpeg.down;
        tell_resolution();
        jpeg_start_compress(&info_, TRUE);
        for (const JpegMarker& marker : markers_)
            jpeg_write_marker(&info_, JPEG_APP0 + marker.number, marker.contents.data(),
                              static_cast<unsigned>(marker.contents.size()));
        return true;
    }

    void tell_resolution() {
        if (!how_.metadata.resolution) return;
        const bool centimetres = how_.metadata.resolution->unit == Resolution::Unit::centimetre;
        const Resolution told =
            centimetres ? *how_.metadata.resolution : how_.metadata.resolution->in(Resolution::Unit::inch);
        info_.density_unit = told.unit == Resolution::Unit::none ? 0 : centimetres ? 2 : 1;
        info_.X_density = static_cast<UINT16>(std::lround(told.x));
        info_.Y_density = static_cast<UINT16>(std::lround(told.y));
    }

    bool write_rows(std::uint8_t* pixels, Rgba* colors, std::uint8_t* row) {
        if (setjmp(errors_.target)) return false;
        for (int y = 0; y < form_.height; ++y) {
            image_.read(y, pixels);
            read_colors(form_, pixels, colors);
            pack(colors, row);
            jpeg_write_scanlines(&info_, &row, 1);
        }
        return true;
    }

    void pack(const Rgba* colors, std::uint8_t* out) const {
        for (const Rgba* color = colors; color != colors + form_.width; ++color) {
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

    const PixelSource& image_;
    const ImageForm& form_;
    const EncodeOptions& how_;
    const std::vector<JpegMarker> markers_;
    const bool grey_;
    JpegErrors errors_;
    Target target_ = {};
    jpeg_compress_struct info_ = {};
};

}  // namespace

FilePixels encode_jpeg(const PixelSource& image, const EncodeOptions& options, ByteSink& file) {
    JpegWriter(image, options, file).write();
    return {is_grey(image.form()) ? FilePixels::Colors::grey : FilePixels::Colors::rgb};
}

}  // namespace tarvo::host
