#include "screen_pixels.h"

#include <bit>
#include <cstring>

namespace tarvo::host {
namespace {

constexpr int kResultBytes = 4;

bool is_run_of_bits(std::uint32_t mask) {
    return mask != 0 && std::has_single_bit(std::uint64_t{mask >> std::countr_zero(mask)} + 1);
}

// Whether a server stores a byte for each colour, as nearly all do. Then only the byte order can differ from the
// result.
bool is_plain(const ScreenPixelLayout& layout) {
    return layout.bits_per_pixel == 32 && layout.red_mask == 0xFF0000 && layout.green_mask == 0xFF00 &&
           layout.blue_mask == 0xFF;
}

void convert_plain_row(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool swapped) {
    const std::uint32_t unused = std::endian::native == std::endian::big ? 0xFF000000 : 0x000000FF;
    for (std::size_t x = 0; x < count; ++x) {
        std::uint32_t word;
        std::memcpy(&word, from + x * kResultBytes, sizeof word);
        const std::uint32_t pixel = (swapped ? __builtin_bswap32(word) : word) & ~unused;
        std::memcpy(to + x * kResultBytes, &pixel, sizeof pixel);
    }
}

}  // namespace

ScreenPixels::Channel::Channel(std::uint32_t mask) : shift(std::countr_zero(mask)), most(mask >> shift) {}

std::uint32_t ScreenPixels::Channel::level(std::uint32_t pixel) const {
    return static_cast<std::uint32_t>((((pixel >> shift) & most) * 255 + most / 2) / most);
}

std::optional<ScreenPixels> ScreenPixels::of(const ScreenPixelLayout& layout) {
    const int bits = layout.bits_per_pixel;
    if (bits != 16 && bits != 24 && bits != 32) return std::nullopt;
    for (const std::uint32_t mask : {layout.red_mask, layout.green_mask, layout.blue_mask})
        if (!is_run_of_bits(mask) || std::bit_width(mask) > static_cast<unsigned>(bits)) return std::nullopt;
    return ScreenPixels(layout);
}

ScreenPixels::ScreenPixels(const ScreenPixelLayout& layout)
    : layout_(layout), red_(layout.red_mask), green_(layout.green_mask), blue_(layout.blue_mask) {}

std::uint32_t ScreenPixels::load(const std::uint8_t* at) const {
    const int bytes = layout_.bits_per_pixel / 8;
    std::uint32_t pixel = 0;
    for (int i = 0; i < bytes; ++i) pixel = pixel << 8 | at[layout_.big_endian ? i : bytes - 1 - i];
    return pixel;
}

void ScreenPixels::convert_row(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const {
    if (is_plain(layout_)) return convert_plain_row(from, to, count, !layout_.big_endian);
    const int bytes = layout_.bits_per_pixel / 8;
    for (std::size_t x = 0; x < count; ++x, from += bytes, to += kResultBytes) {
        const std::uint32_t pixel = load(from);
        to[0] = 0;
        to[1] = static_cast<std::uint8_t>(red_.level(pixel));
        to[2] = static_cast<std::uint8_t>(green_.level(pixel));
        to[3] = static_cast<std::uint8_t>(blue_.level(pixel));
    }
}

}  // namespace tarvo::host
