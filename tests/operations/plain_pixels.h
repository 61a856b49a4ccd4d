#pragma once

// Pixels of host pictures as the geometry operations address them, one at a time; below 8 bits the ways differ.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>

#include "plain_image.h"

namespace tarvo::test {

enum class Addressing {
    whole_pixels,  // below 8 bits the address stands still, and a single bit is not seen
    single_bits,   // every pixel has its place
    whole_bytes,   // the address moves on with the pixels, but the bit is always the byte's first
    row_start,     // every pixel is the row's first, whose bit is seen
};

inline int bit_place(int x, int depth, Addressing addressing) {
    switch (addressing) {
        case Addressing::single_bits: return x * depth;
        case Addressing::whole_bytes: return x * depth / 8 * 8;
        default: return 0;
    }
}

inline std::uint32_t load(const host::Picture& picture, int x, int y, bool as_mask, Addressing addressing) {
    if (picture.depth() >= 8 || picture.backing() == host::Backing::drawing_commands)
        return read_pixel(picture, x, y, as_mask);
    const int place = bit_place(x, picture.depth(), addressing);
    const std::uint32_t byte = picture.row(y)[place / 8];
    if (as_mask) return byte * 0x010101;
    if (picture.depth() != 1 || addressing == Addressing::whole_pixels) return 0;
    return byte >> (7 - place % 8) & 1 ? 0x000000 : 0xFFFFFF;
}

inline void store(host::Picture& picture, int x, int y, std::uint32_t color, bool as_mask, Addressing addressing) {
    if (picture.depth() >= 8) return write_pixel(picture, x, y, color, as_mask);
    const int place = bit_place(x, picture.depth(), addressing);
    std::uint8_t& byte = picture.row(y)[place / 8];
    if (as_mask) {
        byte = static_cast<std::uint8_t>(color);
    } else if (picture.depth() == 1 && addressing != Addressing::whole_pixels) {
        const int bit = 0x80 >> place % 8;
        byte = static_cast<std::uint8_t>(color == 0 ? byte | bit : byte & ~bit);
    }
}

// What an operation starts from: a new picture is white, a new mask black.
inline std::unique_ptr<host::Picture> new_like(const host::Picture& made, host::Picture::Paper paper) {
    return host::Picture::make({.width = made.width(), .height = made.height(), .depth = made.depth()}, paper);
}

inline void expect_same_bytes(const host::Picture& actual, const host::Picture& expected) {
    ASSERT_EQ(actual.width(), expected.width());
    ASSERT_EQ(actual.height(), expected.height());
    ASSERT_EQ(actual.depth(), expected.depth());
    for (int y = 0; y < actual.height(); ++y) {
        if (std::memcmp(actual.row(y), expected.row(y), actual.packed_row_bytes()) == 0) continue;
        for (std::size_t i = 0; i < actual.packed_row_bytes(); ++i)
            ASSERT_EQ(actual.row(y)[i], expected.row(y)[i]) << "byte " << i << " of row " << y;
    }
}

}  // namespace tarvo::test
