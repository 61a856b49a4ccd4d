#pragma once

// Weighted means of 32-bit pixels as they are stored, without taking them apart: two taps are multiplied and added in
// one instruction. The machine must have it, and the coefficients must be so small that signed sums fit in 16 bits.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "convolution_class.h"
#include "pixel_blocks.h"
#include "reciprocal.h"

namespace tarvo::plugin {

class PairMeans {
    static constexpr std::size_t kMostPairs = (TRV_Convolution_Data::kMostTaps + 1) / 2;

public:
    // The stored pixels that each tap reads: its pixel i contributes to pixel i of the means.
    using Taps = std::array<const std::uint8_t*, 2 * kMostPairs>;

    static constexpr std::size_t kLeastPixels = 8;

    PairMeans() = default;
    // The number of coefficients is odd. They add up to the sum, which is positive; the reciprocal is its.
    PairMeans(std::span<const std::int32_t> coefficients, std::int32_t sum, const Reciprocal& reciprocal);

    // False where the machine or the coefficients do not allow it.
    bool usable() const { return write_ != nullptr; }
    // Writes the means of `count` pixels, kLeastPixels or more.
    void operator()(const Taps& taps, std::uint8_t* to, StoreMode mode, std::size_t count) const {
        write_(*this, taps, to, mode, count);
    }

private:
    struct Kernel;
    using Write = void(const PairMeans& of, const Taps& taps, std::uint8_t* to, StoreMode mode, std::size_t count);

    Write* write_ = nullptr;
    std::size_t pairs_ = 0;
    std::array<std::int16_t, kMostPairs> weights_{};  // of two taps; that of the first is the low byte
    Reciprocal reciprocal_{};
    std::int16_t largest_ = 0;  // the sum that gives 255
};

}  // namespace tarvo::plugin
