#pragma once

// Pictures as files have them. Decoders give them, and encoders take them, a row at a time. No host is known here.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace tarvo::host {

struct Rgba {
    std::uint8_t red = 0, green = 0, blue = 0;
    std::uint8_t alpha = 255;  // 255 is opaque; colours are not multiplied by it

    friend bool operator==(const Rgba&, const Rgba&) = default;
};

inline constexpr Rgba kBlack{};
inline constexpr Rgba kWhite{255, 255, 255};

// What the pixels of a file are. Decoders may give them in another form.
struct FilePixels {
    enum class Colors : std::uint8_t { black_and_white, grey, palette, rgb, inks };
    Colors colors = Colors::rgb;
    int bits = 8;  // a channel, or an index into the palette
    bool alpha = false;

    friend bool operator==(const FilePixels&, const FilePixels&) = default;
};

// "grey, 16 bits a channel, mask": alpha becomes a picture's mask.
std::string in_words(const FilePixels& pixels);

// Bytes a pixel, rows without padding.
enum class Layout : std::uint8_t {
    indexed = 1,  // into the palette
    grey_alpha = 2,
    rgb = 3,
    rgba = 4,
};

using Palette = std::array<Rgba, 256>;

struct ImageForm {
    int width = 0;
    int height = 0;
    Layout layout = Layout::rgb;
    int index_bits = 8;  // how deep an indexed image's file was or is to be: 1, 2, 4 or 8
    Palette palette = {};
    FilePixels file = {};  // set by decoders, but for its alpha, which `has_alpha` tells

    std::size_t pixel_bytes() const { return static_cast<std::size_t>(layout); }
    std::size_t row_bytes() const { return pixel_bytes() * static_cast<std::size_t>(width); }
    // Entries of the palette that an index of this many bits can reach.
    int palette_size() const { return 1 << index_bits; }
};

// Pixels of one row. The first is at (x, y), and each of the others `step` right of the one before.
struct PixelRun {
    int x, y;
    int step;
    int count;
    const std::uint8_t* pixels;
};

struct Carried;

// Whether a smaller picture does instead of a whole one: their sides as they are seen.
using DraftRule = std::function<bool(int whole_width, int whole_height, int width, int height)>;

// Makes `count` pixels of red, green and blue of as many of cyan, magenta, yellow and black.
using InkConversion = std::function<void(const std::uint8_t* ink, int count, std::uint8_t* rgb)>;

// A decoder gives its pixels to this, and what else the file has.
class PixelTarget {
public:
    virtual ~PixelTarget() = default;
    // Refuses what a decoder wants to take before it can tell a form. Throws HostError.
    virtual void check_memory(std::uint64_t /*bytes*/, const std::string& /*what*/) {}
    // Comes before the first run. The decoder takes `working_bytes` of memory until the last one. Throws FileError,
    // HostError and std::bad_alloc.
    virtual void begin(const ImageForm& form, std::uint64_t working_bytes) = 0;
    // Takes pixels. Each comes once, unless the file has an error.
    virtual void put(const PixelRun& run) noexcept = 0;
    // Returns where a decoder may write the whole of row `y` instead, as stored pixels of 32 bits, XRGB; or null, for
    // every row. The picture has begun.
    virtual std::uint8_t* stored_row(int /*y*/) noexcept { return nullptr; }
    // Says how the pixels are to be seen: an Exif orientation of 1 to 8; other numbers mean 1. Comes once, before
    // `begin` if it is known by then, else after the last run. Throws what `begin` throws.
    virtual void turn(int orientation) = 0;
    // Takes the file's colour profile, before all else, if it has one by then.
    virtual void profile(std::span<const std::uint8_t> /*bytes*/) {}
    // Returns what makes colours of the file's inks, which count towards 255, or from it when inverted; nothing for the
    // plain conversion. May be asked once, before `begin`.
    virtual InkConversion ink_conversion(bool /*inverted*/) { return {}; }
    // Whether a decoder may give a draft of the picture, which is to be seen, in that smaller size instead of its own.
    virtual bool takes_draft(int /*whole_width*/, int /*whole_height*/, int /*width*/, int /*height*/) { return false; }
    // Takes what is not pixels, but for what `begin` was told. Comes once at most, behind all else.
    virtual void carry(Carried&& /*carried*/) {}
};

// An encoder takes its pixels from this.
class PixelSource {
public:
    virtual ~PixelSource() = default;
    virtual const ImageForm& form() const = 0;
    // Writes `row_bytes` bytes.
    virtual void read(int y, std::uint8_t* row) const noexcept = 0;
};

// Black, then evenly to white at the last index of that many bits.
Palette grey_palette(int index_bits);

// The pixels of one row as colours; `out` takes `width` of them.
void read_colors(const ImageForm& form, const std::uint8_t* row, Rgba* out);

// 0 to 255; equal channels give their value.
std::uint8_t luma(const Rgba& color);

// True when the image may have pixels that are not opaque: by its layout, or by its palette.
bool has_alpha(const ImageForm& form);
// True when all colours are greys: by its layout, or by its palette.
bool is_grey(const ImageForm& form);
// True for one bit that is black where it is set.
bool is_inverted(const ImageForm& form);
// True when it has greys and alpha, or is indexed by a grey's own level, or inverted.
bool is_scale_of_greys(const ImageForm& form);
// True when it is indexed by one bit and its two colours are opaque black or white.
bool is_bilevel(const ImageForm& form);

}  // namespace tarvo::host
