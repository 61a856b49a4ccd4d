#pragma once

// Rows of pixels of 32 bits as pictures store them (nothing, red, green, blue), and as files have them.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tarvo::host {

inline std::uint32_t color_bits_of_words() {
    constexpr std::uint8_t kColorBytes[] = {0, 255, 255, 255};
    std::uint32_t bits;
    std::memcpy(&bits, kColorBytes, 4);
    return bits;
}

// Makes the first byte of `count` stored pixels 0.
inline void clear_unused_bytes(std::uint8_t* stored, std::size_t count) {
    const std::uint32_t color_bits = color_bits_of_words();
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t word;
        std::memcpy(&word, stored + 4 * i, 4);
        word &= color_bits;
        std::memcpy(stored + 4 * i, &word, 4);
    }
}

// Stores `count` pixels, one or more, that begin with red, green and blue, `step` bytes each: 3 or 4. Each is taken in
// one piece with the byte in front of it, which then makes way for the 0.
template <std::size_t step>
void store_row(const std::uint8_t* colors, std::size_t count, std::uint8_t* stored) {
    const std::uint32_t color_bits = color_bits_of_words();
    stored[0] = 0;
    std::memcpy(stored + 1, colors, 3);
    for (std::size_t i = 1; i < count; ++i) {
        std::uint32_t word;
        std::memcpy(&word, colors + step * i - 1, 4);
        word &= color_bits;
        std::memcpy(stored + 4 * i, &word, 4);
    }
}

// Writes red, green and blue of `count` stored pixels, one or more. Each comes in one piece with the byte that is
// behind it, on which the next one is written.
inline void load_rgb_row(const std::uint8_t* stored, std::size_t count, std::uint8_t* rgb) {
    for (std::size_t i = 0; i + 1 < count; ++i) std::memcpy(rgb + 3 * i, stored + 4 * i + 1, 4);
    std::memcpy(rgb + 3 * (count - 1), stored + 4 * (count - 1) + 1, 3);
}

}  // namespace tarvo::host
