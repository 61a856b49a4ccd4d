#pragma once

// Pixels moved from picture to picture unchanged: runs of one row, of any length, and parts of pictures. Between
// pictures of 32 bits stored pixels are moved, between any others chunks of colours.

#include <cstdint>
#include <span>

#include "picture.h"
#include "region.h"

namespace tarvo::plugin {

// How a kernel addresses pixels. That matters below 8 bits a pixel, where all columns of a row have the same
// whole-pixel address, and only the bit-addressed accessors reach single pixels.
struct RunAccess {
    void (TRV_Picture::*read)(long row, long column, std::span<PixelColor> colors, const char* caller) const;
    void (TRV_Picture::*write)(long row, long column, std::span<const PixelColor> colors, const char* caller);
};
inline constexpr RunAccess kWholePixels = {&TRV_Picture::get_pixels, &TRV_Picture::set_pixels};
inline constexpr RunAccess kSingleBits = {&TRV_Picture::get_pixel_bits, &TRV_Picture::set_pixel_bits};

// Whether words_at finds 32-bit words in all rows from `first` to before `end`.
bool rows_are_words(const TRV_Picture& picture, std::int32_t first, std::int32_t end);

// The place where a run begins.
struct Place {
    std::int32_t row, column;
};

void copy_run(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count,
              const char* caller, const RunAccess& access = kWholePixels);
// The same at the same place of both pictures, but between pictures of 16 bits the unused bit is copied too. Colours
// have no place for it.
void copy_run_whole(const TRV_Picture& source, TRV_Picture& result, Place at, std::int32_t count, const char* caller);
// As copy_run, but with the last pixel first.
void mirror_run(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count,
                const char* caller, const RunAccess& access = kWholePixels);
void fill_run(TRV_Picture& result, Place to, std::int32_t count, PixelColor color, const char* caller);

// result = source, within a part of both.
void copy_region(const TRV_Picture& source, TRV_Picture& result, const Region& part, const char* caller);
// result = source, outside a part of both that is not empty.
void copy_around(const TRV_Picture& source, TRV_Picture& result, const Region& part, const char* caller);

}  // namespace tarvo::plugin
