#include "png_codec.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include "carried.h"
#include "exif.h"
#include "png_chunks.h"

namespace tarvo::host {

namespace {

// What the pixels do not depend on: not even unpacked.
constexpr png_byte kIgnoredChunks[] = "gAMA\0cHRM\0sRGB\0sPLT";
constexpr int kIgnoredChunkCount = sizeof kIgnoredChunks / 5;

// The library checks profiles more strictly than those who only pass them on.
constexpr png_byte kCollectedChunks[] = "iCCP\0eXIf\0pHYs\0tEXt\0zTXt\0iTXt";
constexpr int kCollectedChunkCount = sizeof kCollectedChunks / 5;
// With keywords.
constexpr png_alloc_size_t kMostChunkBytes = kMostMetadataBytes * 2 + kMostMetadataBytes / 8;

// One file being read. libpng leaves a failed call by a long jump, which runs no destructors: the functions that call
// it (those that return bool, false after such a failure) hold nothing that has one.
class PngReader {
public:
    explicit PngReader(ByteSource& file) : file_(file) {
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

    void read(std::uint64_t max_pixels, PixelTarget& target) {
        require(read_header());
        check_size(png_get_image_width(png_, info_), png_get_image_height(png_, info_), max_pixels);
        require(choose_layout());
        if (form_.layout == Layout::indexed) form_.palette = palette();
        if (!chunks_.profile().empty()) target.profile(chunks_.profile());
        const int turned = orientation();
        if (turned != kNotTold) target.turn(turned);
        target.begin(form_, 0);
        Bytes row(form_.row_bytes());
        require(read_pixels(row.data(), target));
        if (turned == kNotTold) target.turn(orientation());
        Carried carried;
        carried.metadata = chunks_.finish(carried.losses);
        target.carry(std::move(carried));
    }

private:
    static constexpr int kNotTold = 0;

    static void on_error(png_structp png, png_const_charp message) {
        auto* self = static_cast<PngReader*>(png_get_error_ptr(png));
        std::snprintf(self->message_, sizeof self->message_, "%s", message);
        png_longjmp(png, 1);
    }

    static void on_warning(png_structp png, png_const_charp message) {
        auto* self = static_cast<PngReader*>(png_get_error_ptr(png));
        if (std::strstr(message, "exceeds memory limits")) self->chunks_.leave_out();
    }

    // What it throws waits for `require`.
    static int on_chunk(png_structp png, png_unknown_chunkp chunk) {
        auto* self = static_cast<PngReader*>(png_get_user_chunk_ptr(png));
        if (!self->collect({chunk->data, chunk->size}, reinterpret_cast<const char*>(chunk->name)))
            png_error(png, "cannot be kept");
        return 1;
    }

    bool collect(std::span<const std::uint8_t> data, const char* name) noexcept {
        try {
            chunks_.add(name, data);
        } catch (...) {
            failure_ = std::current_exception();
        }
        return !failure_;
    }

    static void on_read(png_structp png, png_bytep out, std::size_t count) {
        if (!static_cast<PngReader*>(png_get_io_ptr(png))->read_bytes({out, count})) png_error(png, "cut short");
    }

    // What the file throws waits for `require`.
    bool read_bytes(std::span<std::uint8_t> out) noexcept {
        try {
            ran_out_ = !file_.read(out);
        } catch (...) {
            failure_ = std::current_exception();
        }
        return !ran_out_ && !failure_;
    }

    void require(bool done) const {
        if (done) return;
        if (failure_) std::rethrow_exception(failure_);
        if (ran_out_) throw cut_short(rows_);
        if (std::strstr(message_, "memory")) throw std::bad_alloc();  // in more than one wording
        throw FileError(std::string("damaged: ") + message_);
    }

    bool read_header() {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // the size is checked with a clearer message
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kIgnoredChunks, kIgnoredChunkCount);
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_ALWAYS, kCollectedChunks, kCollectedChunkCount);
        png_set_read_user_chunk_fn(png_, this, on_chunk);
        png_set_chunk_malloc_max(png_, kMostChunkBytes);
        png_read_info(png_, info_);
        color_type_ = png_get_color_type(png_, info_);
        bit_depth_ = png_get_bit_depth(png_, info_);
        interlaced_ = png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE;
        return true;
    }

    // Palettes and greys are read as indices, but greys with alpha of their own, and those of 16 bits where one is
    // clear, as grey and alpha; all else as RGB, with alpha as RGBA.
    bool choose_layout() {
        if (setjmp(png_jmpbuf(png_))) return false;
        const bool has_clear_color = png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
        const bool deep = bit_depth_ == 16;
        if (color_type_ == PNG_COLOR_TYPE_PALETTE ||
            (color_type_ == PNG_COLOR_TYPE_GRAY && !(deep && has_clear_color))) {
            form_.layout = Layout::indexed;
            form_.index_bits = deep ? 8 : bit_depth_;
            png_set_packing(png_);
        } else {
            const bool alpha = has_clear_color || (color_type_ & PNG_COLOR_MASK_ALPHA);
            form_.layout = alpha ? Layout::rgba : Layout::rgb;
            if (!(color_type_ & PNG_COLOR_MASK_COLOR)) form_.layout = Layout::grey_alpha;
            if (has_clear_color) png_set_tRNS_to_alpha(png_);
        }
        form_.file = pixels();
        if (deep) png_set_strip_16(png_);
        png_read_update_info(png_, info_);
        form_.width = static_cast<int>(png_get_image_width(png_, info_));
        form_.height = static_cast<int>(png_get_image_height(png_, info_));
        if (png_get_rowbytes(png_, info_) != form_.row_bytes()) png_error(png_, "rows of an unexpected length");
        return true;
    }

    FilePixels pixels() const {
        using Colors = FilePixels::Colors;
        if (color_type_ == PNG_COLOR_TYPE_PALETTE) return {Colors::palette, bit_depth_};
        if (color_type_ & PNG_COLOR_MASK_COLOR) return {Colors::rgb, bit_depth_};
        return {bit_depth_ == 1 ? Colors::black_and_white : Colors::grey, bit_depth_};
    }

    // Of an indexed image. An index that the file's palette does not have is black.
    Palette palette() const {
        png_bytep alphas = nullptr;
        png_color_16p clear = nullptr;
        int alpha_count = 0;
        png_get_tRNS(png_, info_, &alphas, &alpha_count, &clear);
        if (color_type_ == PNG_COLOR_TYPE_GRAY) {
            Palette greys = grey_palette(form_.index_bits);
            // A file may name a grey that its depth does not have.
            if (clear) greys[clear->gray & (form_.palette_size() - 1)].alpha = 0;
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

    // The rows of an interlaced file are pixels of the seven passes, and only those of the last count as whole ones.
    bool read_pixels(std::uint8_t* row, PixelTarget& target) {
        if (setjmp(png_jmpbuf(png_))) return false;
        if (interlaced_) {
            for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) read_pass(pass, row, target);
        } else {
            for (int y = 0; y < form_.height; ++y) {
                read_run({.x = 0, .y = y, .step = 1, .count = form_.width, .pixels = row}, row, target);
                rows_ = y + 1;
            }
        }
        png_read_end(png_, info_);
        return true;
    }

    void read_pass(int pass, std::uint8_t* row, PixelTarget& target) {
        const int count = PNG_PASS_COLS(form_.width, pass);
        if (count == 0) return;
        const int rows = PNG_PASS_ROWS(form_.height, pass);
        for (int y = 0; y < rows; ++y) {
            const int seen = PNG_ROW_FROM_PASS_ROW(y, pass);
            read_run({.x = PNG_PASS_START_COL(pass),
                      .y = seen,
                      .step = PNG_PASS_COL_OFFSET(pass),
                      .count = count,
                      .pixels = row},
                     row, target);
            if (pass == PNG_INTERLACE_ADAM7_PASSES - 1) rows_ = seen + 1;
        }
    }

    void read_run(const PixelRun& run, std::uint8_t* row, PixelTarget& target) {
        png_read_row(png_, row, nullptr);
        target.put(run);
    }

    int orientation() const {
        const auto exif = chunks_.exif();
        return exif.empty() ? kNotTold : read_exif(exif).shown_orientation();
    }

    ByteSource& file_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    int color_type_ = 0;
    int bit_depth_ = 0;
    bool interlaced_ = false;
    ImageForm form_;
    PngChunks chunks_;
    int rows_ = 0;
    bool ran_out_ = false;
    std::exception_ptr failure_;
    char message_[160] = "";
};

}  // namespace

void decode_png(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target) {
    PngReader(file).read(max_pixels, target);
}

}  // namespace tarvo::host
