#pragma once

// Resampling by area, along one axis at a time: each result line is the mean of the source lines that it covers. Along
// rows a line is a pixel, along columns it is a run of a row.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "rows.h"

namespace tarvo::plugin {

// Rows are averaged in runs of at most this many result pixels: the run at the left in all rows, then the next one.
// Whole rows are best, since processors read ahead from one to the next; of longer rows, runs are so short that they
// stay in the first-level cache.
inline constexpr std::int32_t kRunPixels = 2048;
using RunColors = std::array<PixelColor, kRunPixels>;
constexpr std::int32_t run_pixels(std::int32_t row_pixels) {
    return row_pixels <= kRunPixels ? kRunPixels : kChunkPixels;
}

// Results that cover at most this many pixels of a row, or lines, are averaged at once, with a weight for each. Others
// are summed up piece by piece.
inline constexpr std::size_t kMostPixels = 8;
inline constexpr std::size_t kMostLines = 4;

// The weights along one axis, in whole numbers. A source line has `step` to give, and a result line collects `total`.
// Twelve source lines and five result lines:
//
//     source     |    |    |    |    |    |    |    |    |    |    |    |    |     each `step` wide
//     result     |           |           |           |           |           |     each `total` wide
struct AxisWeights {
    std::int32_t source_lines, result_lines;
    std::int64_t step = 0, total = 0;

    AxisWeights(std::int32_t source_length, std::int32_t result_length);

    // Whether result lines cover anything of the source at all.
    bool cover() const { return total > 0; }
    // Whether each result line is the mean of two source lines of its own.
    bool halve() const { return total == 2 * step; }
    // Whether each source line makes two result lines.
    bool twofold() const { return step == 2 * total; }
    // No result line covers more source lines than this.
    std::int64_t most_covered() const { return (total - 1) / step + 2; }
    // The source lines that a result line covers, both included.
    std::int32_t first_covered(std::int64_t result_line) const {
        return static_cast<std::int32_t>(result_line * total / step);
    }
    std::int32_t last_covered(std::int64_t result_line) const {
        return static_cast<std::int32_t>(((result_line + 1) * total - 1) / step);
    }
    // Returns how much a source line gives to a result line.
    std::uint32_t weight(std::int64_t source_line, std::int64_t result_line) const;
};

// Weighted sums of the channels of at most a run of pixels. There is a sum for each byte of a colour, the top byte too.
class ColorSums {
public:
    static constexpr std::size_t kLanes = sizeof(PixelColor);

    void begin(const PixelColor* colors, std::size_t count, std::uint32_t weight);
    void add(const PixelColor* colors, std::size_t count, std::uint32_t weight);
    // Divides the sums by the weight that they have collected. Top bytes become 0.
    void means(PixelColor* out, std::size_t count, std::uint32_t total) const;

    std::uint32_t* of(std::size_t pixel) { return &sums_[pixel * kLanes]; }

private:
    std::array<std::uint32_t, kLanes * kRunPixels> sums_;
};

// Averages runs of rows, in each the `count` result pixels from the column `first` on. Weights are made once for all
// rows.
class RowAverage {
public:
    RowAverage(const AxisWeights& weights, std::int32_t first, std::size_t count);

    // The longest run that a RowAverage with such weights can average.
    static std::int32_t run_pixels(const AxisWeights& weights);

    // The source pixels that the run covers.
    std::int32_t source_column() const { return source_column_; }
    std::size_t source_count() const { return source_count_; }

    // `read(column, colors)` reads a run of the source's row.
    template <class Read>
    void average(Read read, PixelColor* out) {
        const bool at_once = covered_ <= kMostPixels;
        if (!at_once) begin_pieces();
        for (std::size_t done = 0; done < source_count_; done += kRunWeights) {
            const std::size_t pixels = std::min(kRunWeights, source_count_ - done);
            read(source_column_ + static_cast<std::int32_t>(done), std::span(window_.data(), pixels));
            if (!at_once) add_piece(done, pixels);
        }
        at_once ? average_window(out) : sums_.means(out, count_, total());
    }

private:
    // How many pixels, each with a weight, are averaged at once: four for each result of a longest run, or more for
    // each result of a shorter one.
    static constexpr std::size_t kRunWeights = 4 * kRunPixels;

    std::uint32_t total() const { return static_cast<std::uint32_t>(weights_.total); }
    void average_window(PixelColor* out);
    void begin_pieces();
    void add_piece(std::size_t done, std::size_t pixels);

    AxisWeights weights_;
    std::int32_t first_;
    std::size_t count_;
    std::int32_t source_column_ = 0;
    std::size_t source_count_ = 0;
    std::size_t covered_ = 0;                             // the most pixels that a result covers
    std::size_t summed_ = 0;                              // the results whose sums are complete
    std::array<std::uint32_t, kRunPixels> taken_from_{};  // each result's first pixel in the window
    std::array<std::int16_t, ColorSums::kLanes * kRunWeights> pixel_weights_;
    std::array<PixelColor, kRunWeights + kMostPixels> window_{};
    ColorSums sums_;
};

// Averages runs of rows down the columns. It takes the source's rows in their order.
class ColumnAverage {
public:
    ColumnAverage(const AxisWeights& weights, std::size_t count)
        : weights_(weights), count_(count), at_once_(weights.most_covered() <= std::int64_t{kMostLines}) {}

    // Where the run of the next row is to be written. Its top bytes are to be 0.
    PixelColor* next() { return line(source_row_); }

    // Takes that run, and calls `emit(row, colors)` for the result's rows that it completes.
    template <class Emit>
    void take(Emit emit) {
        const std::int32_t taken = source_row_++;
        while (row_ < weights_.result_lines) {
            const std::int32_t first = weights_.first_covered(row_), last = weights_.last_covered(row_);
            if (!at_once_ && taken >= first) add(taken, taken == first);
            if (last > taken) return;
            RunColors out;
            emit(row_, first == last ? line(taken) : average(first, last, out.data()));
            ++row_;
        }
    }

private:
    PixelColor* line(std::int32_t source_row) {
        return lines_[static_cast<std::size_t>(source_row) % kMostLines].data();
    }
    void add(std::int32_t source_row, bool is_first);
    const PixelColor* average(std::int32_t first, std::int32_t last, PixelColor* out);

    AxisWeights weights_;
    std::size_t count_;
    bool at_once_;
    std::int32_t source_row_ = 0;
    std::int32_t row_ = 0;                     // the result's row that is completed next
    std::array<RunColors, kMostLines> lines_;  // the last rows taken; row y is element y % kMostLines
    ColorSums sums_;
};

}  // namespace tarvo::plugin
