#pragma once

#include "pixel_formats.h"
#include "row_clones.h"

namespace tarvo::plugin {

// A thing for red, another for green, another for blue: numbers, or the rules by which each channel changes.
template <class Channel>
struct PerChannel {
    Channel red, green, blue;

    // What the function makes of each of the three.
    template <class Function>
    TARVO_INLINED constexpr auto each(Function function) const -> PerChannel<decltype(function(red))> {
        return {function(red), function(green), function(blue)};
    }
    template <class Test>
    constexpr bool all(Test test) const {
        return test(red) && test(green) && test(blue);
    }

    // Rules, `channel(value)`, are a kernel: each makes its channel of the changed colour.
    TARVO_INLINED PixelColor operator()(PixelColor color) const {
        return pack_rgb(red(red_of(color)), green(green_of(color)), blue(blue_of(color)));
    }
};

}  // namespace tarvo::plugin
