#include "png_codec.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <new>
#include <string>
#include <utility>

namespace tarvo::host {

namespace {

bool same_colors(const Image& image, const Palette& palette) {
    return std::equal(image.palette.begin(), image.palette.begin() + image.palette_size(), palette.begin());
}

// One file being written. As with reading, the functions that call libpng hold nothing that has a destructor.
class PngWriter {
public:
    explicit PngWriter(const Image& image) : image_(image) {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, on_error, on_warning);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        if (!info_) {
            png_destroy_write_struct(&png_, nullptr);
            throw std::bad_alloc();
        }
        png_set_write_fn(png_, this, on_write, nullptr);
    }
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    Bytes write() {
        if (write_all()) return std::move(file_);
        if (no_memory_) throw std::bad_alloc();
        throw FileError(std::string("cannot be made: ") + message_);
    }

private:
    static void on_error(png_structp png, png_const_charp message) {
        auto* self = static_cast<PngWriter*>(png_get_error_ptr(png));
        std::snprintf(self->message_, sizeof self->message_, "%s", message);
        png_longjmp(png, 1);
    }

    static void on_warning(png_structp, png_const_charp) {}

    static void on_write(png_structp png, png_bytep bytes, std::size_t count) {
        auto* self = static_cast<PngWriter*>(png_get_io_ptr(png));
        if (!self->append(bytes, count)) png_error(png, "out of memory");
    }

    bool append(const std::uint8_t* bytes, std::size_t count) noexcept {
        try {
            file_.insert(file_.end(), bytes, bytes + count);
        } catch (const std::bad_alloc&) {
            no_memory_ = true;
        }
        return !no_memory_;
    }

    bool write_all() {
        if (setjmp(png_jmpbuf(png_))) return false;
        describe();
        png_write_info(png_, info_);
        png_set_packing(png_);
        if (inverted_) png_set_invert_mono(png_);
        for (int y = 0; y < image_.height; ++y) png_write_row(png_, image_.row(y));
        png_write_end(png_, info_);
        return true;
    }

    void describe() {
        int color_type = image_.layout == Layout::rgba ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
        if (image_.layout == Layout::indexed) {
            inverted_ = image_.index_bits == 1 && image_.palette[0] == kWhite && image_.palette[1] == kBlack;
            const bool grey = inverted_ || same_colors(image_, grey_palette(image_.index_bits));
            color_type = grey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_PALETTE;
        }
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(image_.width), static_cast<png_uint_32>(image_.height),
                     image_.layout == Layout::indexed ? image_.index_bits : 8, color_type, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (color_type == PNG_COLOR_TYPE_PALETTE) describe_palette();
    }

    void describe_palette() {
        png_color colors[256];
        png_byte alphas[256];
        const int count = image_.palette_size();
        for (int i = 0; i < count; ++i) {
            const Rgba& color = image_.palette[static_cast<std::size_t>(i)];
            colors[i] = {color.red, color.green, color.blue};
            alphas[i] = color.alpha;
        }
        png_set_PLTE(png_, info_, colors, count);
        if (has_alpha(image_)) png_set_tRNS(png_, info_, alphas, count, nullptr);
    }

    const Image& image_;
    Bytes file_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    bool inverted_ = false;
    bool no_memory_ = false;
    char message_[160] = "";
};

}  // namespace

Bytes encode_png(const Image& image, const EncodeOptions&) { return PngWriter(image).write(); }

}  // namespace tarvo::host
