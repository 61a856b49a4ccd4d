#pragma once

#include <cstdint>

#include "adjustment.h"
#include "numbers.h"
#include "per_channel.h"

namespace tarvo::plugin {

// What the adjustments about a centre colour share: the arguments, which are that colour and a factor or weight for
// each channel.
struct CenteredAdjustment {
    int center;
    double red, green, blue;

    bool arguments_pass() const { return channels_in_range(0.0, 255.0, red, green, blue); }

    // Returns a rule for each channel, made of the centre's channel and the factor in 256ths.
    template <class Rule>
    PerChannel<Rule> rules() const {
        const auto color = static_cast<PixelColor>(center);
        const auto rule = [](std::uint32_t value, double factor) {
            return Rule{static_cast<std::int32_t>(value), in_256ths(factor)};
        };
        return {rule(red_of(color), red), rule(green_of(color), green), rule(blue_of(color), blue)};
    }
};

}  // namespace tarvo::plugin
