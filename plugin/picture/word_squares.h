#pragma once

// A square of 32-bit words, whose rows and columns can be exchanged:
//
//     a0 a1 a2 a3          a0 b0 c0 d0
//     b0 b1 b2 b3   --->   a1 b1 c1 d1
//     c0 c1 c2 c3          a2 b2 c2 d2
//     d0 d1 d2 d3          a3 b3 c3 d3

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "row_clones.h"

namespace tarvo::plugin {

class WordSquare {
public:
    static constexpr std::size_t kSide = 4;

    TARVO_INLINED void load(std::size_t row, const void* words) { std::memcpy(&rows_[row], words, sizeof(Row)); }
    TARVO_INLINED void store(std::size_t row, void* words) const { std::memcpy(words, &rows_[row], sizeof(Row)); }
    // Written as shuffles, because compilers do not find them in plain loops, which take seven times as long.
    TARVO_INLINED void transpose() {
        const auto [a, b, c, d] = rows_;
        const Row ab_left = __builtin_shufflevector(a, b, 0, 4, 1, 5);
        const Row cd_left = __builtin_shufflevector(c, d, 0, 4, 1, 5);
        const Row ab_right = __builtin_shufflevector(a, b, 2, 6, 3, 7);
        const Row cd_right = __builtin_shufflevector(c, d, 2, 6, 3, 7);
        rows_[0] = __builtin_shufflevector(ab_left, cd_left, 0, 1, 4, 5);
        rows_[1] = __builtin_shufflevector(ab_left, cd_left, 2, 3, 6, 7);
        rows_[2] = __builtin_shufflevector(ab_right, cd_right, 0, 1, 4, 5);
        rows_[3] = __builtin_shufflevector(ab_right, cd_right, 2, 3, 6, 7);
    }

    // Converts every word from the machine's byte order to big-endian, or back.
    TARVO_INLINED void make_big_endian() {
        if (std::endian::native == std::endian::big) return;
        for (Row& row : rows_) {
            const auto bytes = reinterpret_cast<RowBytes>(row);
            row = reinterpret_cast<Row>(
                __builtin_shufflevector(bytes, bytes, 3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12));
        }
    }

private:
    using RowBytes = std::uint8_t __attribute__((vector_size(kSide * sizeof(std::uint32_t))));
    using Row = std::uint32_t __attribute__((vector_size(kSide * sizeof(std::uint32_t))));
    Row rows_[kSide];
};

}  // namespace tarvo::plugin
