#pragma once

// How kernels walk pictures: row by row, each row in chunks of colours that stay in the first-level cache.
//
//     run      any number of neighbouring pixels of one row
//     chunk    at most kChunkPixels of a run, as colours in an array
//     block    kBlockPixels of a run or chunk, as colours in registers
//     piece    any part of something longer that is worked on at once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "picture.h"
#include "region.h"
#include "yield_budget.h"

namespace tarvo::plugin {

inline constexpr std::int32_t kChunkPixels = 512;

// Kernels keep what they work on in arrays on the stack: no allocation can fail halfway, and nothing is shared with
// operations that run while the host has control. The large arrays of a kernel take at most this much together, of the
// 512 KiB and more that the stacks of threads usually have.
inline constexpr std::size_t kMostStackBytes = std::size_t{216} << 10;

// The colours of a chunk.
using Chunk = std::array<PixelColor, kChunkPixels>;

// Cuts the rows or columns from `first` to `last` into pieces of at most `size` and calls `visit(first, last)` for
// each. The last ones are included.
template <class Visit>
void for_each_piece(std::int32_t first, std::int32_t last, std::int32_t size, Visit visit) {
    for (std::int64_t piece = first; piece <= last; piece += size)
        visit(static_cast<std::int32_t>(piece),
              static_cast<std::int32_t>(std::min<std::int64_t>(piece + size - 1, last)));
}

// Calls `visit(column, count)` for the chunks of the columns from `first` to `last`, both included.
template <class Visit>
void for_each_chunk(std::int32_t first, std::int32_t last, Visit visit) {
    for (std::int32_t column = first; column <= last; column += kChunkPixels)
        visit(column, static_cast<std::size_t>(std::min(kChunkPixels, last - column + 1)));
}

// Calls `measure(colors, count)` for every chunk of the region. The host gets control as when whole rows are walked.
template <class Measure>
void measure_region(const TRV_Picture& source, const Region& region, int yield, const char* caller, Measure measure) {
    YieldBudget budget(yield);
    Chunk colors;
    for (std::int32_t row = region.top; row <= region.bottom; ++row) {
        budget.before_row(source.width());
        for_each_chunk(region.left, region.right, [&](std::int32_t column, std::size_t count) {
            const std::span run(colors.data(), count);
            source.get_pixels(row, column, run, caller);
            measure(run.data(), count);
        });
    }
}

}  // namespace tarvo::plugin
