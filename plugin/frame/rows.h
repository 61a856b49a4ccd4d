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

// Calls `visit(column, count)` for the pieces of the columns from `first` to `last`, both included.
template <class Visit>
void for_each_chunk(std::int32_t first, std::int32_t last, Visit visit) {
    for (std::int32_t column = first; column <= last; column += kChunkPixels)
        visit(column, static_cast<std::size_t>(std::min(kChunkPixels, last - column + 1)));
}

// result = combine(source, other), for two pictures of the result's size. `combine(colors, others, count)` works in
// place on the colours of the source.
template <class Combine>
void combine_pictures(const TRV_Picture& source, const TRV_Picture& other, TRV_Picture& result, int yield,
                      const char* caller, Combine combine) {
    YieldBudget budget(yield);
    Chunk colors, others;
    for (std::int32_t row = 0; row < result.height(); ++row) {
        budget.before_row(result.width());
        for_each_chunk(0, result.width() - 1, [&](std::int32_t column, std::size_t count) {
            const std::span run(colors.data(), count);
            source.GetPixels(row, column, run, caller);
            other.GetPixels(row, column, {others.data(), count}, caller);
            combine(run.data(), others.data(), count);
            result.SetPixels(row, column, run, caller);
        });
    }
}

// result = source, with `transform(colors, count)` applied to the region.
template <class Transform>
void transform_region(const TRV_Picture& source, TRV_Picture& result, const Region& region, int yield,
                      const char* caller, Transform transform) {
    YieldBudget budget(yield);
    Chunk colors;
    for (std::int32_t row = 0; row < result.height(); ++row) {
        budget.before_row(result.width());
        for_each_chunk(0, result.width() - 1, [&](std::int32_t column, std::size_t count) {
            const std::span run(colors.data(), count);
            source.GetPixels(row, column, run, caller);
            if (region.has_row(row)) {
                const std::int32_t end = column + static_cast<std::int32_t>(count);
                const std::int32_t from = std::max(region.left, column);
                const std::int32_t to = std::min(region.right + 1, end);
                if (from < to) transform(run.data() + (from - column), static_cast<std::size_t>(to - from));
            }
            result.SetPixels(row, column, run, caller);
        });
    }
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
