#pragma once

// Finds the plain border of a picture: the rows and columns at its edges that have the colour of its first pixel.

#include <cstdint>
#include <optional>

#include "object.h"

namespace tarvo::language {

struct Area {
    std::int32_t left, top, width, height;
    friend bool operator==(const Area&, const Area&) = default;
};

// Returns the picture's area without its border. A pixel has the border's colour if no channel differs from the first
// pixel's by more than `levels`. Returns none when nothing is left, or when the picture has no pixels to read.
std::optional<Area> inside_border(const host::Picture& picture, std::int32_t levels);

}  // namespace tarvo::language
