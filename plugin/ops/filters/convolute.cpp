#include "convolute.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "error_state.h"
#include "forms.h"
#include "pixel_runs.h"
#include "rows.h"
#include "weighted_mean.h"

namespace tarvo::plugin {
namespace {

constexpr std::int32_t kMostTaps = TRV_Convolution_Data::kMostTaps;

// Returns the mean that a convolution describes, which is undefined for nil.
WeightedMean mean_of(REALobjectStruct* convolution) {
    const TRV_Convolution_Data* const data = TRV_Convolution_GetData(convolution);
    return WeightedMean(data ? data->taps() : std::span<const std::int32_t>());
}

void read_run(const TRV_Picture& source, std::int32_t row, std::int32_t column, SplitRun run, std::size_t count,
              const char* caller) {
    if (const std::uint8_t* const words = source.words_at(row, column)) return run.split(words, count);
    source.get_pixels(row, column, {run.red_blue, count}, caller);
    run.split(count);
}

// A run of a row, and on either side of it the pixels that the taps of its ends read. Beyond an edge of the picture the
// pixel at the edge is repeated:
//
//     | margin |              run              | margin |
//      ^ the first tap of the first pixel of the run   ^ the last tap of the last one
class WidenedRun {
public:
    explicit WidenedRun(std::int32_t taps) : margin_(taps / 2) {
        for (std::int32_t k = 0; k < taps; ++k) taps_[static_cast<std::size_t>(k)] = whole().from(k);
    }

    const Taps& read(const TRV_Picture& source, std::int32_t row, std::int32_t column, std::size_t count,
                     const char* caller) {
        const std::int32_t first = column - margin_, end = column + static_cast<std::int32_t>(count) + margin_;
        const std::int32_t from = std::max(first, 0), to = std::min(end, source.width());
        read_run(source, row, from, whole().from(from - first), static_cast<std::size_t>(to - from), caller);
        repeat(from - first, 0, from - first);
        repeat(to - 1 - first, to - first, end - to);
        return taps_;
    }

private:
    static constexpr std::size_t kPixels = kChunkPixels + kMostTaps - 1;

    SplitRun whole() { return {red_blue_.data(), green_.data()}; }

    void repeat(std::int32_t pixel, std::int32_t to, std::int32_t count) {
        std::fill_n(whole().from(to).red_blue, count, *whole().from(pixel).red_blue);
        std::fill_n(whole().from(to).green, count, *whole().from(pixel).green);
    }

    std::int32_t margin_;
    Taps taps_{};
    alignas(kCacheLine) std::array<PixelColor, kPixels> red_blue_;
    alignas(kCacheLine) std::array<std::uint16_t, kPixels> green_;
};

// Some columns of as many rows as there are taps. The window moves down row by row; row y is kept in element
// y % taps. Beyond an edge of the picture the row at the edge is repeated.
class RunWindow {
public:
    // A window that will be moved to `row` first.
    RunWindow(std::int32_t taps, std::int32_t row, std::int32_t column, std::size_t count)
        : taps_count_(taps), next_row_(std::max(row - taps / 2, 0)), column_(column), count_(count) {}

    // Moves down to a row. It is not above the one that the window was moved to before.
    const Taps& move_to(const TRV_Picture& source, std::int32_t row, const char* caller) {
        const std::int32_t margin = taps_count_ / 2, last_row = source.height() - 1;
        for (; next_row_ <= std::min(row + margin, last_row); ++next_row_) {
            read_run(source, next_row_, column_, run_of(next_row_), count_, caller);
        }
        for (std::int32_t k = 0; k < taps_count_; ++k)
            taps_[static_cast<std::size_t>(k)] = run_of(std::clamp(row - margin + k, 0, last_row));
        return taps_;
    }

private:
    SplitRun run_of(std::int32_t row) {
        const auto i = static_cast<std::size_t>(row % taps_count_);
        return {red_blue_[i].data(), green_[i].data()};
    }

    std::int32_t taps_count_;
    std::int32_t next_row_;  // the first row that has not been read
    std::int32_t column_;
    std::size_t count_;
    Taps taps_{};
    alignas(kCacheLine) std::array<Chunk, kMostTaps> red_blue_;
    alignas(kCacheLine) std::array<std::array<std::uint16_t, kChunkPixels>, kMostTaps> green_;
};

// 63 KiB on the stack.
static_assert(sizeof(RunWindow) <= kMostStackBytes);

void write_means(const WeightedMean& mean, const Taps& taps, TRV_Picture& destination, std::int32_t row,
                 std::int32_t column, std::size_t count, const char* caller) {
    std::uint8_t* const words = destination.words_at(row, column);
    const bool streams = destination.store_mode() == StoreMode::streamed;
    if (words && streams && pixels_before_cache_line(words, count) == 0) return mean.stream(taps, words, count);
    alignas(kCacheLine) Chunk means;
    mean(taps, means.data(), count);
    destination.set_pixels(row, column, {means.data(), count}, caller);
}

// Reads a part of a picture in the order of memory, which is fast, and so brings it into the second-level cache for a
// walk down its columns.
void bring_near(const TRV_Picture& source, const Region& part) {
    for (std::int32_t row = part.top; row <= part.bottom; ++row) {
        const volatile std::uint8_t* const words = source.words_at(row, 0);
        if (!words) return;
        for (std::int32_t column = part.left; column <= part.right;
             column += static_cast<std::int32_t>(kCacheLinePixels))
            static_cast<void>(words[column * XRgb32::kBytes]);
    }
}

// Pictures are walked down columns in parts of this size: the rows of a part fit in the second-level cache, and a
// window onto its columns in the first-level cache.
struct PartSize {
    std::int32_t rows, columns;

    PartSize(std::int32_t row_pixels, std::int32_t taps) {
        constexpr std::int32_t kNearPixels = 1 << 16, kWindowPixels = 4096, kColumnsStep = 64;
        rows = std::max(kNearPixels / row_pixels, taps + taps / 2);
        columns = std::min(kWindowPixels / taps / kColumnsStep * kColumnsStep, kChunkPixels);
    }
};

// Whether so many columns can be averaged straight from the pictures' rows.
bool may_average_as_stored(const WeightedMean& mean, const TRV_Picture& source, const TRV_Picture& destination,
                           const Region& read, std::int32_t columns) {
    return mean.of_stored().usable() && columns >= std::int32_t{PairMeans::kLeastPixels} &&
           rows_are_words(source, read.top, read.bottom + 1) && rows_are_words(destination, read.top, read.bottom + 1);
}

// Writes means of pixels that `tap(k)` is the first of, for each tap.
template <class Tap>
void average_as_stored(const WeightedMean& mean, TRV_Picture& destination, Place to, std::int32_t count, Tap tap) {
    PairMeans::Taps taps;
    for (std::int32_t k = 0; k < mean.taps(); ++k) taps[static_cast<std::size_t>(k)] = tap(k);
    mean.of_stored()(taps, destination.words_at(to.row, to.column), destination.store_mode(),
                     static_cast<std::size_t>(count));
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivConvoluteHorizontal(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                             const Region& region) {
    constexpr const char* kCaller = "PrivConvoluteHorizontal";
    const WeightedMean mean = mean_of(convolution);
    if (!mean.defined()) return copy_region(source, destination, whole_of(source), kCaller);
    copy_around(source, destination, region, kCaller);
    WidenedRun run(mean.taps());
    const auto write = [&](std::int32_t row, std::int32_t first, std::int32_t last) {
        for_each_chunk(first, last, [&](std::int32_t column, std::size_t count) {
            const Taps& taps = run.read(source, row, column, count, kCaller);
            write_means(mean, taps, destination, row, column, count, kCaller);
        });
    };
    // No tap of these columns reads beyond an edge.
    const std::int32_t margin = mean.taps() / 2;
    const std::int32_t inner_first = std::max(region.left, margin);
    const std::int32_t inner_last = std::min(region.right, source.width() - 1 - margin);
    const bool as_stored = may_average_as_stored(mean, source, destination, region, inner_last - inner_first + 1);
    for (std::int32_t row = region.top; row <= region.bottom; ++row) {
        if (!as_stored) {
            write(row, region.left, region.right);
            continue;
        }
        write(row, region.left, inner_first - 1);
        average_as_stored(mean, destination, {row, inner_first}, inner_last - inner_first + 1,
                          [&](std::int32_t k) { return source.words_at(row, inner_first - margin + k); });
        write(row, inner_last + 1, region.right);
    }
}

void PrivConvoluteVertical(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                           const Region& region) {
    constexpr const char* kCaller = "PrivConvoluteVertical";
    const WeightedMean mean = mean_of(convolution);
    if (!mean.defined()) return copy_region(source, destination, whole_of(source), kCaller);
    copy_around(source, destination, region, kCaller);
    const std::int32_t width = region.right - region.left + 1;
    const std::int32_t margin = mean.taps() / 2, last_row = source.height() - 1;
    const Region read = {region.left, std::max(region.top - margin, 0), region.right,
                         std::min(region.bottom + margin, last_row)};
    if (may_average_as_stored(mean, source, destination, read, width)) {
        for (std::int32_t row = region.top; row <= region.bottom; ++row)
            average_as_stored(mean, destination, {row, region.left}, width, [&](std::int32_t k) {
                return source.words_at(std::clamp(row - margin + k, 0, last_row), region.left);
            });
        return;
    }
    const PartSize size(width, mean.taps());
    for_each_piece(region.top, region.bottom, size.rows, [&](std::int32_t top, std::int32_t bottom) {
        bring_near(source, {region.left, top, region.right, std::min(bottom + margin, last_row)});
        for_each_piece(region.left, region.right, size.columns, [&](std::int32_t left, std::int32_t right) {
            const auto count = static_cast<std::size_t>(right - left + 1);
            RunWindow window(mean.taps(), top, left, count);
            for (std::int32_t row = top; row <= bottom; ++row)
                write_means(mean, window.move_to(source, row, kCaller), destination, row, left, count, kCaller);
        });
    });
}

REALpictureStruct* TRV_Convolute(REALpictureStruct* p, REALobjectStruct* rect, REALobjectStruct* horiz_convolution,
                                 REALobjectStruct* vert_convolution) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    const Region region = select_region(source, rect);
    if (region.empty()) return fail(ErrorCode::selection);
    const std::int32_t width = source.width(), height = source.height(), depth = result_depth(source);
    TRV_Picture intermediate(width, height, depth, kTemporary);
    if (!intermediate.Lock()) return fail(ErrorCode::intermediate_lock);
    PrivConvoluteHorizontal(source, intermediate, horiz_convolution, region);
    source.Release();
    return PictureForm{}.produce(width, height, depth, ResultMask::none, [&](TRV_Picture& result) {
        PrivConvoluteVertical(intermediate, result, vert_convolution, region);
        intermediate.Release();
    });
}
