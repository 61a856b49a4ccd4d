#pragma once

// Indices of less than a byte, as files have them.

#include <cstdint>
#include <span>

namespace tarvo::host {

// Writes indices of `bits` bits each: the first stands in the highest bits. `flipped`: those of one bit are exchanged.
inline void pack_indices(std::span<const std::uint8_t> indices, int bits, bool flipped, std::uint8_t* row) {
    const int flip = flipped ? 1 : 0;
    int byte = 0, used = 0;
    for (const std::uint8_t index : indices) {
        byte = byte << bits | (index ^ flip);
        used += bits;
        if (used < 8) continue;
        *row++ = static_cast<std::uint8_t>(byte);
        byte = used = 0;
    }
    if (used > 0) *row = static_cast<std::uint8_t>(byte << (8 - used));
}

}  // namespace tarvo::host
