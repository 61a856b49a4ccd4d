#pragma once

// TRV_Convolution: a row of integer weights, by which programs describe a filter.

#include <cstdint>
#include <span>

#include "real_interface.h"

struct TRV_Convolution_Data {
    static constexpr std::int32_t kMostTaps = 21;

    std::int32_t coefficients[kMostTaps];  // 0 from `width` on
    std::int32_t sum;                      // always 0, whatever the coefficients are: programs know it so
    std::int32_t width;                    // how many coefficients are in use: 0, or an odd number

    std::span<const std::int32_t> taps() const { return {coefficients, static_cast<std::size_t>(width)}; }
};
static_assert(sizeof(TRV_Convolution_Data) == 92);

extern REALclassDefinition TRV_Convolution_Class;

// Returns the data of an instance; null for nil.
TRV_Convolution_Data* TRV_Convolution_GetData(REALobjectStruct* convolution);
