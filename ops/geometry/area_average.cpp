#include "area_average.h"

#include <algorithm>

#include "row_clones.h"

namespace {

// What all source lines that a result line covers weigh together, about.
constexpr std::uint32_t kUnit = 32768;
// A sum of bytes weighted so fits in 32 bits.
constexpr std::int64_t kMostUnit = std::int64_t{1} << 23;
// What may be missing of a unit so that a division by what is there takes one correction.
constexpr std::uint32_t kMostMissing = kUnit / 256;

using Byte [[gnu::may_alias]] = std::uint8_t;

TARVO_ROW_CLONES void begin_lanes(const Byte* __restrict bytes, std::size_t lanes, std::uint32_t weight,
                                  std::uint32_t* __restrict sums) {
    for (std::size_t i = 0; i < lanes; ++i) sums[i] = bytes[i] * weight;
}

TARVO_ROW_CLONES void add_lanes(const Byte* __restrict bytes, std::size_t lanes, std::uint32_t weight,
                                std::uint32_t* __restrict sums) {
    for (std::size_t i = 0; i < lanes; ++i) sums[i] += bytes[i] * weight;
}

// sum / (kUnit - missing): for each whole unit in the sum, and one more, what is missing is added; a carry into the units
// is the one that the quotient has more.
TARVO_ROW_CLONES void divide_lanes(const std::uint32_t* __restrict sums, std::size_t lanes, std::uint32_t missing,
                                   Byte* __restrict bytes) {
    for (std::size_t i = 0; i < lanes; ++i)
        bytes[i] = static_cast<Byte>((sums[i] + (sums[i] / kUnit + 1) * missing) / kUnit);
}

TARVO_ROW_CLONES void divide_lanes_by_unit(const std::uint32_t* __restrict sums, std::size_t lanes,
                                           Byte* __restrict bytes) {
    for (std::size_t i = 0; i < lanes; ++i) bytes[i] = static_cast<Byte>(sums[i] / kUnit);
}

TARVO_ROW_CLONES void clear_top_bytes(PixelColor* colors, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) colors[x] &= 0xFFFFFF;
}

TARVO_ROW_CLONES void pick(const PixelColor* __restrict colors, const std::uint32_t* __restrict from, std::size_t count,
                           PixelColor* __restrict out) {
    for (std::size_t x = 0; x < count; ++x) out[x] = colors[from[x]] & 0xFFFFFF;
}

// For each result so many pixels of the window, weighed.
template <std::size_t kTaps>
TARVO_INLINED inline void sum_taps(const PixelColor* window, const std::uint32_t* from, const LaneWeight* weights,
                                   std::size_t count, std::uint32_t* __restrict sums) {
    constexpr std::size_t kLanes = ColorSums::kLanes;
    for (std::size_t x = 0; x < count; ++x) {
        const auto* const bytes = reinterpret_cast<const Byte*>(window + from[x]);
        const LaneWeight* const weight = weights + x * kTaps;
        std::uint32_t collected[kLanes] = {};
        for (std::size_t tap = 0; tap < kTaps; ++tap)
            for (std::size_t lane = 0; lane < kLanes; ++lane)
                collected[lane] += bytes[tap * kLanes + lane] * weight[tap][lane];
        for (std::size_t lane = 0; lane < kLanes; ++lane) sums[x * kLanes + lane] = collected[lane];
    }
}

using SumTaps = void(const PixelColor* window, const std::uint32_t* from, const LaneWeight* weights, std::size_t count,
                     std::uint32_t* sums);

// Clones must be plain functions, so that every compiler makes them.
TARVO_ROW_CLONES void sum_2_taps(const PixelColor* window, const std::uint32_t* from, const LaneWeight* weights,
                                 std::size_t count, std::uint32_t* sums) {
    sum_taps<2>(window, from, weights, count, sums);
}
TARVO_ROW_CLONES void sum_3_taps(const PixelColor* window, const std::uint32_t* from, const LaneWeight* weights,
                                 std::size_t count, std::uint32_t* sums) {
    sum_taps<3>(window, from, weights, count, sums);
}
TARVO_ROW_CLONES void sum_4_taps(const PixelColor* window, const std::uint32_t* from, const LaneWeight* weights,
                                 std::size_t count, std::uint32_t* sums) {
    sum_taps<4>(window, from, weights, count, sums);
}
TARVO_ROW_CLONES void sum_8_taps(const PixelColor* window, const std::uint32_t* from, const LaneWeight* weights,
                                 std::size_t count, std::uint32_t* sums) {
    sum_taps<8>(window, from, weights, count, sums);
}

// The kernel for results that cover up to so many pixels; the last ones may weigh nothing.
struct TapKernel {
    std::size_t taps;
    SumTaps* sum;
};
constexpr TapKernel kTapKernels[] = {{2, sum_2_taps}, {3, sum_3_taps}, {4, sum_4_taps}, {8, sum_8_taps}};

const TapKernel& tap_kernel(std::size_t taps) {
    return *std::ranges::find_if(kTapKernels, [taps](const TapKernel& kernel) { return kernel.taps >= taps; });
}

// sums += pixels * weight.
TARVO_ROW_CLONES void add_pixels(const PixelColor* colors, std::size_t count, std::uint32_t weight,
                                 std::uint32_t* __restrict sums) {
    const auto* const bytes = reinterpret_cast<const Byte*>(colors);
    std::uint32_t whole[ColorSums::kLanes] = {};
    for (std::size_t x = 0; x < count; ++x)
        for (std::size_t lane = 0; lane < ColorSums::kLanes; ++lane) whole[lane] += bytes[x * ColorSums::kLanes + lane];
    for (std::size_t lane = 0; lane < ColorSums::kLanes; ++lane) sums[lane] += whole[lane] * weight;
}

}  // namespace

// Sides of more than 32,768 to 1 would leave nothing to give in units of the usual size.
AxisWeights::AxisWeights(std::int32_t source_length, std::int32_t result_length)
    : source_lines(source_length), result_lines(result_length) {
    if (source_lines < 1 || result_lines < 1) return;
    std::int64_t unit = kUnit;
    while (result_lines * unit < source_lines && unit < kMostUnit) unit *= 2;
    step = result_lines * unit / source_lines;
    total = source_lines * step / result_lines;
}

std::uint32_t AxisWeights::weight(std::int64_t source_line, std::int64_t result_line) const {
    const std::int64_t begin = std::max(source_line * step, result_line * total);
    const std::int64_t end = std::min((source_line + 1) * step, (result_line + 1) * total);
    return static_cast<std::uint32_t>(std::max<std::int64_t>(end - begin, 0));
}

void ColorSums::begin(const PixelColor* colors, std::size_t count, std::uint32_t weight) {
    begin_lanes(reinterpret_cast<const Byte*>(colors), count * kLanes, weight, sums_.data());
}

void ColorSums::add(const PixelColor* colors, std::size_t count, std::uint32_t weight) {
    add_lanes(reinterpret_cast<const Byte*>(colors), count * kLanes, weight, sums_.data());
}

void ColorSums::means(PixelColor* out, std::size_t count, std::uint32_t total) const {
    const std::size_t lanes = count * kLanes;
    auto* const bytes = reinterpret_cast<Byte*>(out);
    if (total == kUnit)
        divide_lanes_by_unit(sums_.data(), lanes, bytes);
    else if (total < kUnit && kUnit - total <= kMostMissing)
        divide_lanes(sums_.data(), lanes, kUnit - total, bytes);
    else
        std::transform(sums_.begin(), sums_.begin() + static_cast<std::ptrdiff_t>(lanes), bytes,
                       [total](std::uint32_t sum) { return static_cast<Byte>(sum / total); });
    clear_top_bytes(out, count);
}

RowAverage::RowAverage(const AxisWeights& weights, std::int32_t first, std::size_t count)
    : weights_(weights), first_(first), count_(count) {
    if (!weights.cover()) return;
    const auto column_of = [first](std::size_t x) { return first + static_cast<std::int64_t>(x); };
    source_column_ = weights.first_covered(first);
    source_count_ = static_cast<std::size_t>(weights.last_covered(column_of(count - 1)) - source_column_ + 1);
    for (std::size_t x = 0; x < count; ++x) {
        const std::int32_t from = weights.first_covered(column_of(x));
        taken_from_[x] = static_cast<std::uint32_t>(from - source_column_);
        taps_ = std::max(taps_, static_cast<std::size_t>(weights.last_covered(column_of(x)) - from + 1));
    }
    if (taps_ < 2 || taps_ > kMostTaps) return;
    taps_ = tap_kernel(taps_).taps;
    for (std::size_t x = 0; x < count; ++x)
        for (std::size_t tap = 0; tap < taps_; ++tap)
            tap_weights_[x * taps_ + tap].fill(
                weights.weight(source_column_ + static_cast<std::int64_t>(taken_from_[x] + tap), column_of(x)));
}

void RowAverage::average_window(PixelColor* out) {
    if (taps_ == 0) {  // nothing is covered
        std::fill_n(out, count_, 0);
        return;
    }
    if (taps_ == 1) return pick(window_.data(), taken_from_.data(), count_, out);
    tap_kernel(taps_).sum(window_.data(), taken_from_.data(), tap_weights_.data(), count_, sums_.of(0));
    sums_.means(out, count_, total());
}

void RowAverage::begin_pieces() {
    std::fill_n(sums_.of(0), count_ * ColorSums::kLanes, 0);
    summed_ = 0;
}

void RowAverage::add_piece(std::size_t done, std::size_t pixels) {
    const std::int64_t begin = source_column_ + static_cast<std::int64_t>(done);
    const std::int64_t end = begin + static_cast<std::int64_t>(pixels);
    for (; summed_ < count_; ++summed_) {
        const std::int64_t column = first_ + static_cast<std::int64_t>(summed_);
        const std::int64_t first = weights_.first_covered(column), last = weights_.last_covered(column);
        // Of the source's pixels from `from` to before `to` those that are here.
        const auto add = [&](std::int64_t from, std::int64_t to, std::uint32_t weight) {
            const std::int64_t here = std::max(from, begin), behind = std::min(to, end);
            if (here >= behind) return;
            add_pixels(&window_[static_cast<std::size_t>(here - begin)], static_cast<std::size_t>(behind - here), weight,
                       sums_.of(summed_));
        };
        add(first, first + 1, weights_.weight(first, column));
        add(first + 1, last, static_cast<std::uint32_t>(weights_.step));
        add(last, last + 1, weights_.weight(last, column));
        if (last >= end) return;
    }
}
