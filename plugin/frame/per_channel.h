#pragma once

// Something for each channel of a colour.

#include <cstdint>

#include "numbers.h"
#include "pixel_formats.h"
#include "row_clones.h"

// With a rule for a channel, `channel(value)`, it is a kernel that makes one colour.
template <class Channel>
struct PerChannel {
    Channel red, green, blue;

    template <class Function>
    constexpr auto each(Function function) const -> PerChannel<decltype(function(red))> {
        return {function(red), function(green), function(blue)};
    }
    template <class Test>
    constexpr bool all(Test test) const {
        return test(red) && test(green) && test(blue);
    }

    TARVO_INLINED PixelColor operator()(PixelColor color) const {
        return pack_rgb(red(red_of(color)), green(green_of(color)), blue(blue_of(color)));
    }
};

// make(centre, factor) for each channel of a centre colour and its factor, in 256ths.
template <class Make>
auto about_center(int center, double red, double green, double blue, Make make)
    -> PerChannel<decltype(make(std::int32_t{}, std::int32_t{}))> {
    const auto color = static_cast<PixelColor>(center);
    const auto channel = [&make](std::uint32_t value, double factor) {
        return make(static_cast<std::int32_t>(value), in_256ths(factor));
    };
    return {channel(red_of(color), red), channel(green_of(color), green), channel(blue_of(color), blue)};
}
