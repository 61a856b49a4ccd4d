#pragma once

#include <algorithm>
#include <cstdint>

#include "picture.h"
#include "real_interface.h"

// A part of a picture, edges inclusive.
struct Region {
    std::int32_t left, top, right, bottom;

    bool empty() const { return left > right || top > bottom; }
    bool has_row(std::int32_t row) const { return row >= top && row <= bottom; }
};

inline Region whole_of(const TRV_Picture& picture) { return {0, 0, picture.width() - 1, picture.height() - 1}; }

// What a rectangle argument selects of a locked picture: the rectangle clipped to the picture, or all of it without
// one.
Region SelectRegion(const TRV_Picture& picture, REALobjectStruct* rectangle);
