#pragma once

// Pixels moved from picture to picture unchanged: runs of one row, of any length, and parts of pictures. Between
// pictures of 32 bits they go as they are stored, else in chunks of colours.

#include <cstdint>
#include <span>

#include "picture.h"
#include "region.h"

// How a kernel addresses pixels. Below 8 bits it matters: whole-pixel addresses stand still there, and single bits are
// only reached by the other way.
struct RunAccess {
    void (TRV_Picture::*read)(long row, long column, std::span<PixelColor> colors, const char* caller) const;
    void (TRV_Picture::*write)(long row, long column, std::span<const PixelColor> colors, const char* caller);
};
inline constexpr RunAccess kWholePixels = {&TRV_Picture::GetPixels, &TRV_Picture::SetPixels};
inline constexpr RunAccess kSingleBits = {&TRV_Picture::GetPixelBits, &TRV_Picture::SetPixelBits};

// Whether all rows from `first` to before `end` are 32-bit words side by side, as WordsAt gives them.
bool rows_are_words(const TRV_Picture& picture, std::int32_t first, std::int32_t end);

// Where a run begins.
struct Place {
    std::int32_t row, column;
};

void copy_run(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count,
              const char* caller, const RunAccess& access = kWholePixels);
// The same at the same place, but between pictures of 16 bits with the unused bit, which colours have no place for.
void copy_run_whole(const TRV_Picture& source, TRV_Picture& result, Place at, std::int32_t count, const char* caller);
// As copy_run, last pixel first.
void mirror_run(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count,
                const char* caller, const RunAccess& access = kWholePixels);
void fill_run(TRV_Picture& result, Place to, std::int32_t count, PixelColor color, const char* caller);

// result = source, within a part of both.
void copy_region(const TRV_Picture& source, TRV_Picture& result, const Region& part, const char* caller);
// result = source, outside a part of both that is not empty.
void copy_around(const TRV_Picture& source, TRV_Picture& result, const Region& part, const char* caller);
