#pragma once

// How kernels walk pictures: row by row, each row in chunks of colours that stay in the first-level cache.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "picture.h"
#include "region.h"
#include "yield_budget.h"

inline constexpr std::int32_t kChunkPixels = 512;

// Colours of a chunk.
using Chunk = std::array<PixelColor, kChunkPixels>;

// Calls `visit(first, last)` for pieces of at most `size` of the rows or columns from `first` to `last`, all included.
template <class Visit>
void for_each_piece(std::int32_t first, std::int32_t last, std::int32_t size, Visit visit) {
    for (std::int64_t piece = first; piece <= last; piece += size)
        visit(static_cast<std::int32_t>(piece),
              static_cast<std::int32_t>(std::min<std::int64_t>(piece + size - 1, last)));
}

// Calls `visit(column, count)` for the pieces of the columns from `first` to `last`, both included.
template <class Visit>
void for_each_chunk(std::int32_t first, std::int32_t last, Visit visit) {
    for (std::int32_t column = first; column <= last; column += kChunkPixels)
        visit(column, static_cast<std::size_t>(std::min(kChunkPixels, last - column + 1)));
}

// Calls `measure(colors, count)` for all of the region. The host gets control as when whole rows are walked.
template <class Measure>
void measure_region(const TRV_Picture& source, const Region& region, int yield, const char* caller, Measure measure) {
    YieldBudget budget(yield);
    Chunk colors;
    for (std::int32_t row = region.top; row <= region.bottom; ++row) {
        budget.before_row(source.width());
        for_each_chunk(region.left, region.right, [&](std::int32_t column, std::size_t count) {
            const std::span run(colors.data(), count);
            source.GetPixels(row, column, run, caller);
            measure(run.data(), count);
        });
    }
}
