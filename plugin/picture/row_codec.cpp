#include "row_codec.h"

#include <algorithm>
#include <cstring>

#include "pixel_blocks.h"
#include "row_clones.h"

namespace tarvo::plugin {
namespace {

// These are plain functions around the templates, because clang clones no templates.
TARVO_ROW_CLONES void decode_xrgb32(const std::uint8_t* row, PixelColor* span, std::size_t count) {
    decode_as<XRgb32>(row, span, count);
}
TARVO_ROW_CLONES void decode_rgb555(const std::uint8_t* row, PixelColor* span, std::size_t count) {
    decode_as<Rgb555>(row, span, count);
}
TARVO_ROW_CLONES void decode_grey8(const std::uint8_t* row, PixelColor* span, std::size_t count) {
    decode_as<Grey8>(row, span, count);
}
TARVO_ROW_CLONES void encode_xrgb32(const PixelColor* span, std::uint8_t* row, std::size_t count) {
    encode_as<XRgb32>(span, row, count);
}
// Streams whole cache lines only: one that two runs share, or that is also written otherwise, would cost more than the
// rest saves.
TARVO_ROW_CLONES void stream_xrgb32_row(const PixelColor* span, std::uint8_t* row, std::size_t count) {
    const std::size_t before = pixels_before_cache_line(row, count);
    const std::size_t in_cache_lines = (count - before) / kCacheLinePixels * kCacheLinePixels;
    const std::size_t after = before + in_cache_lines;
    encode_as<XRgb32>(span, row, before);
    stream_xrgb32_cache_lines(span + before, row + before * XRgb32::kBytes, in_cache_lines);
    encode_as<XRgb32>(span + after, row + after * XRgb32::kBytes, count - after);
}
TARVO_ROW_CLONES void encode_rgb555(const PixelColor* span, std::uint8_t* row, std::size_t count) {
    encode_as<Rgb555>(span, row, count);
}
TARVO_ROW_CLONES void encode_grey8(const PixelColor* span, std::uint8_t* row, std::size_t count) {
    encode_as<Grey8>(span, row, count);
}

// Four pixels of three bytes are three words:
//
//     bytes     R0 G0 B0 R1 | G1 B1 R2 G2 | B2 R3 G3 B3
//     words          a      |      b      |      c
constexpr std::size_t kGroup = 4;

TARVO_ROW_CLONES void decode_rgb24(const std::uint8_t* __restrict row, PixelColor* __restrict span, std::size_t count) {
    const std::size_t grouped = count - count % kGroup;
    for (std::size_t x = 0; x < grouped; x += kGroup) {
        const std::uint8_t* const at = row + x * Rgb24::kBytes;
        const auto a = load_big_endian<std::uint32_t>(at);
        const auto b = load_big_endian<std::uint32_t>(at + 4);
        const auto c = load_big_endian<std::uint32_t>(at + 8);
        span[x] = a >> 8;
        span[x + 1] = (a << 16 | b >> 16) & 0xFFFFFF;
        span[x + 2] = (b << 8 | c >> 24) & 0xFFFFFF;
        span[x + 3] = c & 0xFFFFFF;
    }
    decode_as<Rgb24>(row + grouped * Rgb24::kBytes, span + grouped, count - grouped);
}

TARVO_ROW_CLONES void encode_rgb24(const PixelColor* __restrict span, std::uint8_t* __restrict row, std::size_t count) {
    const std::size_t grouped = count - count % kGroup;
    for (std::size_t x = 0; x < grouped; x += kGroup) {
        std::uint8_t* const at = row + x * Rgb24::kBytes;
        const PixelColor a = span[x], b = span[x + 1], c = span[x + 2], d = span[x + 3];
        store_big_endian<std::uint32_t>(at, a << 8 | (b >> 16 & 0xFF));
        store_big_endian<std::uint32_t>(at + 4, b << 16 | (c >> 8 & 0xFFFF));
        store_big_endian<std::uint32_t>(at + 8, c << 24 | (d & 0xFFFFFF));
    }
    encode_as<Rgb24>(span + grouped, row + grouped * Rgb24::kBytes, count - grouped);
}

// Returns the bits in which any two words differ that are at the same place of two rows. They are in the order of
// memory.
TARVO_ROW_CLONES std::uint32_t differing_bits(const std::uint8_t* a, const std::uint8_t* b, std::size_t bytes) {
    constexpr std::size_t kWord = sizeof(std::uint32_t);
    std::uint32_t bits = 0, word_a = 0, word_b = 0;
    const std::size_t words = bytes / kWord;
    for (std::size_t i = 0; i < words; ++i) {
        std::memcpy(&word_a, a + i * kWord, kWord);
        std::memcpy(&word_b, b + i * kWord, kWord);
        bits |= word_a ^ word_b;
    }
    word_a = word_b = 0;
    std::memcpy(&word_a, a + words * kWord, bytes % kWord);
    std::memcpy(&word_b, b + words * kWord, bytes % kWord);
    return bits | (word_a ^ word_b);
}

}  // namespace

PixelColor load_pixel(PixelFormat format, const std::uint8_t* at, long bit, const IndexColors& colors) {
    switch (format) {
        case PixelFormat::xrgb32: return XRgb32::load(at);
        case PixelFormat::rgb24: return Rgb24::load(at);
        case PixelFormat::rgb555: return Rgb555::load(at);
        case PixelFormat::grey8: return Grey8::load(at);
        case PixelFormat::indexed8: return colors[*at];
        case PixelFormat::mono1: return Mono1::load(*at, bit);
        case PixelFormat::opaque: break;
    }
    return 0;
}

void store_pixel(PixelFormat format, std::uint8_t* at, long bit, PixelColor color) {
    switch (format) {
        case PixelFormat::xrgb32: return XRgb32::store(at, color);
        case PixelFormat::rgb24: return Rgb24::store(at, color);
        case PixelFormat::rgb555: return Rgb555::store(at, color);
        case PixelFormat::grey8: return Grey8::store(at, color);
        case PixelFormat::mono1: *at = Mono1::store(*at, bit, color); return;
        case PixelFormat::indexed8:
        case PixelFormat::opaque: break;
    }
}

void decode_row(PixelFormat format, const std::uint8_t* row, PixelColor* span, std::size_t count,
                const IndexColors& colors) {
    switch (format) {
        case PixelFormat::xrgb32: return decode_xrgb32(row, span, count);
        case PixelFormat::rgb24: return decode_rgb24(row, span, count);
        case PixelFormat::rgb555: return decode_rgb555(row, span, count);
        case PixelFormat::grey8: return decode_grey8(row, span, count);
        case PixelFormat::indexed8:
            std::transform(row, row + count, span, [&colors](std::uint8_t index) { return colors[index]; });
            return;
        case PixelFormat::mono1:
        case PixelFormat::opaque: std::fill_n(span, count, 0); return;
    }
}

void encode_row(PixelFormat format, const PixelColor* span, std::uint8_t* row, std::size_t count, StoreMode mode) {
    switch (format) {
        case PixelFormat::xrgb32:
            return mode == StoreMode::streamed && has_aligned_pixels(row) ? stream_xrgb32_row(span, row, count)
                                                                          : encode_xrgb32(span, row, count);
        case PixelFormat::rgb24: return encode_rgb24(span, row, count);
        case PixelFormat::rgb555: return encode_rgb555(span, row, count);
        case PixelFormat::grey8: return encode_grey8(span, row, count);
        case PixelFormat::indexed8:
        case PixelFormat::mono1:
        case PixelFormat::opaque: break;
    }
}

bool rows_agree(PixelFormat format, const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                const IndexColors& colors_a, const IndexColors& colors_b) {
    const auto agree = [&](std::uint32_t color_bits) {
        return (differing_bits(a, b, count * static_cast<std::size_t>(bytes_of(format))) & big_endian(color_bits)) == 0;
    };
    switch (format) {
        case PixelFormat::xrgb32: return agree(0x00FFFFFF);
        case PixelFormat::rgb555: return agree(0x7FFF7FFF);
        case PixelFormat::rgb24:
        case PixelFormat::grey8: return agree(0xFFFFFFFF);
        case PixelFormat::indexed8:
            return std::equal(a, a + count, b,
                              [&](std::uint8_t i, std::uint8_t j) { return colors_a[i] == colors_b[j]; });
        case PixelFormat::mono1:
        case PixelFormat::opaque: break;
    }
    return true;  // both read 0
}

}  // namespace tarvo::plugin
