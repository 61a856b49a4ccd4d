#include "pair_means.h"

#include "avx2.h"

namespace tarvo::plugin {

#ifdef TARVO_AVX2
struct PairMeans::Kernel {
    TARVO_AVX2 static __m256i load(const std::uint8_t* from) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    }

    // Returns the quotients of sums of any sign, clamped.
    TARVO_AVX2 static __m256i divide(const PairMeans& of, __m256i sums) {
        const __m256i positive = _mm256_max_epi16(sums, _mm256_setzero_si256());
        const __m256i dividends = _mm256_min_epi16(positive, _mm256_set1_epi16(of.largest_));
        const Reciprocal& by = of.reciprocal_;
        const __m256i scaled = _mm256_mullo_epi16(dividends, _mm256_set1_epi16(static_cast<short>(by.scale)));
        const __m256i prepared = _mm256_add_epi16(scaled, _mm256_set1_epi16(static_cast<short>(by.increment)));
        const __m256i multiplier = _mm256_set1_epi16(static_cast<short>(by.multiplier));
        return _mm256_srli_epi16(_mm256_mulhi_epu16(prepared, multiplier), Reciprocal::kShift);
    }

    // Returns the means of eight pixels, `offset` bytes on.
    TARVO_AVX2 static __m256i eight(const PairMeans& of, const Taps& taps, std::size_t offset) {
        __m256i first_half = _mm256_setzero_si256(), second_half = first_half;
        for (std::size_t pair = 0; pair < of.pairs_; ++pair) {
            const __m256i a = load(taps[2 * pair] + offset), b = load(taps[2 * pair + 1] + offset);
            const __m256i weights = _mm256_set1_epi16(of.weights_[pair]);
            first_half = _mm256_add_epi16(first_half, _mm256_maddubs_epi16(_mm256_unpacklo_epi8(a, b), weights));
            second_half = _mm256_add_epi16(second_half, _mm256_maddubs_epi16(_mm256_unpackhi_epi8(a, b), weights));
        }
        const __m256i colors = _mm256_set1_epi32(static_cast<int>(big_endian(PixelColor{0xFFFFFF})));
        return _mm256_and_si256(_mm256_packus_epi16(divide(of, first_half), divide(of, second_half)), colors);
    }

    // The first and the last eight may overlap with others, which then get the same means once more.
    TARVO_AVX2 static void write(const PairMeans& of, const Taps& taps, std::uint8_t* to, StoreMode mode,
                                 std::size_t count) {
        constexpr std::size_t kEight = kLeastPixels * XRgb32::kBytes;
        const PairMeans own = of;  // a copy: for all the compiler knows, writing a pixel might change the original
        Taps rows = taps;
        rows[2 * own.pairs_ - 1] = rows[2 * own.pairs_ - 2];  // beside the last tap, to be multiplied by 0

        const std::size_t bytes = count * XRgb32::kBytes;
        const std::size_t line = pixels_before_cache_line(to, count) * XRgb32::kBytes;
        std::size_t x = 0;
        if (mode == StoreMode::streamed && has_aligned_pixels(to) && line + kEight <= bytes) {
            for (; x < line; x += kEight) _mm256_storeu_si256(at(to + x), eight(own, rows, x));
            for (x = line; x + kEight <= bytes; x += kEight) _mm256_stream_si256(at(to + x), eight(own, rows, x));
        }
        for (; x + kEight <= bytes; x += kEight) _mm256_storeu_si256(at(to + x), eight(own, rows, x));
        if (x < bytes) _mm256_storeu_si256(at(to + bytes - kEight), eight(own, rows, bytes - kEight));
    }

    static __m256i* at(std::uint8_t* to) { return reinterpret_cast<__m256i*>(to); }
};
#endif

PairMeans::PairMeans([[maybe_unused]] std::span<const std::int32_t> coefficients, [[maybe_unused]] std::int32_t sum,
                     [[maybe_unused]] const Reciprocal& reciprocal) {
#ifdef TARVO_AVX2
    std::int64_t positive = 0, negative = 0;
    bool are_bytes = true;
    for (const std::int32_t c : coefficients) {
        (c > 0 ? positive : negative) += c;
        are_bytes = are_bytes && c == static_cast<std::int8_t>(c);
    }
    constexpr std::int64_t kMost = 128;  // times 255, within 16 bits with a sign
    if (!are_bytes || positive > kMost || negative < -kMost || !processor_has_avx2()) return;

    pairs_ = coefficients.size() / 2 + 1;
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        const std::int32_t byte = coefficients[i] & 0xFF;
        weights_[i / 2] = static_cast<std::int16_t>(weights_[i / 2] | (i % 2 == 0 ? byte : byte << 8));
    }
    reciprocal_ = reciprocal;
    largest_ = static_cast<std::int16_t>(255 * sum);
    write_ = Kernel::write;
#endif
}

}  // namespace tarvo::plugin
