#include "png_codec.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "exif.h"

namespace tarvo::host {

namespace {

// What the pixels do not depend on, or what is ignored: not even unpacked.
constexpr png_byte kIgnoredChunks[] = "iCCP\0gAMA\0cHRM\0sRGB\0sPLT\0tEXt\0zTXt\0iTXt";
constexpr int kIgnoredChunkCount = sizeof kIgnoredChunks / 5;

// One file being read. libpng leaves a failed call by a long jump, which runs no destructors: the functions that call
// it (those that return bool, false after such a failure) hold nothing that has one.
class PngReader {
public:
    explicit PngReader(std::span<const std::uint8_t> file) : rest_(file) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, on_error, on_warning);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        if (!info_) {
            png_destroy_read_struct(&png_, nullptr, nullptr);
            throw std::bad_alloc();
        }
        png_set_read_fn(png_, this, on_read);
    }
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    Image read(const Limits& limits) {
        require(read_header());
        check_size(png_get_image_width(png_, info_), png_get_image_height(png_, info_), limits);
        require(choose_layout());
        Image image(static_cast<int>(png_get_image_width(png_, info_)),
                    static_cast<int>(png_get_image_height(png_, info_)), layout_);
        image.index_bits = index_bits_;
        if (layout_ == Layout::indexed) image.palette = palette();
        require(read_pixels(image));
        return oriented(std::move(image), orientation());
    }

private:
    static void on_error(png_structp png, png_const_charp message) {
        auto* self = static_cast<PngReader*>(png_get_error_ptr(png));
        std::snprintf(self->message_, sizeof self->message_, "%s", message);
        png_longjmp(png, 1);
    }

    static void on_warning(png_structp, png_const_charp) {}

    static void on_read(png_structp png, png_bytep out, std::size_t count) {
        auto* self = static_cast<PngReader*>(png_get_io_ptr(png));
        if (count > self->rest_.size()) {
            self->ran_out_ = true;
            png_error(png, "cut short");
        }
        std::memcpy(out, self->rest_.data(), count);
        self->rest_ = self->rest_.subspan(count);
    }

    void require(bool done) const {
        if (done) return;
        if (ran_out_) throw cut_short(rows_);
        throw FileError(std::string("damaged: ") + message_);
    }

    bool read_header() {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // the size is checked with a clearer message
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kIgnoredChunks, kIgnoredChunkCount);
        png_read_info(png_, info_);
        color_type_ = png_get_color_type(png_, info_);
        bit_depth_ = png_get_bit_depth(png_, info_);
        return true;
    }

    // Greys of up to 8 bits and palettes are read as indices, whatever has alpha as RGBA, all else as RGB.
    bool choose_layout() {
        if (setjmp(png_jmpbuf(png_))) return false;
        const bool has_clear_color = png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
        const bool deep = bit_depth_ == 16;
        if (color_type_ == PNG_COLOR_TYPE_PALETTE ||
            (color_type_ == PNG_COLOR_TYPE_GRAY && !(deep && has_clear_color))) {
            layout_ = Layout::indexed;
            index_bits_ = deep ? 8 : bit_depth_;
            png_set_packing(png_);
        } else {
            layout_ = has_clear_color || (color_type_ & PNG_COLOR_MASK_ALPHA) ? Layout::rgba : Layout::rgb;
            if (has_clear_color) png_set_tRNS_to_alpha(png_);
            if (!(color_type_ & PNG_COLOR_MASK_COLOR)) png_set_gray_to_rgb(png_);
        }
        if (deep) png_set_strip_16(png_);
        passes_ = png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        return true;
    }

    // Of an indexed image. An index that the file's palette does not have is black.
    Palette palette() const {
        png_bytep alphas = nullptr;
        png_color_16p clear = nullptr;
        int alpha_count = 0;
        png_get_tRNS(png_, info_, &alphas, &alpha_count, &clear);
        if (color_type_ == PNG_COLOR_TYPE_GRAY) {
            Palette greys = grey_palette(index_bits_);
            if (clear) greys[clear->gray & 0xFF].alpha = 0;
            return greys;
        }
        Palette result = {};
        png_colorp colors = nullptr;
        int color_count = 0;
        png_get_PLTE(png_, info_, &colors, &color_count);
        for (int i = 0; i < color_count; ++i)
            result[static_cast<std::size_t>(i)] = {colors[i].red, colors[i].green, colors[i].blue,
                                                   i < alpha_count ? alphas[i] : std::uint8_t{255}};
        return result;
    }

    bool read_pixels(Image& image) {
        if (setjmp(png_jmpbuf(png_))) return false;
        if (png_get_rowbytes(png_, info_) != image.row_bytes()) png_error(png_, "rows of an unexpected length");
        for (int pass = 1; pass <= passes_; ++pass)
            for (int y = 0; y < image.height; ++y) {
                png_read_row(png_, image.row(y), nullptr);
                if (pass == passes_) rows_ = y + 1;
            }
        png_read_end(png_, info_);
        return true;
    }

    int orientation() const {
        png_bytep exif = nullptr;
        png_uint_32 size = 0;
        if (!png_get_eXIf_1(png_, info_, &size, &exif)) return 1;
        return exif_orientation({exif, size});
    }

    std::span<const std::uint8_t> rest_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    int color_type_ = 0;
    int bit_depth_ = 0;
    Layout layout_ = Layout::rgb;
    int index_bits_ = 8;
    int passes_ = 1;
    int rows_ = 0;
    bool ran_out_ = false;
    char message_[160] = "";
};

}  // namespace

Image decode_png(std::span<const std::uint8_t> file, const Limits& limits) { return PngReader(file).read(limits); }

}  // namespace tarvo::host
