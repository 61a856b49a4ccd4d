#include "png_codec.h"

#include <png.h>

#include <csetjmp>
#include <exception>
#include <new>
#include <vector>

#include "packed_indices.h"
#include "png_bands.h"
#include "png_chunks.h"

namespace tarvo::host {

namespace {

// One file being written. As with reading, the functions that call libpng hold nothing that has a destructor.
class PngWriter {
public:
    PngWriter(const PixelSource& image, const EncodeOptions& how, ByteSink& file)
        : image_(image),
          form_(image.form()),
          compression_(how.compression),
          chunks_(chunks_of(how.metadata)),
          file_(file),
          inverted_(is_inverted(form_)) {
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

    FilePixels write() {
        require(begin_file());
        deflate_png(rows(), compression_,
                    [this](std::span<const std::uint8_t> chunk) { require(write_chunk("IDAT", chunk)); });
        require(write_chunk("IEND", {}));
        return pixels();
    }

private:
    static void on_error(png_structp png, png_const_charp) { png_longjmp(png, 1); }

    static void on_warning(png_structp, png_const_charp) {}

    static void on_write(png_structp png, png_bytep bytes, std::size_t count) {
        if (!static_cast<PngWriter*>(png_get_io_ptr(png))->append({bytes, count})) png_error(png, "cannot be written");
    }

    // What the file throws waits for `write`.
    bool append(std::span<const std::uint8_t> bytes) noexcept {
        try {
            file_.write(bytes);
        } catch (...) {
            failure_ = std::current_exception();
        }
        return !failure_;
    }

    // What the library is given is in order, so that nothing but memory can be missing, whatever it says.
    void require(bool done) const {
        if (done) return;
        if (failure_) std::rethrow_exception(failure_);
        throw std::bad_alloc();
    }

    bool begin_file() {
        if (setjmp(png_jmpbuf(png_))) return false;
        describe();
        png_write_info_before_PLTE(png_, info_);
        for (const PngChunk& chunk : chunks_)
            png_write_chunk(png_, reinterpret_cast<png_const_bytep>(chunk.name.data()), chunk.data.data(),
                            chunk.data.size());
        png_write_info(png_, info_);
        return true;
    }

    bool write_chunk(const char* name, std::span<const std::uint8_t> data) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_write_chunk(png_, reinterpret_cast<png_const_bytep>(name), data.data(), data.size());
        return true;
    }

    // Differences of indices mean nothing, and those of some pixels in a byte little.
    PngRows rows() const {
        const std::size_t bits = form_.row_bytes() * static_cast<std::size_t>(bit_depth());
        return {.height = form_.height,
                .row_bytes = (bits + 7) / 8,
                .filter_step = form_.pixel_bytes(),
                .may_filter = bit_depth() == 8 && color_type() != PNG_COLOR_TYPE_PALETTE,
                .read = [this](int y, std::uint8_t* row) { read(y, row); }};
    }

    void read(int y, std::uint8_t* row) const {
        if (bit_depth() == 8) return image_.read(y, row);
        Bytes indices(form_.row_bytes());
        image_.read(y, indices.data());
        pack_indices(indices, bit_depth(), inverted_, row);
    }

    int bit_depth() const { return form_.layout == Layout::indexed ? form_.index_bits : 8; }

    int color_type() const {
        switch (form_.layout) {
            case Layout::grey_alpha: return PNG_COLOR_TYPE_GRAY_ALPHA;
            case Layout::rgb: return PNG_COLOR_TYPE_RGB;
            case Layout::rgba: return PNG_COLOR_TYPE_RGB_ALPHA;
            case Layout::indexed: break;
        }
        return is_scale_of_greys(form_) ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_PALETTE;
    }

    FilePixels pixels() const {
        using Colors = FilePixels::Colors;
        const int type = color_type();
        if (type == PNG_COLOR_TYPE_PALETTE) return {Colors::palette, bit_depth()};
        if (type & PNG_COLOR_MASK_COLOR) return {Colors::rgb, bit_depth()};
        return {bit_depth() == 1 ? Colors::black_and_white : Colors::grey, bit_depth()};
    }

    void describe() {
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(form_.width), static_cast<png_uint_32>(form_.height),
                     bit_depth(), color_type(), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        if (color_type() == PNG_COLOR_TYPE_PALETTE) describe_palette();
    }

    void describe_palette() {
        png_color colors[256];
        png_byte alphas[256];
        const int count = form_.palette_size();
        for (int i = 0; i < count; ++i) {
            const Rgba& color = form_.palette[static_cast<std::size_t>(i)];
            colors[i] = {color.red, color.green, color.blue};
            alphas[i] = color.alpha;
        }
        png_set_PLTE(png_, info_, colors, count);
        if (has_alpha(form_)) png_set_tRNS(png_, info_, alphas, count, nullptr);
    }

    const PixelSource& image_;
    const ImageForm& form_;
    const Compression compression_;
    const std::vector<PngChunk> chunks_;
    ByteSink& file_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    const bool inverted_;
    std::exception_ptr failure_;
};

}  // namespace

FilePixels encode_png(const PixelSource& image, const EncodeOptions& options, ByteSink& file) {
    return PngWriter(image, options, file).write();
}

}  // namespace tarvo::host
