#pragma once

// Rows of stored pixels to spans of colours and back.

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixel_formats.h"

// How a picture's pixels are read and written.
enum class PixelFormat {
    opaque,  // not understood: reads 0, not written
    xrgb32,
    rgb24,
    rgb555,
    grey8,     // a mask of at most 8 bits: whole bytes, whatever the depth
    indexed8,  // through the colour table; not written
    mono1,     // only where single bits are addressed; opaque to whole-pixel access
};

// Bytes from one pixel to the next where pixels are stored side by side; 0 for formats without whole bytes.
constexpr int bytes_of(PixelFormat format) {
    switch (format) {
        case PixelFormat::xrgb32: return XRgb32::kBytes;
        case PixelFormat::rgb24: return Rgb24::kBytes;
        case PixelFormat::rgb555: return Rgb555::kBytes;
        case PixelFormat::grey8: return Grey8::kBytes;
        case PixelFormat::indexed8: return 1;
        case PixelFormat::opaque:
        case PixelFormat::mono1: break;
    }
    return 0;
}

// The colour of each index of an 8-bit picture.
using IndexColors = std::array<PixelColor, 256>;

// One pixel at an address. `bit` matters to mono1 alone.
PixelColor load_pixel(PixelFormat format, const std::uint8_t* at, long bit, const IndexColors& colors);
void store_pixel(PixelFormat format, std::uint8_t* at, long bit, PixelColor color);

// `count` pixels stored side by side, of a format that has whole bytes.
void decode_row(PixelFormat format, const std::uint8_t* row, PixelColor* span, std::size_t count,
                const IndexColors& colors);
void encode_row(PixelFormat format, const PixelColor* span, std::uint8_t* row, std::size_t count);

// Whether two rows of `count` pixels show the same colours. Bits that are no part of a colour do not count.
bool rows_agree(PixelFormat format, const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                const IndexColors& colors_a, const IndexColors& colors_b);

// The same bytes, written past the caches where the machine can: for pictures too large to be found there again.
void encode_row_streaming(PixelFormat format, const PixelColor* span, std::uint8_t* row, std::size_t count);
