#pragma once

// A picture as files have it: what decoders make and encoders take. It knows no host.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace tarvo::host {

struct Rgba {
    std::uint8_t red = 0, green = 0, blue = 0;
    std::uint8_t alpha = 255;  // 255 is opaque; colours are not multiplied by it

    friend bool operator==(const Rgba&, const Rgba&) = default;
};

inline constexpr Rgba kBlack{};
inline constexpr Rgba kWhite{255, 255, 255};

// Bytes a pixel, top row first, rows without padding.
enum class Layout : std::uint8_t {
    indexed = 1,  // into the palette
    rgb = 3,
    rgba = 4,
};

using Palette = std::array<Rgba, 256>;

struct Image {
    Image() = default;
    // The pixels are not initialised: whoever makes an image writes every row. Throws std::bad_alloc.
    Image(int width, int height, Layout layout);

    int width = 0;
    int height = 0;
    Layout layout = Layout::rgb;
    int index_bits = 8;  // of an indexed image: how deep its file was or is to be: 1, 2, 4 or 8
    Palette palette = {};
    std::unique_ptr<std::uint8_t[]> pixels;

    std::size_t pixel_bytes() const { return static_cast<std::size_t>(layout); }
    std::size_t row_bytes() const { return pixel_bytes() * static_cast<std::size_t>(width); }
    std::uint8_t* row(int y) { return pixels.get() + row_bytes() * static_cast<std::size_t>(y); }
    const std::uint8_t* row(int y) const { return pixels.get() + row_bytes() * static_cast<std::size_t>(y); }
    // Entries of the palette that an index of this many bits can reach.
    int palette_size() const { return 1 << index_bits; }
};

// Black, then evenly to white at the last index of that many bits.
Palette grey_palette(int index_bits);

// Row `y` as colours; `out` takes `width` of them.
void read_row(const Image& image, int y, Rgba* out);

// 0 to 255; equal channels give their value.
std::uint8_t luma(const Rgba& color);

// True when the image may have pixels that are not opaque: by its layout, or by its palette.
bool has_alpha(const Image& image);
// True when it is indexed and its palette holds nothing but opaque greys.
bool is_grey(const Image& image);
// True when it is indexed by one bit and its two colours are opaque black or white.
bool is_bilevel(const Image& image);

// The image as it is to be seen, after an Exif orientation of 1 to 8; other numbers mean 1.
Image oriented(Image image, int orientation);

}  // namespace tarvo::host
