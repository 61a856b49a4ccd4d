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

struct LeaveColors {
    void operator()(PixelColor*, std::size_t) const {}
};

// result = source, with `transform(row, column, colors, count)` applied to the runs of the region, and then
// `finish(colors, count)` to all of the picture.
template <class Transform, class Finish = LeaveColors>
void transform_runs(const TRV_Picture& source, TRV_Picture& result, const Region& region, int yield, const char* caller,
                    Transform transform, Finish finish = {}) {
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
                if (from < to) transform(row, from, run.data() + (from - column), static_cast<std::size_t>(to - from));
            }
            finish(run.data(), count);
            result.SetPixels(row, column, run, caller);
        });
    }
}

// result = source, with `transform(colors, count)` applied to the region, and then `finish` to all of the picture.
template <class Transform, class Finish = LeaveColors>
void transform_region(const TRV_Picture& source, TRV_Picture& result, const Region& region, int yield,
                      const char* caller, Transform transform, Finish finish = {}) {
    transform_runs(
        source, result, region, yield, caller,
        [&](std::int32_t, std::int32_t, PixelColor* colors, std::size_t count) { transform(colors, count); }, finish);
}

// For walks down some columns, whose next rows no hardware foresees: brings near what is read a few rows later.
inline void prefetch_below(const TRV_Picture& source, std::int32_t row, std::int32_t column, std::size_t count) {
    constexpr std::int32_t kRowsAhead = 4;
    source.Prefetch(std::min(row + kRowsAhead, source.height() - 1), column, count);
}

// result = source, within a part of both.
inline void copy_region(const TRV_Picture& source, TRV_Picture& result, const Region& part, const char* caller) {
    Chunk colors;
    for (std::int32_t row = part.top; row <= part.bottom; ++row)
        for_each_chunk(part.left, part.right, [&](std::int32_t column, std::size_t count) {
            const std::span run(colors.data(), count);
            source.GetPixels(row, column, run, caller);
            result.SetPixels(row, column, run, caller);
        });
}

// result = source, outside a part of both that is not empty.
inline void copy_around(const TRV_Picture& source, TRV_Picture& result, const Region& part, const char* caller) {
    const std::int32_t last_column = source.width() - 1, last_row = source.height() - 1;
    copy_region(source, result, {0, 0, last_column, part.top - 1}, caller);
    copy_region(source, result, {0, part.top, part.left - 1, part.bottom}, caller);
    copy_region(source, result, {part.right + 1, part.top, last_column, part.bottom}, caller);
    copy_region(source, result, {0, part.bottom + 1, last_column, last_row}, caller);
}

// Applies `transform(colors, count)` to the region of the picture itself. Nothing else is written.
template <class Transform>
void transform_in_place(TRV_Picture& picture, const Region& region, const char* caller, Transform transform) {
    Chunk colors;
    for (std::int32_t row = region.top; row <= region.bottom; ++row) {
        for_each_chunk(region.left, region.right, [&](std::int32_t column, std::size_t count) {
            const std::span run(colors.data(), count);
            picture.GetPixels(row, column, run, caller);
            transform(run.data(), count);
            picture.SetPixels(row, column, run, caller);
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
