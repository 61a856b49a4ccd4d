#include "area_average.h"

#include <algorithm>

#include "avx2.h"
#include "row_clones.h"

namespace tarvo::plugin {
namespace {

// All source lines that a result line covers weigh about this much together.
constexpr std::uint32_t kUnit = 32768;
// Up to this unit, weighted sums of bytes fit in 32 bits.
constexpr std::int64_t kMostUnit = std::int64_t{1} << 23;
// When no more than this is missing of a unit, a division takes a single correction.
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

// What the weights of a result line lack of a unit. It is little where results cover few lines.
constexpr std::uint32_t missing_of(std::int64_t total) { return kUnit - static_cast<std::uint32_t>(total); }

// Returns sum / (kUnit - missing). What is missing is added once for each whole unit in the sum, and once more: if that
// carries into the units, the quotient is larger by one.
constexpr std::uint32_t divide(std::uint32_t sum, std::uint32_t missing) {
    return (sum + (sum / kUnit + 1) * missing) / kUnit;
}

TARVO_ROW_CLONES void divide_lanes(const std::uint32_t* __restrict sums, std::size_t lanes, std::uint32_t missing,
                                   Byte* __restrict bytes) {
    for (std::size_t i = 0; i < lanes; ++i) bytes[i] = static_cast<Byte>(divide(sums[i], missing));
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

// Repeats each colour.
TARVO_ROW_CLONES void double_row(const PixelColor* __restrict colors, std::size_t count, PixelColor* __restrict out) {
    for (std::size_t x = 0; x < count / 2; ++x) out[2 * x] = out[2 * x + 1] = colors[x] & 0xFFFFFF;
    if (count % 2 != 0) out[count - 1] = colors[count / 2] & 0xFFFFFF;
}

constexpr PixelColor mean_of_two(PixelColor a, PixelColor b) { return (a & b) + ((a ^ b) >> 1 & 0x7F7F7F7F); }

TARVO_ROW_CLONES void halve_row(const PixelColor* __restrict colors, std::size_t count, PixelColor* __restrict out) {
    for (std::size_t x = 0; x < count; ++x) out[x] = mean_of_two(colors[2 * x], colors[2 * x + 1]) & 0xFFFFFF;
}

TARVO_ROW_CLONES void halve_columns(const PixelColor* __restrict above, const PixelColor* __restrict below,
                                    std::size_t count, PixelColor* __restrict out) {
    for (std::size_t x = 0; x < count; ++x) out[x] = mean_of_two(above[x], below[x]);
}

// --- means of a few pixels of a row ----------------------------------------------------------------------------------

constexpr std::size_t kLanes = ColorSums::kLanes;

// The weights of two neighbouring results, as they are multiplied. Each weight is repeated for the four lanes, that is
// the channels of a colour, and beside it is that of the next pixel:
//
//     result x            |  result x + 1       |  result x           |  result x + 1       |
//     01  01  01  01      |  01  01  01  01     |  23  23  23  23     |  23  23  23  23     |  the numbers of the
//     pixels
//
// They are kept negative, because 32,768 fits in 16 bits only so.
constexpr std::size_t weight_index(std::size_t pairs, std::size_t x, std::size_t pixel, std::size_t lane) {
    return ((x / 2 * pairs + pixel / 2) * 2 + x % 2) * 2 * kLanes + 2 * lane + pixel % 2;
}

// What results are averaged from: a window of source pixels, the first pixel of each result in it, the weights, and
// what these lack of a unit.
struct WeightedPixels {
    const PixelColor* window;
    const std::uint32_t* from;
    const std::int16_t* weights;
    std::uint32_t missing;
};

using AveragePixels = void(const WeightedPixels& of, std::size_t count, PixelColor* out);

template <std::size_t kPairs>
void average_pixels(const WeightedPixels& of, std::size_t count, PixelColor* __restrict out) {
    const WeightedPixels pixels = of;
    for (std::size_t x = 0; x < count; ++x) {
        const PixelColor* const colors = pixels.window + pixels.from[x];
        std::uint32_t red = 0, green = 0, blue = 0;
        for (std::size_t pixel = 0; pixel < 2 * kPairs; ++pixel) {
            const auto weight = static_cast<std::uint32_t>(-pixels.weights[weight_index(kPairs, x, pixel, 0)]);
            red += red_of(colors[pixel]) * weight;
            green += green_of(colors[pixel]) * weight;
            blue += blue_of(colors[pixel]) * weight;
        }
        out[x] = pack_rgb(divide(red, pixels.missing), divide(green, pixels.missing), divide(blue, pixels.missing));
    }
}

#if defined(TARVO_AVX2)
// The same, two results at a time. Compilers do not turn plain loops into multiplications of pairs.
template <std::size_t kPairs>
TARVO_AVX2 void average_pixels_avx2(const WeightedPixels& of, std::size_t count, PixelColor* out) {
    // Chooses the first or the last two of four pixels, lane by lane, as 16-bit numbers.
    const __m256i first_pair =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, -1, 4, -1, 1, -1, 5, -1, 2, -1, 6, -1, 3, -1, 7, -1));
    const __m256i second_pair = _mm256_add_epi8(first_pair, _mm256_set1_epi16(8));
    const __m256i lowest_bytes = _mm256_setr_epi8(0, 4, 8, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 4, 8,
                                                  -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256i ones = _mm256_set1_epi32(1);
    const __m256i missing = _mm256_set1_epi32(static_cast<int>(of.missing));
    const __m256i* weights = reinterpret_cast<const __m256i*>(of.weights);
    for (std::size_t x = 0; x < count; x += 2) {
        const __m128i* const a = reinterpret_cast<const __m128i*>(of.window + of.from[x]);
        const __m128i* const b = reinterpret_cast<const __m128i*>(of.window + of.from[x + 1]);
        __m256i sums = _mm256_setzero_si256();
        for (std::size_t pair = 0; pair < kPairs; ++pair, ++weights) {
            const __m256i pixels = _mm256_loadu2_m128i(b + pair / 2, a + pair / 2);
            const __m256i words = _mm256_shuffle_epi8(pixels, pair % 2 == 0 ? first_pair : second_pair);
            sums = _mm256_sub_epi32(sums, _mm256_madd_epi16(words, _mm256_loadu_si256(weights)));
        }
        const __m256i units = _mm256_add_epi32(_mm256_srli_epi32(sums, 15), ones);
        const __m256i whole = _mm256_add_epi32(sums, _mm256_madd_epi16(units, missing));
        const __m256i means = _mm256_shuffle_epi8(_mm256_srli_epi32(whole, 15), lowest_bytes);
        out[x] = static_cast<PixelColor>(_mm256_extract_epi32(means, 0));
        if (x + 1 < count) out[x + 1] = static_cast<PixelColor>(_mm256_extract_epi32(means, 4));
    }
}
#endif

// Returns the kernel for results that cover up to kPairs pairs of pixels. The last ones may weigh nothing.
template <std::size_t kPairs>
AveragePixels* average_pixels_here() {
#if defined(TARVO_AVX2)
    if (processor_has_avx2()) return average_pixels_avx2<kPairs>;
#endif
    return average_pixels<kPairs>;
}

// Returns how many pairs of pixels the kernel takes that is used for so many pixels.
constexpr std::size_t pairs_for(std::size_t pixels) { return pixels <= 2 ? 1 : pixels <= 4 ? 2 : kMostPixels / 2; }

AveragePixels* average_pixels_for(std::size_t pixels) {
    switch (pairs_for(pixels)) {
        case 1: return average_pixels_here<1>();
        case 2: return average_pixels_here<2>();
        default: return average_pixels_here<kMostPixels / 2>();
    }
}

// --- means of a few lines --------------------------------------------------------------------------------------------

// Lines above each other and their weights. Together these are a unit but for what is missing.
struct WeightedLines {
    std::uint32_t missing;
    const PixelColor* lines[kMostLines];
    std::uint32_t weights[kMostLines];
};

template <std::size_t kLines>
TARVO_INLINED inline void average_lines(const WeightedLines& of, std::size_t count, PixelColor* __restrict out) {
    const WeightedLines lines = of;
    for (std::size_t x = 0; x < count; ++x) {
        std::uint32_t red = 0, green = 0, blue = 0;
        for (std::size_t i = 0; i < kLines; ++i) {
            const PixelColor color = lines.lines[i][x];
            red += red_of(color) * lines.weights[i];
            green += green_of(color) * lines.weights[i];
            blue += blue_of(color) * lines.weights[i];
        }
        out[x] = pack_rgb(divide(red, lines.missing), divide(green, lines.missing), divide(blue, lines.missing));
    }
}

// These are plain functions around the template, because clang clones no templates.
TARVO_ROW_CLONES void average_2_lines(const WeightedLines& of, std::size_t count, PixelColor* out) {
    average_lines<2>(of, count, out);
}
TARVO_ROW_CLONES void average_3_lines(const WeightedLines& of, std::size_t count, PixelColor* out) {
    average_lines<3>(of, count, out);
}
TARVO_ROW_CLONES void average_4_lines(const WeightedLines& of, std::size_t count, PixelColor* out) {
    average_lines<4>(of, count, out);
}

using AverageLines = void(const WeightedLines& of, std::size_t count, PixelColor* out);

// --- sums of many pixels ---------------------------------------------------------------------------------------------

// sums += pixels * weight.
TARVO_ROW_CLONES void add_pixels(const PixelColor* colors, std::size_t count, std::uint32_t weight,
                                 std::uint32_t* __restrict sums) {
    const Byte* const bytes = reinterpret_cast<const Byte*>(colors);
    std::uint32_t whole[ColorSums::kLanes] = {};
    for (std::size_t x = 0; x < count; ++x)
        for (std::size_t lane = 0; lane < ColorSums::kLanes; ++lane) whole[lane] += bytes[x * ColorSums::kLanes + lane];
    for (std::size_t lane = 0; lane < ColorSums::kLanes; ++lane) sums[lane] += whole[lane] * weight;
}

}  // namespace

// With more than 32,768 source lines to a result line, a source line would have nothing to give. Then units are larger.
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
    Byte* const bytes = reinterpret_cast<Byte*>(out);
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
        covered_ = std::max(covered_, static_cast<std::size_t>(weights.last_covered(column_of(x)) - from + 1));
    }
    if (covered_ < 2 || covered_ > kMostPixels || weights.halve()) return;
    const std::size_t pairs = pairs_for(covered_);
    for (std::size_t x = 0; x < count; ++x) {
        for (std::size_t pixel = 0; pixel < 2 * pairs; ++pixel) {
            const auto column = source_column_ + static_cast<std::int64_t>(taken_from_[x] + pixel);
            const auto weight = static_cast<std::int32_t>(weights.weight(column, column_of(x)));
            for (std::size_t lane = 0; lane < kLanes; ++lane)
                pixel_weights_[weight_index(pairs, x, pixel, lane)] = static_cast<std::int16_t>(-weight);
        }
    }
}

std::int32_t RowAverage::run_pixels(const AxisWeights& weights) {
    const std::size_t covered = weights.cover() && weights.most_covered() > std::int64_t{kRunWeights / kRunPixels}
                                    ? kMostPixels
                                    : kRunWeights / kRunPixels;
    return std::min(plugin::run_pixels(weights.result_lines), static_cast<std::int32_t>(kRunWeights / covered));
}

void RowAverage::average_window(PixelColor* out) {
    if (covered_ == 0) {  // the results cover nothing
        std::fill_n(out, count_, 0);
        return;
    }
    if (weights_.twofold() && first_ % 2 == 0) return double_row(window_.data(), count_, out);
    if (covered_ == 1) return pick(window_.data(), taken_from_.data(), count_, out);
    if (weights_.halve()) return halve_row(window_.data(), count_, out);
    const WeightedPixels pixels = {window_.data(), taken_from_.data(), pixel_weights_.data(),
                                   missing_of(weights_.total)};
    average_pixels_for(covered_)(pixels, count_, out);
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
        // Adds those of the source's pixels from `from` to before `to` that are in this piece.
        const auto add = [&](std::int64_t from, std::int64_t to, std::uint32_t weight) {
            const std::int64_t here = std::max(from, begin), behind = std::min(to, end);
            if (here >= behind) return;
            add_pixels(&window_[static_cast<std::size_t>(here - begin)], static_cast<std::size_t>(behind - here),
                       weight, sums_.of(summed_));
        };
        add(first, first + 1, weights_.weight(first, column));
        add(first + 1, last, static_cast<std::uint32_t>(weights_.step));
        add(last, last + 1, weights_.weight(last, column));
        if (last >= end) return;
    }
}

void ColumnAverage::add(std::int32_t source_row, bool is_first) {
    const std::uint32_t weight = weights_.weight(source_row, row_);
    is_first ? sums_.begin(line(source_row), count_, weight) : sums_.add(line(source_row), count_, weight);
}

const PixelColor* ColumnAverage::average(std::int32_t first, std::int32_t last, PixelColor* out) {
    if (!at_once_) {
        sums_.means(out, count_, static_cast<std::uint32_t>(weights_.total));
        return out;
    }
    if (weights_.halve()) {
        halve_columns(line(first), line(last), count_, out);
        return out;
    }
    WeightedLines lines{missing_of(weights_.total), {}, {}};
    for (std::int32_t row = first; row <= last; ++row) {
        lines.lines[row - first] = line(row);
        lines.weights[row - first] = weights_.weight(row, row_);
    }
    constexpr AverageLines* kKernels[] = {average_2_lines, average_3_lines, average_4_lines};
    kKernels[last - first - 1](lines, count_, out);
    return out;
}

}  // namespace tarvo::plugin
