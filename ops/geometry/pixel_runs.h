#pragma once

// Runs of one row, of any length, moved from picture to picture in chunks.

#include <cstdint>
#include <span>

#include "rows.h"

// How a kernel addresses pixels. Below 8 bits it matters: whole-pixel addresses stand still there, and single bits are
// only reached by the other way.
struct RunAccess {
    void (TRV_Picture::*read)(long row, long column, std::span<PixelColor> colors, const char* caller) const;
    void (TRV_Picture::*write)(long row, long column, std::span<const PixelColor> colors, const char* caller);
};
inline constexpr RunAccess kWholePixels = {&TRV_Picture::GetPixels, &TRV_Picture::SetPixels};
inline constexpr RunAccess kSingleBits = {&TRV_Picture::GetPixelBits, &TRV_Picture::SetPixelBits};

// Where a run begins.
struct Place {
    std::int32_t row, column;
};

void copy_run(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count,
              const char* caller);
void fill_run(TRV_Picture& result, Place to, std::int32_t count, PixelColor color, const char* caller);
