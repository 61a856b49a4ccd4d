#pragma once

// Pixels of cyan, magenta, yellow and black where no profile tells their colours.

#include <cstdint>

namespace tarvo::host {

// Paper where there is no ink. `ink` counts towards 255, or from it when inverted.
inline void inks_to_rgb(const std::uint8_t* ink, bool inverted, int width, std::uint8_t* out) {
    const auto times = [](int a, int b) { return static_cast<std::uint8_t>((a * b + 127) / 255); };
    const int flip = inverted ? 0 : 255;
    for (int x = 0; x < width; ++x, ink += 4, out += 3)
        for (int channel = 0; channel < 3; ++channel) out[channel] = times(ink[channel] ^ flip, ink[3] ^ flip);
}

}  // namespace tarvo::host
