#include "jpeg_codec.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <type_traits>

#include "exif.h"
#include "jpeg_errors.h"

namespace tarvo::host {

namespace {

// Real files have about ten; each costs as much time as a whole picture.
constexpr int kMostScans = 200;

constexpr std::uint8_t kExifMark[] = {'E', 'x', 'i', 'f', 0, 0};

// The library takes the file block by block.
struct Source {
    jpeg_source_mgr manager;  // first: the library's pointer to it is a pointer to this
    ByteSource* file;
    std::exception_ptr failure;
    bool ran_out;

    // What the file throws waits for the end of the library's call.
    bool next_block() noexcept {
        try {
            const auto block = file->take();
            manager.next_input_byte = block.data();
            manager.bytes_in_buffer = block.size();
            ran_out = block.empty();
        } catch (...) {
            failure = std::current_exception();
        }
        return !failure && !ran_out;
    }
};
static_assert(std::is_standard_layout_v<Source>);

boolean on_buffer_empty(j_decompress_ptr info) {
    if (!reinterpret_cast<Source*>(info->src)->next_block())
        fail_jpeg(reinterpret_cast<j_common_ptr>(info), "cut short");
    return TRUE;
}

void on_skip(j_decompress_ptr info, long count) {
    if (count <= 0) return;
    auto wanted = static_cast<std::size_t>(count);
    for (; wanted > info->src->bytes_in_buffer; on_buffer_empty(info)) wanted -= info->src->bytes_in_buffer;
    info->src->next_input_byte += wanted;
    info->src->bytes_in_buffer -= wanted;
}

std::uint8_t next_byte(j_decompress_ptr info) {
    if (info->src->bytes_in_buffer == 0) on_buffer_empty(info);
    --info->src->bytes_in_buffer;
    return *info->src->next_input_byte++;
}

void on_progress(j_common_ptr info) {
    if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > kMostScans) fail_jpeg(info, "too many scans");
}

std::uint8_t times(int a, int b) { return static_cast<std::uint8_t>((a * b + 127) / 255); }

// Paper where there is no ink. `ink` counts towards 255, or from it when inverted.
void cmyk_to_rgb(const std::uint8_t* ink, bool inverted, int width, std::uint8_t* out) {
    const int flip = inverted ? 0 : 255;
    for (int x = 0; x < width; ++x, ink += 4, out += 3)
        for (int channel = 0; channel < 3; ++channel) out[channel] = times(ink[channel] ^ flip, ink[3] ^ flip);
}

class JpegReader {
public:
    explicit JpegReader(ByteSource& file) {
        info_.err = &errors_.manager;
        info_.client_data = this;
        if (!create()) {
            jpeg_destroy_decompress(&info_);
            throw std::bad_alloc();
        }
        source_.file = &file;
        source_.manager.init_source = [](j_decompress_ptr) {};
        source_.manager.fill_input_buffer = on_buffer_empty;
        source_.manager.skip_input_data = on_skip;
        source_.manager.resync_to_restart = jpeg_resync_to_restart;
        source_.manager.term_source = [](j_decompress_ptr) {};
        info_.src = &source_.manager;
        progress_.progress_monitor = on_progress;
        info_.progress = &progress_;
    }
    ~JpegReader() { jpeg_destroy_decompress(&info_); }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    void read(std::uint64_t max_pixels, PixelTarget& target) {
        require(read_header());
        check_size(info_.image_width, info_.image_height, max_pixels);
        ImageForm form{.width = static_cast<int>(info_.image_width), .height = static_cast<int>(info_.image_height)};
        const bool inks = info_.out_color_space == JCS_CMYK;
        if (info_.out_color_space == JCS_GRAYSCALE) {
            form.layout = Layout::indexed;
            form.palette = grey_palette(8);
            form.file = {FilePixels::Colors::grey};
        } else if (inks) {
            form.file = {FilePixels::Colors::inks};
        }
        target.turn(read_exif({exif_.data(), exif_size_}).shown_orientation());
        target.begin(form, coefficient_bytes());
        Bytes row(form.row_bytes()), ink(inks ? std::size_t{4} * info_.image_width : 0);
        require(read_pixels(form.width, row.data(), inks ? ink.data() : nullptr, target));
    }

private:
    void require(bool done) const {
        if (done) return;
        if (source_.failure) std::rethrow_exception(source_.failure);
        if (source_.ran_out) throw cut_short(static_cast<int>(info_.output_scanline));
        if (errors_.out_of_memory()) throw std::bad_alloc();
        throw FileError(std::string("damaged: ") + errors_.message);
    }

    bool create() {
        if (setjmp(errors_.target)) return false;
        jpeg_create_decompress(&info_);
        return true;
    }

    bool read_header() {
        if (setjmp(errors_.target)) return false;
        jpeg_set_marker_processor(&info_, JPEG_APP0 + 1, on_exif_marker);
        jpeg_read_header(&info_, TRUE);
        switch (info_.jpeg_color_space) {
            case JCS_GRAYSCALE: info_.out_color_space = JCS_GRAYSCALE; break;
            case JCS_RGB:
            case JCS_YCbCr: info_.out_color_space = JCS_RGB; break;
            case JCS_CMYK:
            case JCS_YCCK: info_.out_color_space = JCS_CMYK; break;
            default: fail_jpeg(reinterpret_cast<j_common_ptr>(&info_), "colors of an unknown kind");
        }
        return true;
    }

    // Keeps the first Exif block alone: a file may have any number.
    static boolean on_exif_marker(j_decompress_ptr info) {
        std::size_t left = std::size_t{next_byte(info)} << 8;
        left |= next_byte(info);
        left -= std::min<std::size_t>(left, 2);  // its own bytes
        std::uint8_t mark[sizeof kExifMark] = {};
        for (std::size_t i = 0; i < sizeof mark && left > 0; ++i, --left) mark[i] = next_byte(info);
        auto* self = static_cast<JpegReader*>(info->client_data);
        const bool first = self->exif_size_ == 0 && std::memcmp(mark, kExifMark, sizeof mark) == 0;
        for (; first && left > 0; --left) self->exif_[self->exif_size_++] = next_byte(info);
        on_skip(info, static_cast<long>(left));
        return TRUE;
    }

    // The library keeps all of a file that comes in several scans.
    std::uint64_t coefficient_bytes() {
        if (!info_.progressive_mode && !jpeg_has_multiple_scans(&info_)) return 0;
        std::uint64_t blocks = 0;
        for (int i = 0; i < info_.num_components; ++i) {
            const jpeg_component_info& component = info_.comp_info[i];
            blocks += padded(component.width_in_blocks, component.h_samp_factor) *
                      padded(component.height_in_blocks, component.v_samp_factor);
        }
        return blocks * sizeof(JBLOCK);
    }

    static std::uint64_t padded(JDIMENSION blocks, int factor) {
        const auto unit = static_cast<std::uint64_t>(factor);
        return (blocks + unit - 1) / unit * unit;
    }

    // With room for a row of ink the file is one of inks.
    bool read_pixels(int width, std::uint8_t* row, std::uint8_t* ink, PixelTarget& target) {
        if (setjmp(errors_.target)) return false;
        jpeg_start_decompress(&info_);
        while (info_.output_scanline < info_.output_height) {
            const int y = static_cast<int>(info_.output_scanline);
            JSAMPROW samples = ink ? ink : row;
            jpeg_read_scanlines(&info_, &samples, 1);
            // Adobe's programs, which mark their files, write inks inverted.
            if (ink) cmyk_to_rgb(ink, info_.saw_Adobe_marker, width, row);
            target.put({.x = 0, .y = y, .step = 1, .count = width, .pixels = row});
        }
        jpeg_finish_decompress(&info_);
        return true;
    }

    JpegErrors errors_;
    Source source_ = {};
    jpeg_progress_mgr progress_ = {};
    jpeg_decompress_struct info_ = {};
    Bytes exif_ = Bytes(0x10000);  // more than a marker can hold
    std::size_t exif_size_ = 0;
};

}  // namespace

void decode_jpeg(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target) {
    JpegReader(file).read(max_pixels, target);
}

}  // namespace tarvo::host
