#pragma once

// Whole numbers as most files have them: the highest byte first.

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::host {

// Reads `count` bytes, at most 4, which are all there.
inline std::uint32_t big_endian(std::span<const std::uint8_t> bytes, std::size_t place, std::size_t count) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes.subspan(place, count)) value = value << 8 | byte;
    return value;
}

// Appends the lowest `count` bytes of a number.
template <class Bytes>
void append_big_endian(Bytes& to, std::uint32_t value, int count) {
    while (count-- > 0) to.push_back(static_cast<std::uint8_t>(value >> 8 * count));
}

}  // namespace tarvo::host
