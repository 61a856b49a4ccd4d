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

void read_run(const TRV_Picture& source, std::int32_t row, std::int32_t column, SplitRun run, std::size_t count,
              const char* caller) {
    if (const std::uint8_t* const words = source.WordsAt(row, column)) return run.split(words, count);
    source.GetPixels(row, column, {run.red_blue, count}, caller);
    run.split(count);
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
        read_run(source, row, from, whole().from(from - first), static_cast<std::size_t>(to - from), caller);
        repeat(from - first, 0, from - first);
        repeat(to - 1 - first, to - first, end - to);
        // What follows is brought near while this is worked on.
        source.Prefetch(row, to, count);
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
    std::int32_t next_row_;  // the first that has not been read
    std::int32_t column_;
    std::size_t count_;
    Taps taps_{};
    alignas(kCacheLine) std::array<Chunk, kMostTaps> red_blue_;
    alignas(kCacheLine) std::array<std::array<std::uint16_t, kChunkPixels>, kMostTaps> green_;
};

// A walk down columns in bands of rows: some columns of a band, then the next ones, then the next band. Memory is fast only
// where it is read in order, so the rows that the next band will read are brought near in order while a band is worked on.
class Bands {
public:
    Bands(const TRV_Picture& source, const Region& region, std::int32_t taps) : source_(source), region_(region), margin_(taps / 2) {
        constexpr std::int32_t kBandBytes = 256 << 10, kWindowBytes = 24 << 10;
        constexpr std::int32_t kPixelBytes = sizeof(PixelColor) + sizeof(std::uint16_t);
        rows_ = std::max(kBandBytes / std::max(source.rowBytes(), 1), taps + taps / 2);
        columns_ = std::min(kWindowBytes / (kPixelBytes * taps) / 64 * 64, kChunkPixels);
    }

    // `visit(top, bottom, column, count)`, `done()`
    template <class Visit>
    void for_each(Visit visit) const {
        for_each_piece(region_.top, region_.bottom, rows_, [&](std::int32_t top, std::int32_t bottom) {
            std::int32_t next_row = bottom + 1 + margin_, next_column = region_.left;
            const auto bring_near = [&] {
                if (next_row >= source_.height()) return;
                source_.Prefetch(next_row, next_column, static_cast<std::size_t>(std::min(columns_, region_.right + 1 - next_column)));
                next_column += columns_;
                if (next_column <= region_.right) return;
                next_column = region_.left;
                ++next_row;
            };
            for_each_piece(region_.left, region_.right, columns_, [&](std::int32_t left, std::int32_t right) {
                visit(Region{left, top, right, bottom}, bring_near);
            });
        });
    }

private:
    const TRV_Picture& source_;
    Region region_;
    std::int32_t margin_, rows_, columns_;
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

void PrivConvoluteVertical(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                           const Region& region) {
    constexpr const char* kCaller = "PrivConvoluteVertical";
    const WeightedMean mean = mean_of(convolution);
    if (!mean.defined()) return copy_region(source, destination, whole_of(source), kCaller);
    copy_around(source, destination, region, kCaller);
    alignas(kCacheLine) Chunk means;
    Bands(source, region, mean.taps()).for_each([&](const Region& part, const auto& bring_next_near) {
        const auto count = static_cast<std::size_t>(part.right - part.left + 1);
        RunWindow window(mean.taps(), part.top, part.left, count);
        for (std::int32_t row = part.top; row <= part.bottom; ++row) {
            mean(window.move_to(source, row, kCaller), means.data(), count);
            destination.SetPixels(row, part.left, {means.data(), count}, kCaller);
            bring_next_near();
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
