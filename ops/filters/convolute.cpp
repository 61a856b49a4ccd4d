#include "convolute.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "error_state.h"
#include "forms.h"
#include "rows.h"
#include "weighted_mean.h"

namespace {

constexpr std::int32_t kMostTaps = TRV_Convolution_Data::kMostTaps;

// Undefined for nil.
WeightedMean mean_of(REALobjectStruct* convolution) {
    const TRV_Convolution_Data* const data = TRV_Convolution_GetData(convolution);
    return WeightedMean(data ? data->taps() : std::span<const std::int32_t>());
}

// A run of a row with as many more pixels on either side as the taps of its ends read. Places beyond an edge of the
// picture read the pixel at the edge.
class WidenedRun {
public:
    explicit WidenedRun(std::int32_t taps) : margin_(taps / 2) {
        for (std::int32_t k = 0; k < taps; ++k) taps_[static_cast<std::size_t>(k)] = whole().from(k);
    }

    const Taps& read(const TRV_Picture& source, std::int32_t row, std::int32_t column, std::size_t count,
                     const char* caller) {
        const std::int32_t first = column - margin_, end = column + static_cast<std::int32_t>(count) + margin_;
        const std::int32_t from = std::max(first, 0), to = std::min(end, source.width());
        const std::span inside(red_blue_.data() + (from - first), static_cast<std::size_t>(to - from));
        source.GetPixels(row, from, inside, caller);
        std::fill_n(red_blue_.data(), from - first, inside.front());
        std::fill_n(inside.data() + inside.size(), end - to, inside.back());
        whole().split(static_cast<std::size_t>(end - first));
        return taps_;
    }

private:
    static constexpr std::size_t kPixels = kChunkPixels + kMostTaps - 1;

    SplitRun whole() { return {red_blue_.data(), green_.data()}; }

    std::int32_t margin_;
    Taps taps_{};
    alignas(kCacheLine) std::array<PixelColor, kPixels> red_blue_;
    alignas(kCacheLine) std::array<std::uint16_t, kPixels> green_;
};

// Runs one above the other, as many as there are taps, that move down some columns row by row. Rows beyond an edge of
// the picture read the row at the edge.
class RunWindow {
public:
    // Begins at a row of some columns; to be moved there.
    RunWindow(std::int32_t taps, std::int32_t row, std::int32_t column, std::size_t count)
        : taps_count_(taps), next_row_(std::max(row - taps / 2, 0)), column_(column), count_(count) {}

    // Down to a row, which is not above the last one.
    const Taps& move_to(const TRV_Picture& source, std::int32_t row, const char* caller) {
        const std::int32_t margin = taps_count_ / 2, last_row = source.height() - 1;
        for (; next_row_ <= std::min(row + margin, last_row); ++next_row_) {
            const SplitRun run = run_of(next_row_);
            source.GetPixels(next_row_, column_, {run.red_blue, count_}, caller);
            run.split(count_);
            prefetch_below(source, next_row_, column_, count_);
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
    std::int32_t next_row_;  // the first that has not been read
    std::int32_t column_;
    std::size_t count_;
    Taps taps_{};
    alignas(kCacheLine) std::array<Chunk, kMostTaps> red_blue_;
    alignas(kCacheLine) std::array<std::array<std::uint16_t, kChunkPixels>, kMostTaps> green_;
};

}  // namespace

void PrivConvoluteHorizontal(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                             const Region& region) {
    constexpr const char* kCaller = "PrivConvoluteHorizontal";
    const WeightedMean mean = mean_of(convolution);
    if (!mean.defined()) return copy_region(source, destination, whole_of(source), kCaller);
    copy_around(source, destination, region, kCaller);
    WidenedRun run(mean.taps());
    alignas(kCacheLine) Chunk means;
    for (std::int32_t row = region.top; row <= region.bottom; ++row)
        for_each_chunk(region.left, region.right, [&](std::int32_t column, std::size_t count) {
            mean(run.read(source, row, column, count, kCaller), means.data(), count);
            destination.SetPixels(row, column, {means.data(), count}, kCaller);
        });
}

// Chunk after chunk of columns, each from top to bottom, so that every pixel is read once and the window stays near.
void PrivConvoluteVertical(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                           const Region& region) {
    constexpr const char* kCaller = "PrivConvoluteVertical";
    const WeightedMean mean = mean_of(convolution);
    if (!mean.defined()) return copy_region(source, destination, whole_of(source), kCaller);
    copy_around(source, destination, region, kCaller);
    alignas(kCacheLine) Chunk means;
    for_each_chunk(region.left, region.right, [&](std::int32_t column, std::size_t count) {
        RunWindow window(mean.taps(), region.top, column, count);
        for (std::int32_t row = region.top; row <= region.bottom; ++row) {
            mean(window.move_to(source, row, kCaller), means.data(), count);
            destination.SetPixels(row, column, {means.data(), count}, kCaller);
        }
    });
}

REALpictureStruct* TRV_Convolute(REALpictureStruct* p, REALobjectStruct* rect, REALobjectStruct* horiz_convolution,
                                 REALobjectStruct* vert_convolution) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    TRV_Picture source(p, false);
    if (!source.Lock()) return Fail(ErrorCode::source_lock);
    const Region region = SelectRegion(source, rect);
    if (region.empty()) return Fail(ErrorCode::selection);
    const std::int32_t width = source.width(), height = source.height(), depth = result_depth(source);
    TRV_Picture intermediate(width, height, depth, false);
    if (!intermediate.Lock()) return Fail(ErrorCode::intermediate_lock);
    PrivConvoluteHorizontal(source, intermediate, horiz_convolution, region);
    source.Release();
    return PictureForm{}.produce(width, height, depth, false, [&](TRV_Picture& result) {
        PrivConvoluteVertical(intermediate, result, vert_convolution, region);
        intermediate.Release();
    });
}
