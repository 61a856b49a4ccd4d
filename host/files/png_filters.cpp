#include "png_filters.h"

#include <cstdlib>
#include <limits>

namespace tarvo::host {

namespace {

enum class Kind : std::uint8_t { none, sub, up, average, paeth };

// Of three neighbours the one that is nearest to left + above - above left.
int paeth(int left, int above, int above_left) {
    const int to_left = std::abs(above - above_left), to_above = std::abs(left - above_left);
    const int to_above_left = std::abs(left + above - 2 * above_left);
    const int second = to_above <= to_above_left ? above : above_left;
    return to_left <= to_above && to_left <= to_above_left ? left : second;
}

template <Kind kind>
int predicted(int left, int above, int above_left) {
    if constexpr (kind == Kind::sub) return left;
    if constexpr (kind == Kind::up) return above;
    if constexpr (kind == Kind::average) return (left + above) >> 1;
    if constexpr (kind == Kind::paeth) return paeth(left, above, above_left);
    return 0;
}

// Writes the filter's byte and the differences, and returns the sum of their distances from 0.
template <Kind kind>
std::uint64_t filter(std::span<const std::uint8_t> row, std::span<const std::uint8_t> above, std::size_t step,
                     std::uint8_t* out) {
    *out++ = static_cast<std::uint8_t>(kind);
    const auto put = [&](std::size_t i, int left, int above_left) {
        const auto difference = static_cast<std::uint8_t>(row[i] - predicted<kind>(left, above[i], above_left));
        out[i] = difference;
        return static_cast<std::uint8_t>(difference < 128 ? difference : 256 - difference);
    };
    std::uint32_t sum = 0;  // a row has less than 2^18 bytes
    for (std::size_t i = 0; i < step; ++i) sum += put(i, 0, 0);
    for (std::size_t i = step; i < row.size(); ++i) sum += put(i, row[i - step], above[i - step]);
    return sum;
}

constexpr decltype(&filter<Kind::none>) kFilters[] = {filter<Kind::none>, filter<Kind::sub>, filter<Kind::up>,
                                                      filter<Kind::average>, filter<Kind::paeth>};

}  // namespace

PngFilters::PngFilters(std::size_t row_bytes, std::size_t step)
    : step_(step), tried_(row_bytes + 1), best_(row_bytes + 1) {}

void PngFilters::append_plain(std::span<const std::uint8_t> row, Bytes& out) {
    out.push_back(static_cast<std::uint8_t>(Kind::none));
    out.insert(out.end(), row.begin(), row.end());
}

void PngFilters::append_filtered(std::span<const std::uint8_t> row, std::span<const std::uint8_t> above, Bytes& out) {
    auto least = std::numeric_limits<std::uint64_t>::max();
    for (const auto filter : kFilters) {
        const std::uint64_t sum = filter(row, above, step_, tried_.data());
        if (sum >= least) continue;
        least = sum;
        tried_.swap(best_);
    }
    out.insert(out.end(), best_.begin(), best_.end());
}

}  // namespace tarvo::host
