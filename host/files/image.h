#pragma once

// A picture as files have it: what decoders give and encoders take, a row at a time. It knows no host.

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarvo::host {

struct Rgba {
    std::uint8_t red = 0, green = 0, blue = 0;
    std::uint8_t alpha = 255;  // 255 is opaque; colours are not multiplied by it

    friend bool operator==(const Rgba&, const Rgba&) = default;
};

inline constexpr Rgba kBlack{};
inline constexpr Rgba kWhite{255, 255, 255};

// Bytes a pixel, rows without padding.
enum class Layout : std::uint8_t {
    indexed = 1,  // into the palette
    rgb = 3,
    rgba = 4,
};

using Palette = std::array<Rgba, 256>;

struct ImageForm {
    int width = 0;
    int height = 0;
    Layout layout = Layout::rgb;
    int index_bits = 8;  // of an indexed image: how deep its file was or is to be: 1, 2, 4 or 8
    Palette palette = {};

    std::size_t pixel_bytes() const { return static_cast<std::size_t>(layout); }
    std::size_t row_bytes() const { return pixel_bytes() * static_cast<std::size_t>(width); }
    // Entries of the palette that an index of this many bits can reach.
    int palette_size() const { return 1 << index_bits; }
};

// Pixels of one row: the first at (x, y), each `step` right of the one before.
struct PixelRun {
    int x, y;
    int step;
    int count;
    const std::uint8_t* pixels;
};

// What a decoder gives its pixels to.
class PixelTarget {
public:
    virtual ~PixelTarget() = default;
    // Before the first run. `working_bytes`: what the decoder is going to take until the last. Throws FileError,
    // HostError and std::bad_alloc.
    virtual void begin(const ImageForm& form, std::uint64_t working_bytes) = 0;
    // Every pixel comes once, unless the file ends with an error.
    virtual void put(const PixelRun& run) noexcept = 0;
    // An Exif orientation of 1 to 8, other numbers mean 1: how what is put is to be seen. Told once, before `begin` if
    // it is known by then, or after the last run. Throws as `begin`.
    virtual void turn(int orientation) = 0;
};

// What an encoder takes its pixels from.
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
// True when it is indexed and its palette holds nothing but opaque greys.
bool is_grey(const ImageForm& form);
// True when it is indexed by one bit and its two colours are opaque black or white.
bool is_bilevel(const ImageForm& form);

}  // namespace tarvo::host
