#include "jpeg_codec.h"

#include <cstring>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include "exif.h"
#include "jpeg_errors.h"

namespace tarvo::host {

namespace {

// Real files have about ten; each costs as much time as a whole picture.
constexpr int kMostScans = 200;

constexpr std::uint8_t kExifMark[] = {'E', 'x', 'i', 'f', 0, 0};

struct Source {
    jpeg_source_mgr manager;  // first: the library's pointer to it is a pointer to this
    bool ran_out = false;
};
static_assert(std::is_standard_layout_v<Source>);

[[noreturn]] void ran_out(j_decompress_ptr info) {
    reinterpret_cast<Source*>(info->src)->ran_out = true;
    fail_jpeg(reinterpret_cast<j_common_ptr>(info), "cut short");
}

boolean on_buffer_empty(j_decompress_ptr info) { ran_out(info); }

void on_skip(j_decompress_ptr info, long count) {
    if (count <= 0) return;
    if (static_cast<std::size_t>(count) > info->src->bytes_in_buffer) ran_out(info);
    info->src->next_input_byte += count;
    info->src->bytes_in_buffer -= static_cast<std::size_t>(count);
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
    explicit JpegReader(std::span<const std::uint8_t> file) {
        info_.err = &errors_.manager;
        if (!create()) {
            jpeg_destroy_decompress(&info_);
            throw std::bad_alloc();
        }
        source_.manager.next_input_byte = file.data();
        source_.manager.bytes_in_buffer = file.size();
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

    Image read(const Limits& limits) {
        require(read_header());
        check_size(info_.image_width, info_.image_height, limits);
        const bool grey = info_.out_color_space == JCS_GRAYSCALE;
        const bool cmyk = info_.out_color_space == JCS_CMYK;
        Image image(static_cast<int>(info_.image_width), static_cast<int>(info_.image_height),
                    grey ? Layout::indexed : Layout::rgb);
        if (grey) image.palette = grey_palette(8);
        const int turned = orientation();  // the library forgets its markers with the last row
        Bytes ink(cmyk ? std::size_t{4} * info_.image_width : 0);
        require(read_pixels(image, cmyk ? ink.data() : nullptr));
        return oriented(std::move(image), turned);
    }

private:
    void require(bool done) const {
        if (done) return;
        if (source_.ran_out) throw cut_short(static_cast<int>(info_.output_scanline));
        throw FileError(std::string("damaged: ") + errors_.message);
    }

    bool create() {
        if (setjmp(errors_.target)) return false;
        jpeg_create_decompress(&info_);
        return true;
    }

    bool read_header() {
        if (setjmp(errors_.target)) return false;
        jpeg_save_markers(&info_, JPEG_APP0 + 1, 0xFFFF);
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

    // With room for a row of ink the file is one of inks.
    bool read_pixels(Image& image, std::uint8_t* ink) {
        if (setjmp(errors_.target)) return false;
        jpeg_start_decompress(&info_);
        while (info_.output_scanline < info_.output_height) {
            std::uint8_t* row = image.row(static_cast<int>(info_.output_scanline));
            JSAMPROW target = ink ? ink : row;
            jpeg_read_scanlines(&info_, &target, 1);
            // Adobe's programs, which mark their files, write inks inverted.
            if (ink) cmyk_to_rgb(ink, info_.saw_Adobe_marker, image.width, row);
        }
        jpeg_finish_decompress(&info_);
        return true;
    }

    int orientation() const {
        for (const jpeg_marker_struct* marker = info_.marker_list; marker; marker = marker->next)
            if (marker->data_length > sizeof kExifMark && std::memcmp(marker->data, kExifMark, sizeof kExifMark) == 0)
                return exif_orientation(std::span(marker->data, marker->data_length).subspan(sizeof kExifMark));
        return 1;
    }

    JpegErrors errors_;
    Source source_ = {};
    jpeg_progress_mgr progress_ = {};
    jpeg_decompress_struct info_ = {};
};

}  // namespace

Image decode_jpeg(std::span<const std::uint8_t> file, const Limits& limits) { return JpegReader(file).read(limits); }

}  // namespace tarvo::host
