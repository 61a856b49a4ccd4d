#pragma once

// Resampling by area, one axis at a time: each result line is the mean of the source lines that it covers. Along rows a line
// is a pixel, along columns a run of pixels.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "rows.h"

// Weights in whole numbers: a source line has `step` of it to give, a result line collects `total`.
struct AxisWeights {
    std::int32_t source_lines, result_lines;
    std::int64_t step = 0, total = 0;

    AxisWeights(std::int32_t source_length, std::int32_t result_length);

    // Whether results cover anything of the source at all.
    bool cover() const { return total > 0; }
    // The source lines that a result line covers, both included.
    std::int32_t first_covered(std::int64_t result_line) const {
        return static_cast<std::int32_t>(result_line * total / step);
    }
    std::int32_t last_covered(std::int64_t result_line) const {
        return static_cast<std::int32_t>(((result_line + 1) * total - 1) / step);
    }
    // How much one of them gives.
    std::uint32_t weight(std::int64_t source_line, std::int64_t result_line) const;
};

// Weighted sums of the channels of up to a chunk of pixels. Lanes are the bytes of colours, the top byte too.
class ColorSums {
public:
    static constexpr std::size_t kLanes = sizeof(PixelColor);

    void begin(const PixelColor* colors, std::size_t count, std::uint32_t weight);
    void add(const PixelColor* colors, std::size_t count, std::uint32_t weight);
    // The sums divided by the weight that they have collected; top bytes become 0.
    void means(PixelColor* out, std::size_t count, std::uint32_t total) const;

    std::uint32_t* of(std::size_t pixel) { return &sums_[pixel * kLanes]; }

private:
    std::array<std::uint32_t, kLanes * kChunkPixels> sums_;
};

// A weight, the same in every lane.
using LaneWeight = std::array<std::uint32_t, ColorSums::kLanes>;

// Averages runs of rows, `count` result pixels from the column `first` on: the same course for every row.
class RowAverage {
public:
    RowAverage(const AxisWeights& weights, std::int32_t first, std::size_t count);

    // The source pixels that are covered.
    std::int32_t source_column() const { return source_column_; }
    std::size_t source_count() const { return source_count_; }

    // `read(column, colors)` gives a run of the source's row.
    template <class Read>
    void average(Read read, PixelColor* out) {
        const bool at_once = taps_ <= kMostTaps;
        if (!at_once) begin_pieces();
        for (std::size_t done = 0; done < source_count_; done += kWindow) {
            const std::size_t pixels = std::min(kWindow, source_count_ - done);
            read(source_column_ + static_cast<std::int32_t>(done), std::span(window_.data(), pixels));
            if (!at_once) add_piece(done, pixels);
        }
        at_once ? average_window(out) : sums_.means(out, count_, total());
    }

private:
    // Up to so many pixels are averaged with a weight for each, laid out for all results at once.
    static constexpr std::size_t kMostTaps = 8;
    static constexpr std::size_t kWindow = kMostTaps * kChunkPixels;

    std::uint32_t total() const { return static_cast<std::uint32_t>(weights_.total); }
    void average_window(PixelColor* out);
    void begin_pieces();
    void add_piece(std::size_t done, std::size_t pixels);

    AxisWeights weights_;
    std::int32_t first_;
    std::size_t count_;
    std::int32_t source_column_ = 0;
    std::size_t source_count_ = 0;
    std::size_t taps_ = 0;  // the most pixels that a result covers
    std::size_t summed_ = 0;  // results that are complete, where sums grow piece by piece
    std::array<std::uint32_t, kChunkPixels> taken_from_;  // each result's first pixel in the window
    std::array<LaneWeight, kMostTaps * kChunkPixels> tap_weights_;
    std::array<PixelColor, kWindow + kMostTaps> window_{};
    ColorSums sums_;
};

// Averages runs of rows down the columns: takes the source's rows in their order.
class ColumnAverage {
public:
    ColumnAverage(const AxisWeights& weights, std::size_t count) : weights_(weights), count_(count) {}

    // `emit(row, colors)` for the result's rows that are complete with this one.
    template <class Emit>
    void take(const PixelColor* line, Emit emit) {
        for (std::int64_t left = weights_.step; left > 0 && row_ < weights_.result_lines;) {
            const std::int64_t weight = std::min(left, weights_.total - collected_);
            left -= weight;
            if (weight == weights_.total) {  // this one covers all of it
                emit(row_++, line);
                continue;
            }
            const auto given = static_cast<std::uint32_t>(weight);
            collected_ == 0 ? sums_.begin(line, count_, given) : sums_.add(line, count_, given);
            collected_ += weight;
            if (collected_ < weights_.total) continue;
            Chunk out;
            sums_.means(out.data(), count_, static_cast<std::uint32_t>(weights_.total));
            emit(row_++, out.data());
            collected_ = 0;
        }
    }

private:
    AxisWeights weights_;
    std::size_t count_;
    std::int32_t row_ = 0;
    std::int64_t collected_ = 0;
    ColorSums sums_;
};
