#pragma once

// How one pixel is stored, and the conversion to and from its colour, 0x00RRGGBB. On every machine the bytes are:
//
//                  byte 0       byte 1       byte 2       byte 3
//     XRgb32       unused       red          green        blue
//     Rgb24        red          green        blue
//     Rgb555       0RRRRRGG     GGGBBBBB
//     Grey8        level
//     Mono1        a bit for each of 8 pixels, the first in the most significant bit; 1 is black

#include <bit>
#include <cstdint>
#include <cstring>

namespace tarvo::plugin {

using PixelColor = std::uint32_t;

constexpr PixelColor grey(std::uint32_t level) { return level * 0x010101; }
constexpr std::uint32_t red_of(PixelColor color) { return color >> 16 & 255; }
constexpr std::uint32_t green_of(PixelColor color) { return color >> 8 & 255; }
constexpr std::uint32_t blue_of(PixelColor color) { return color & 255; }
constexpr PixelColor pack_rgb(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return red << 16 | green << 8 | blue;
}

// Words are loaded and stored whole, not byte by byte: compilers turn that into wide shuffles.
inline std::uint8_t big_endian(std::uint8_t value) { return value; }
inline std::uint16_t big_endian(std::uint16_t value) {
    return std::endian::native == std::endian::big ? value : __builtin_bswap16(value);
}
inline std::uint32_t big_endian(std::uint32_t value) {
    return std::endian::native == std::endian::big ? value : __builtin_bswap32(value);
}
template <class Word>
Word load_big_endian(const std::uint8_t* at) {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return big_endian(word);
}
template <class Word>
void store_big_endian(std::uint8_t* at, Word value) {
    const Word word = big_endian(value);
    std::memcpy(at, &word, sizeof word);
}

// The unused byte is read and written with the colour, so that copied pixels keep it.
struct XRgb32 {
    static constexpr int kBytes = 4;
    static PixelColor load(const std::uint8_t* at) { return load_big_endian<std::uint32_t>(at); }
    static void store(std::uint8_t* at, PixelColor color) { store_big_endian<std::uint32_t>(at, color); }
};

struct Rgb24 {
    static constexpr int kBytes = 3;
    static PixelColor load(const std::uint8_t* at) { return pack_rgb(at[0], at[1], at[2]); }
    static void store(std::uint8_t* at, PixelColor color) {
        at[0] = static_cast<std::uint8_t>(color >> 16);
        at[1] = static_cast<std::uint8_t>(color >> 8);
        at[2] = static_cast<std::uint8_t>(color);
    }
};

// The low three bits of each channel read 0: the five bits are not replicated.
struct Rgb555 {
    static constexpr int kBytes = 2;
    static PixelColor expand(std::uint32_t word) {
        return (word << 9 & 0xF80000) | (word << 6 & 0xF800) | (word << 3 & 0xF8);
    }
    static std::uint32_t reduce(PixelColor color) {
        return (color >> 9 & 0x7C00) | (color >> 6 & 0x3E0) | (color >> 3 & 0x1F);
    }
    static PixelColor load(const std::uint8_t* at) { return expand(load_big_endian<std::uint16_t>(at)); }
    static void store(std::uint8_t* at, PixelColor color) {
        store_big_endian<std::uint16_t>(at, static_cast<std::uint16_t>(reduce(color)));
    }
};

// The grey level of a mask. What is written is the colour's blue channel.
struct Grey8 {
    static constexpr int kBytes = 1;
    static PixelColor load(const std::uint8_t* at) { return grey(*at); }
    static void store(std::uint8_t* at, PixelColor color) { *at = static_cast<std::uint8_t>(color); }
};

// Only the colour 0 is written as black. A bit number outside the byte reads as white and writes nothing.
struct Mono1 {
    static constexpr std::uint32_t selected(long bit) { return bit >= 0 && bit < 8 ? 0x80u >> bit : 0; }
    static PixelColor load(std::uint8_t byte, long bit) { return byte & selected(bit) ? 0x000000 : 0xFFFFFF; }
    static std::uint8_t store(std::uint8_t byte, long bit, PixelColor color) {
        return static_cast<std::uint8_t>(color == 0 ? byte | selected(bit) : byte & ~selected(bit));
    }
};

}  // namespace tarvo::plugin
