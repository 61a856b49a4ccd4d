#pragma once

#include <algorithm>
#include <cstdint>

#include "picture.h"
#include "real_interface.h"

namespace tarvo::plugin {

// A part of a picture. All four edges belong to it.
struct Region {
    std::int32_t left, top, right, bottom;

    bool empty() const { return left > right || top > bottom; }
    bool has_row(std::int32_t row) const { return row >= top && row <= bottom; }
};

struct Size {
    std::int32_t width, height;
};

inline Size size_of(const TRV_Picture& picture) { return {picture.width(), picture.height()}; }
inline Region whole_of(const TRV_Picture& picture) { return {0, 0, picture.width() - 1, picture.height() - 1}; }

// Returns what a rectangle argument selects of a locked picture: the rectangle clipped to the picture, or the whole
// picture if there is no rectangle.
Region select_region(const TRV_Picture& picture, REALobjectStruct* rectangle);

}  // namespace tarvo::plugin
