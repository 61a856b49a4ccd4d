#include "image.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace tarvo::host {

namespace {

// A displayed pixel (x, y) is the stored one at (x, y), or (y, x) when transposed, counted from the far side when
// flipped.
struct Turn {
    bool transposed, flip_x, flip_y;
};

constexpr Turn kTurns[] = {
    {false, false, false},  // 1: as stored
    {false, true, false},   // 2: mirrored left to right
    {false, true, true},    // 3: half a turn
    {false, false, true},   // 4: mirrored top to bottom
    {true, false, false},   // 5: mirrored along the falling diagonal
    {true, false, true},    // 6: a quarter turn clockwise
    {true, true, true},     // 7: mirrored along the rising diagonal
    {true, true, false},    // 8: a quarter turn anticlockwise
};

template <std::size_t kPixelBytes>
void turn_pixels(const Image& stored, const Turn& turn, Image& seen) {
    const auto bytes_across = static_cast<std::ptrdiff_t>(kPixelBytes);
    const auto bytes_down = static_cast<std::ptrdiff_t>(stored.row_bytes());
    const std::ptrdiff_t step_x = turn.flip_x ? -bytes_across : bytes_across;
    const std::ptrdiff_t step_y = turn.flip_y ? -bytes_down : bytes_down;
    const std::uint8_t* origin =
        stored.row(turn.flip_y ? stored.height - 1 : 0) + (turn.flip_x ? stored.row_bytes() - kPixelBytes : 0);
    const std::ptrdiff_t along = turn.transposed ? step_y : step_x;
    const std::ptrdiff_t down = turn.transposed ? step_x : step_y;
    for (int y = 0; y < seen.height; ++y) {
        std::uint8_t* out = seen.row(y);
        for (int x = 0; x < seen.width; ++x, out += kPixelBytes)
            std::memcpy(out, origin + along * x + down * y, kPixelBytes);
    }
}

std::span<const Rgba> reachable(const Image& image) {
    return std::span(image.palette).first(static_cast<std::size_t>(image.palette_size()));
}

bool is_opaque_grey(const Rgba& color) {
    return color.red == color.green && color.green == color.blue && color.alpha == 255;
}

}  // namespace

Image::Image(int image_width, int image_height, Layout image_layout)
    : width(image_width),
      height(image_height),
      layout(image_layout),
      pixels(std::make_unique_for_overwrite<std::uint8_t[]>(row_bytes() * static_cast<std::size_t>(height))) {}

Palette grey_palette(int index_bits) {
    Palette palette = {};
    const int last = (1 << index_bits) - 1;
    for (int i = 0; i <= last; ++i) {
        const auto grey = static_cast<std::uint8_t>(i * 255 / last);
        palette[static_cast<std::size_t>(i)] = {grey, grey, grey};
    }
    return palette;
}

void read_row(const Image& image, int y, Rgba* out) {
    const std::uint8_t* in = image.row(y);
    switch (image.layout) {
        case Layout::indexed:
            for (int x = 0; x < image.width; ++x) out[x] = image.palette[in[x]];
            break;
        case Layout::rgb:
            for (int x = 0; x < image.width; ++x, in += 3) out[x] = {in[0], in[1], in[2]};
            break;
        case Layout::rgba:
            for (int x = 0; x < image.width; ++x, in += 4) out[x] = {in[0], in[1], in[2], in[3]};
            break;
    }
}

std::uint8_t luma(const Rgba& color) {
    // The weights sum to 256.
    return static_cast<std::uint8_t>((77 * color.red + 151 * color.green + 28 * color.blue + 128) >> 8);
}

bool has_alpha(const Image& image) {
    if (image.layout != Layout::indexed) return image.layout == Layout::rgba;
    return std::ranges::any_of(reachable(image), [](const Rgba& color) { return color.alpha != 255; });
}

bool is_grey(const Image& image) {
    return image.layout == Layout::indexed && std::ranges::all_of(reachable(image), is_opaque_grey);
}

bool is_bilevel(const Image& image) {
    return image.layout == Layout::indexed && image.index_bits == 1 &&
           std::ranges::all_of(reachable(image), [](const Rgba& c) { return c == kBlack || c == kWhite; });
}

Image oriented(Image image, int orientation) {
    if (orientation <= 1 || orientation > 8) return image;
    const Turn turn = kTurns[orientation - 1];
    Image seen = turn.transposed ? Image(image.height, image.width, image.layout)
                                 : Image(image.width, image.height, image.layout);
    seen.index_bits = image.index_bits;
    seen.palette = image.palette;
    switch (image.layout) {
        case Layout::indexed: turn_pixels<1>(image, turn, seen); break;
        case Layout::rgb: turn_pixels<3>(image, turn, seen); break;
        case Layout::rgba: turn_pixels<4>(image, turn, seen); break;
    }
    return seen;
}

}  // namespace tarvo::host
