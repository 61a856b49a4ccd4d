#include "area_average.h"

#include "row_clones.h"

namespace {

// What all source lines that a result line covers weigh together, about.
constexpr std::uint32_t kUnit = 32768;
// A sum of bytes weighted so fits in 32 bits.
constexpr std::int64_t kMostUnit = std::int64_t{1} << 23;

// sum / total as a product, exact for totals from 16384 to 32768 and sums of bytes that weigh so much.
struct Reciprocal {
    static constexpr int kBits = 38;
    static constexpr std::uint32_t kLeastTotal = kUnit / 2, kMostTotal = kUnit;
    std::uint64_t factor;

    static bool fits(std::uint32_t total) { return total >= kLeastTotal && total <= kMostTotal; }
    explicit Reciprocal(std::uint32_t total) : factor((std::uint64_t{1} << kBits) / total + 1) {}
};
// The factor is too large by at most 1, and so the product by less than 1 / total.
static_assert(std::uint64_t{255} * Reciprocal::kMostTotal * Reciprocal::kMostTotal <
              std::uint64_t{1} << Reciprocal::kBits);

[[gnu::always_inline]] inline std::uint32_t divide(std::uint32_t sum, std::uint32_t factor) {
    return static_cast<std::uint32_t>(std::uint64_t{sum} * factor >> Reciprocal::kBits);
}

TARVO_ROW_CLONES void begin_row(const PixelColor* __restrict line, std::size_t lanes, std::uint32_t weight,
                                std::uint32_t* __restrict red, std::uint32_t* __restrict green,
                                std::uint32_t* __restrict blue) {
    for (std::size_t x = 0; x < lanes; ++x) {
        red[x] = red_of(line[x]) * weight;
        green[x] = green_of(line[x]) * weight;
        blue[x] = blue_of(line[x]) * weight;
    }
}

TARVO_ROW_CLONES void add_row(const PixelColor* __restrict line, std::size_t lanes, std::uint32_t weight,
                              std::uint32_t* __restrict red, std::uint32_t* __restrict green,
                              std::uint32_t* __restrict blue) {
    for (std::size_t x = 0; x < lanes; ++x) {
        red[x] += red_of(line[x]) * weight;
        green[x] += green_of(line[x]) * weight;
        blue[x] += blue_of(line[x]) * weight;
    }
}

TARVO_ROW_CLONES void means_row(const std::uint32_t* red, const std::uint32_t* green, const std::uint32_t* blue,
                                PixelColor* __restrict out, std::size_t lanes, std::uint32_t factor) {
    for (std::size_t x = 0; x < lanes; ++x)
        out[x] = pack_rgb(divide(red[x], factor), divide(green[x], factor), divide(blue[x], factor));
}

// For a total of the whole unit, the usual one.
TARVO_ROW_CLONES void means_of_unit_row(const std::uint32_t* red, const std::uint32_t* green, const std::uint32_t* blue,
                                        PixelColor* __restrict out, std::size_t lanes) {
    for (std::size_t x = 0; x < lanes; ++x) out[x] = pack_rgb(red[x] / kUnit, green[x] / kUnit, blue[x] / kUnit);
}

TARVO_ROW_CLONES void strip_row(const PixelColor* __restrict line, PixelColor* __restrict out, std::size_t lanes) {
    for (std::size_t x = 0; x < lanes; ++x) out[x] = line[x] & 0xFFFFFF;
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

void copy_line(const PixelColor* line, PixelColor* out, std::size_t lanes) { strip_row(line, out, lanes); }

void LineSums::begin(const PixelColor* line, std::size_t lanes, std::uint32_t weight) {
    begin_row(line, lanes, weight, red_.data(), green_.data(), blue_.data());
}

void LineSums::add(const PixelColor* line, std::size_t lanes, std::uint32_t weight) {
    add_row(line, lanes, weight, red_.data(), green_.data(), blue_.data());
}

void LineSums::means(PixelColor* out, std::size_t lanes, std::uint32_t total) const {
    if (total == kUnit) return means_of_unit_row(red_.data(), green_.data(), blue_.data(), out, lanes);
    if (Reciprocal::fits(total)) {
        const auto factor = static_cast<std::uint32_t>(Reciprocal(total).factor);
        return means_row(red_.data(), green_.data(), blue_.data(), out, lanes, factor);
    }
    for (std::size_t x = 0; x < lanes; ++x) out[x] = pack_rgb(red_[x] / total, green_[x] / total, blue_[x] / total);
}
