#include "pixels.h"

#include <algorithm>
#include <array>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarvo::host {
namespace {

std::uint32_t last_value(int depth) { return 0xFFFFFFFFu >> (32 - depth); }

// The place of a pixel's bits: in the bytes from `first` to `last`, with `behind` other bits behind them.
struct BitPlace {
    std::size_t first, last;
    unsigned behind;
};

BitPlace place_of(int x, int depth) {
    const std::size_t start = static_cast<std::size_t>(x) * static_cast<std::size_t>(depth);
    const std::size_t end = start + static_cast<std::size_t>(depth);
    const std::size_t last = (end - 1) / 8;
    return {start / 8, last, static_cast<unsigned>((last + 1) * 8 - end)};
}

std::uint64_t load_bytes(const std::uint8_t* row, const BitPlace& place) {
    std::uint64_t bits = 0;
    for (std::size_t i = place.first; i <= place.last; ++i) bits = bits << 8 | row[i];
    return bits;
}

std::uint32_t channel(std::uint32_t color, int shift) { return color >> shift & 255; }

std::uint32_t distance(std::uint32_t a, std::uint32_t b) {
    std::uint32_t sum = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const auto difference =
            static_cast<std::int32_t>(channel(a, shift)) - static_cast<std::int32_t>(channel(b, shift));
        sum += static_cast<std::uint32_t>(difference * difference);
    }
    return sum;
}

std::uint32_t nearest_index(std::uint32_t color, std::span<const RGBColor> colors) {
    std::uint32_t best = 0;
    for (std::uint32_t i = 1; i < colors.size(); ++i) {
        if (distance(packed_color(colors[i]), color) < distance(packed_color(colors[best]), color)) best = i;
    }
    return best;
}

std::uint32_t luma(std::uint32_t color) {
    return (77 * channel(color, 16) + 151 * channel(color, 8) + 28 * channel(color, 0)) >> 8;
}

// Writes copies of a word past the caches, which they would leave before anyone reads them. Returns how many bytes are
// written: none, or all but the last few.
std::size_t repeat_streaming([[maybe_unused]] std::span<std::uint8_t> bytes, [[maybe_unused]] std::uint32_t word) {
    std::size_t done = 0;
#if defined(__SSE2__)
    constexpr std::size_t kLarge = std::size_t{4} << 20;
    const auto address = reinterpret_cast<std::uintptr_t>(bytes.data());
    if (bytes.size() < kLarge || address % sizeof(__m128i) != 0) return 0;
    const __m128i words = _mm_set1_epi32(static_cast<int>(word));
    for (; done + sizeof words <= bytes.size(); done += sizeof words)
        _mm_stream_si128(reinterpret_cast<__m128i*>(bytes.data() + done), words);
    _mm_sfence();
#endif
    return done;
}

// Fills bytes of any alignment with copies of a word. The last copy may be cut.
void repeat(std::span<std::uint8_t> bytes, std::uint32_t word) {
    const std::size_t words = bytes.size() / sizeof word;
    for (std::size_t i = repeat_streaming(bytes, word) / sizeof word; i < words; ++i)
        std::memcpy(bytes.data() + i * sizeof word, &word, sizeof word);
    std::memcpy(bytes.data() + words * sizeof word, &word, bytes.size() % sizeof word);
}

// Widens five bits to eight, so that 0 stays 0 and 31 becomes 255.
std::uint32_t widened(std::uint32_t level) { return level << 3 | level >> 2; }

}  // namespace

std::uint32_t load_pixel(const std::uint8_t* row, int x, int depth) {
    const BitPlace place = place_of(x, depth);
    return static_cast<std::uint32_t>(load_bytes(row, place) >> place.behind) & last_value(depth);
}

void store_pixel(std::uint8_t* row, int x, int depth, std::uint32_t value) {
    const BitPlace place = place_of(x, depth);
    const std::uint64_t mask = std::uint64_t{last_value(depth)} << place.behind;
    std::uint64_t bits = (load_bytes(row, place) & ~mask) | (std::uint64_t{value} << place.behind & mask);
    for (std::size_t i = place.last + 1; i-- > place.first; bits >>= 8) row[i] = static_cast<std::uint8_t>(bits);
}

void fill_pixels(std::span<std::uint8_t> bytes, int depth, std::uint32_t value) {
    if (bytes.empty()) return;
    // Eight pixels of any depth are whole bytes, as many as a pixel has bits.
    std::array<std::uint8_t, 32> pattern{};
    for (int x = 0; x < 8; ++x) store_pixel(pattern.data(), x, depth, value);

    if (std::all_of(pattern.begin(), pattern.begin() + depth, [&](std::uint8_t byte) { return byte == pattern[0]; })) {
        std::memset(bytes.data(), pattern[0], bytes.size());
        return;
    }
    if (32 % depth == 0) {
        std::uint32_t word = 0;
        std::memcpy(&word, pattern.data(), sizeof word);
        repeat(bytes, word);
    } else {
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = pattern[i % static_cast<std::size_t>(depth)];
    }
}

std::uint32_t packed_color(const RGBColor& color) {
    return static_cast<std::uint32_t>(color.red >> 8) << 16 | static_cast<std::uint32_t>(color.green >> 8) << 8 |
           static_cast<std::uint32_t>(color.blue >> 8);
}

std::uint32_t color_of(std::uint32_t value, int depth, std::span<const RGBColor> colors) {
    if (depth == 1) return value != 0 ? 0x000000 : 0xFFFFFF;
    if (value < colors.size()) return packed_color(colors[value]);
    if (depth <= 8) return value * 255 / last_value(depth) * 0x010101;
    if (depth == 16) return widened(value >> 10 & 31) << 16 | widened(value >> 5 & 31) << 8 | widened(value & 31);
    return depth == 24 || depth == 32 ? value & 0xFFFFFF : 0;
}

std::uint32_t value_of(std::uint32_t color, int depth, std::span<const RGBColor> colors) {
    if (depth == 1) return luma(color) < 128 ? 1 : 0;
    if (!colors.empty()) return nearest_index(color, colors);
    if (depth <= 8) return luma(color) * last_value(depth) / 255;
    if (depth == 16) return (color >> 9 & 0x7C00) | (color >> 6 & 0x3E0) | (color >> 3 & 0x1F);
    return color & last_value(depth);
}

}  // namespace tarvo::host
