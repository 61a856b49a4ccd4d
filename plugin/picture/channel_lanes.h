#pragma once

// Arithmetic on the channels of many colours, in lanes of 16 bits: a vector register then holds twice as many as with a
// lane of 32 bits for each channel. For use inside row loops; a plain loop that compilers turn into vector code.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "pixel_formats.h"

// A 16-bit constant for each channel, laid out as the channels of a colour in memory. 0 for the unused top byte.
struct ChannelConstants {
    // [half word of the colour in memory]
    std::int16_t low[2];   // for the half's low byte
    std::int16_t high[2];  // for its high byte

    static constexpr ChannelConstants of(int red, int green, int blue) {
        const auto r = static_cast<std::int16_t>(red);
        const auto g = static_cast<std::int16_t>(green);
        const auto b = static_cast<std::int16_t>(blue);
        if constexpr (std::endian::native == std::endian::little) return {{b, r}, {g, 0}};
        return {{r, b}, {0, g}};
    }
};

namespace channel_lanes {
// Never deduced: `auto` and templates lose the attribute.
using HalfWord [[gnu::may_alias]] = std::uint16_t;
}  // namespace channel_lanes

// channel = function(channel, constants of that channel...) for every byte of the colours, top bytes included. The
// function takes and gives 16-bit numbers, the result in 0 to 255.
template <class Function, class... Constants>
[[gnu::always_inline]] inline void map_channels(PixelColor* colors, std::size_t count, Function function,
                                                const Constants&... constants) {
    channel_lanes::HalfWord* const halves = reinterpret_cast<channel_lanes::HalfWord*>(colors);
    for (std::size_t i = 0; i < 2 * count; i += 2) {
        for (std::size_t k = 0; k < 2; ++k) {
            const std::uint16_t half = halves[i + k];
            const auto low = static_cast<std::int16_t>(half & 255);
            const auto high = static_cast<std::int16_t>(half >> 8);
            const std::uint32_t new_low = static_cast<std::uint16_t>(function(low, constants.low[k]...));
            const std::uint32_t new_high = static_cast<std::uint16_t>(function(high, constants.high[k]...));
            halves[i + k] = static_cast<std::uint16_t>(new_high << 8 | new_low);
        }
    }
}
