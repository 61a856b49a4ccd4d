#pragma once

// The plain border of a picture: the rows and columns at its edges that have the colour of its first pixel.

#include <cstdint>
#include <optional>

#include "object.h"

namespace tarvo::cli {

struct Area {
    std::int32_t left, top, width, height;
    friend bool operator==(const Area&, const Area&) = default;
};

// What is left without it. A pixel belongs to the border's rows and columns if no channel is further than `levels` from
// the first pixel's. None when the whole picture is border, has no pixels, or none that can be read.
std::optional<Area> inside_border(const host::Picture& picture, std::int32_t levels);

}  // namespace tarvo::cli
