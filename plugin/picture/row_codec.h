#pragma once

// Decodes rows of stored pixels into spans of colours, and encodes spans as rows.

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixel_blocks.h"
#include "pixel_formats.h"

namespace tarvo::plugin {

// Which pixels can be addressed: those that begin a byte, or single ones of those that share it.
enum class Addressing { whole_pixels, single_bits };

// How a picture's pixels are read and written.
enum class PixelFormat {
    opaque,  // is not understood: reads 0, and writes do nothing
    xrgb32,
    rgb24,
    rgb555,
    grey8,     // is a mask of at most 8 bits: whole bytes at every depth
    indexed8,  // is read through the colour table; writes do nothing
    mono1,     // is understood where single bits are addressed; to whole-pixel access it is opaque
};

// Bytes from one pixel to the next; 0 for formats whose pixels are not whole bytes.
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

// Read and write one pixel at an address. `bit` matters to mono1 alone.
PixelColor load_pixel(PixelFormat format, const std::uint8_t* at, long bit, const IndexColors& colors);
void store_pixel(PixelFormat format, std::uint8_t* at, long bit, PixelColor color);

// Read and write `count` pixels that are stored side by side, in a format whose pixels are whole bytes.
void decode_row(PixelFormat format, const std::uint8_t* row, PixelColor* span, std::size_t count,
                const IndexColors& colors);
void encode_row(PixelFormat format, const PixelColor* span, std::uint8_t* row, std::size_t count,
                StoreMode mode = StoreMode::cached);

// Whether two rows of `count` pixels have the same colours. Bits that belong to no colour are not compared.
bool rows_agree(PixelFormat format, const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                const IndexColors& colors_a, const IndexColors& colors_b);

}  // namespace tarvo::plugin
