#pragma once

// Arithmetic on the channels of many colours in lanes of 16 bits: a vector register holds twice as many of them as of
// lanes of 32 bits. The code is a plain loop that compilers turn into vector code where a row loop contains it.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "pixel_formats.h"

namespace tarvo::plugin {

// Whether the machine gives the high halves of products of 16 bits in lanes of 16 bits. WebAssembly does not: there
// lanes of 32 bits are faster from the start.
#ifdef __wasm__
inline constexpr bool kHasHighProducts = false;
#else
inline constexpr bool kHasHighProducts = true;
#endif

// A 16-bit constant for each channel, and 0 for the unused top byte, arranged as the bytes of a colour are in memory:
//
//                       first half word      second half word
//                       low       high       low       high
//     little-endian     blue      green      red       0
//     big-endian        red       0          blue      green
struct ChannelConstants {
    std::int16_t low[2];   // for the low byte of each half word
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
// To be written out where it is used: `auto` and template parameters lose the attribute.
using HalfWord [[gnu::may_alias]] = std::uint16_t;
}  // namespace channel_lanes

// channel = function(channel, constants of that channel...) for every byte of the colours, top bytes included. The
// function takes 16-bit numbers and returns one from 0 to 255.
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

}  // namespace tarvo::plugin
