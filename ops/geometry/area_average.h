#pragma once

// Resampling along one axis by area: each result line is the mean of the source lines that it covers. A line here is a span
// of pixels at one place of the axis; all of them take the same course.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "rows.h"

// Weights in whole numbers: a source line has `step` of it to give, a result line collects `total`.
struct AxisWeights {
    std::int32_t source_lines, result_lines;
    std::int64_t step = 0, total = 0;

    AxisWeights(std::int32_t source_length, std::int32_t result_length);
};

// The colour alone, without the top byte.
void copy_line(const PixelColor* line, PixelColor* out, std::size_t lanes);

// A result line in the making: weighted sums of the channels of up to a chunk of pixels.
class LineSums {
public:
    void begin(const PixelColor* line, std::size_t lanes, std::uint32_t weight);
    void add(const PixelColor* line, std::size_t lanes, std::uint32_t weight);
    // The sums divided by the weight that they have collected.
    void means(PixelColor* out, std::size_t lanes, std::uint32_t total) const;

private:
    using Sums = std::array<std::uint32_t, kChunkPixels>;
    Sums red_, green_, blue_;
};

// Gives out source lines one after the other, each as long as it has weight left.
template <class Lines>
class LineFeed {
public:
    LineFeed(const AxisWeights& weights, Lines& lines) : weights_(weights), lines_(lines) {}

    // Whether there is a line with weight left.
    bool ready() {
        if (left_ > 0) return true;
        if (read_ == weights_.source_lines) return false;
        line_ = lines_.read(read_++);
        left_ = weights_.step;
        return left_ > 0;
    }
    const PixelColor* line() const { return line_; }
    std::int64_t left() const { return left_; }
    std::uint32_t take(std::int64_t at_most) {
        const std::int64_t taken = std::min(at_most, left_);
        left_ -= taken;
        return static_cast<std::uint32_t>(taken);
    }

private:
    const AxisWeights& weights_;
    Lines& lines_;
    const PixelColor* line_ = nullptr;
    std::int32_t read_ = 0;
    std::int64_t left_ = 0;
};

// Walks both axes once. `lines.read(i)` gives source lines, in order; a result line is put into `lines.out(j)`, then
// `lines.done(j)` is called. A line that covers nothing of the source is black.
template <class Lines>
void average_lines(const AxisWeights& weights, std::size_t lanes, Lines& lines) {
    LineFeed feed(weights, lines);
    LineSums sums;
    for (std::int32_t j = 0; j < weights.result_lines; ++j) {
        PixelColor* const out = lines.out(j);
        if (weights.total == 0 || !feed.ready()) {
            std::fill_n(out, lanes, 0);
        } else if (feed.left() >= weights.total) {  // one source line covers all of it
            feed.take(weights.total);
            copy_line(feed.line(), out, lanes);
        } else {
            std::int64_t collected = feed.take(weights.total);
            sums.begin(feed.line(), lanes, static_cast<std::uint32_t>(collected));
            while (collected < weights.total && feed.ready()) {
                const std::uint32_t weight = feed.take(weights.total - collected);
                sums.add(feed.line(), lanes, weight);
                collected += weight;
            }
            sums.means(out, lanes, static_cast<std::uint32_t>(weights.total));
        }
        lines.done(j);
    }
}
