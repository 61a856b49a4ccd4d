#pragma once

// TRV_Rectangle: the integer rectangle by which programs select a region of a picture.

#include <cstdint>

#include "real_interface.h"

// Right and bottom are inclusive: right = left + width - 1. Sums wrap in 32 bits, and nothing is clamped.
struct TRV_Rectangle_Data {
    std::int32_t left;
    std::int32_t top;
    std::int32_t width;
    std::int32_t height;

    std::int32_t right() const;
    std::int32_t bottom() const;
    friend bool operator==(const TRV_Rectangle_Data&, const TRV_Rectangle_Data&) = default;
};
static_assert(sizeof(TRV_Rectangle_Data) == 16);

extern REALclassDefinition TRV_Rectangle_Class;

// Returns the data of an instance; null for nil.
TRV_Rectangle_Data* TRV_Rectangle_GetData(REALobjectStruct* rectangle);
