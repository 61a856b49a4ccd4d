#pragma once

// Walks for operations that make each colour of the result from one colour of each picture, at the same place or, in an
// overlay, at a fixed distance from it.
//
// Kernels (pixel_blocks.h) become part of the loops here, which are compiled for the processor at hand. Pictures of 32
// bits are read, worked on and written in one pass.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "bands.h"
#include "numbers.h"
#include "picture.h"
#include "pixel_blocks.h"
#include "pixel_runs.h"
#include "region.h"
#include "rows.h"
#include "yield_budget.h"

namespace tarvo::plugin {

// The place that a run of a row is read from.
struct RunSource {
    const TRV_Picture& picture;
    std::int32_t row, column;
};

// The colours of a chunk, which is made of whole blocks.
struct alignas(kCacheLine) BlockedChunk {
    static_assert(kChunkPixels % kBlockPixels == 0);
    Chunk colors{};
};

// result = kernel(first, others...) for a run of one row.
template <class Kernel, class... Others>
void map_run(TRV_Picture& result, std::int32_t row, std::int32_t column, std::size_t count, const char* caller,
             const Kernel& kernel, const RunSource& first, const Others&... others) {
    const auto words = [](const RunSource& run) -> const std::uint8_t* {
        return run.picture.words_at(run.row, run.column);
    };
    std::uint8_t* const to = result.words_at(row, column);
    if (to && words(first) && (... && words(others)))
        return map_xrgb32_run(to, result.store_mode(), count, kernel, words(first), words(others)...);

    constexpr std::size_t kPictures = 1 + sizeof...(others);
    const auto map_chunks = [&]<std::size_t... i>(std::index_sequence<i...>) TARVO_INLINED {
        BlockedChunk chunks[kPictures];
        for (std::size_t x = 0; x < count; x += kChunkPixels) {
            const std::size_t pixels = std::min<std::size_t>(kChunkPixels, count - x);
            const auto offset = static_cast<std::int32_t>(x);
            std::size_t next = 0;
            const auto read = [&](const RunSource& run) {
                run.picture.get_pixels(run.row, run.column + offset, {chunks[next++].colors.data(), pixels}, caller);
            };
            read(first);
            (read(others), ...);
            for (std::size_t block = 0; block < pixels; block += kBlockPixels)
                apply_kernel(kernel, (chunks[i].colors.data() + block)...);
            result.set_pixels(row, column + offset, std::span(chunks[0].colors).first(pixels), caller);
        }
    };
    on_this_processor([&]() TARVO_INLINED { map_chunks(std::make_index_sequence<kPictures>{}); });
}

// A kernel that applies two kernels, one after the other.
template <class First, class Second>
struct Chain {
    First first;
    Second second;

    TARVO_INLINED void operator()(PixelColor* colors) const {
        apply_kernel(first, colors);
        apply_kernel(second, colors);
    }
};
template <class First, class Second>
Chain(First, Second) -> Chain<First, Second>;

// A further picture of an operation. Its first pixel lies over the source's at `left`, `top`, and it covers the region.
struct PlacedPicture {
    const TRV_Picture& picture;
    std::int32_t left = 0, top = 0;

    RunSource run(std::int32_t row, std::int32_t column) const {
        return {picture, wrapping_subtract(row, top), wrapping_subtract(column, left)};
    }
};

// result = kernel(source, overlays...) in the region. `rest(row, column, count)` is called to write each run around it.
template <class Kernel, class Rest, class... Overlays>
void map_region_and_rest(const TRV_Picture& source, TRV_Picture& result, const Region& region, int yield,
                         const char* caller, const Kernel& kernel, Rest rest, const Overlays&... overlays) {
    YieldBudget budget(yield);
    const std::int32_t width = result.width();
    const std::int32_t end = region.right + 1;
    const auto map_row = [&](std::int32_t row) {
        if (region.empty() || !region.has_row(row)) return rest(row, 0, width);
        if (region.left > 0) rest(row, 0, region.left);
        map_run(result, row, region.left, static_cast<std::size_t>(end - region.left), caller, kernel,
                RunSource{source, row, region.left}, overlays.run(row, region.left)...);
        if (end < width) rest(row, end, width - end);
    };
    in_bands_between_yields(result.height(), width, kSingleRows, budget, [&](std::int32_t first, std::int32_t last) {
        for (std::int32_t row = first; row < last; ++row) map_row(row);
    });
}

// result = kernel(source, overlays...) in the region and source around it.
template <class Kernel, class... Overlays>
void map_region(const TRV_Picture& source, TRV_Picture& result, const Region& region, int yield, const char* caller,
                const Kernel& kernel, const Overlays&... overlays) {
    const auto copy = [&](std::int32_t row, std::int32_t column, std::int32_t count) {
        copy_run(source, {row, column}, result, {row, column}, count, caller);
    };
    map_region_and_rest(source, result, region, yield, caller, kernel, copy, overlays...);
}

// The same, but around the region 16-bit pixels are copied with their unused bit.
template <class Kernel, class... Overlays>
void map_region_in_copy(const TRV_Picture& source, TRV_Picture& result, const Region& region, int yield,
                        const char* caller, const Kernel& kernel, const Overlays&... overlays) {
    const auto copy = [&](std::int32_t row, std::int32_t column, std::int32_t count) {
        copy_run_whole(source, result, {row, column}, count, caller);
    };
    map_region_and_rest(source, result, region, yield, caller, kernel, copy, overlays...);
}

// result = kernel(source, others...), for pictures of the result's size.
template <class Kernel, class... Pictures>
void map_pictures(const TRV_Picture& source, TRV_Picture& result, int yield, const char* caller, const Kernel& kernel,
                  const Pictures&... others) {
    map_region(source, result, whole_of(result), yield, caller, kernel, PlacedPicture{others}...);
}

// Applies `kernel(colors)` to the region of the picture itself. Nothing else is written.
template <class Kernel>
void map_in_place(TRV_Picture& picture, const Region& region, const char* caller, const Kernel& kernel) {
    const std::int32_t width = region.right - region.left + 1;
    in_bands(region.top, region.bottom + 1, width, kSingleRows, [&](std::int32_t first, std::int32_t end) {
        for (std::int32_t row = first; row < end; ++row)
            map_run(picture, row, region.left, static_cast<std::size_t>(width), caller, kernel,
                    RunSource{picture, row, region.left});
    });
}

}  // namespace tarvo::plugin
