#pragma once

// Columns of a picture as rows in memory: what kernels work on that go against the grain.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "pixel_blocks.h"
#include "pixel_formats.h"
#include "row_clones.h"
#include "word_squares.h"

// What becomes of 32-bit pixels on the way. By one exchange stored pixels become colours, and colours stored pixels.
enum class Coding { kept, exchanged };

// Word `row` of out(column) = word `column` of in(row). Both functions give where a row's bytes begin, of as many rows
// and columns as are asked for.
template <Coding coding, class In, class Out>
void transpose(std::size_t rows, std::size_t columns, const In& in, const Out& out) {
    constexpr std::size_t kSide = WordSquare::kSide, kWord = sizeof(std::uint32_t);
    const std::size_t whole_rows = rows / kSide * kSide, whole_columns = columns / kSide * kSide;
    const auto transpose_some = [=]<std::size_t kRows>(std::size_t row, std::index_sequence<kRows>) TARVO_INLINED {
        const std::uint8_t* from[kRows];
        for (std::size_t i = 0; i < kRows; ++i) from[i] = in(row + i);
        for (std::size_t column = 0; column < whole_columns; column += kSide) {
            for (std::size_t k = 0; k < kRows; k += kSide) {
                WordSquare square;
                for (std::size_t i = 0; i < kSide; ++i) square.load(i, from[k + i] + column * kWord);
                square.transpose();
                if (coding == Coding::exchanged) square.make_big_endian();
                for (std::size_t i = 0; i < kSide; ++i) square.store(i, out(column + i) + (row + k) * kWord);
            }
        }
    };
    // As long as there are so many rows, each row of out gets a cache line at a time.
    on_this_processor([=]() TARVO_INLINED {
        std::size_t row = 0;
        for (; row + kLinePixels <= rows; row += kLinePixels) transpose_some(row, std::index_sequence<kLinePixels>{});
        for (; row < whole_rows; row += kSide) transpose_some(row, std::index_sequence<kSide>{});
    });
    for (std::size_t column = 0; column < columns; ++column) {
        for (std::size_t row = column < whole_columns ? whole_rows : 0; row < rows; ++row) {
            std::uint32_t word;
            std::memcpy(&word, in(row) + column * kWord, kWord);
            if (coding == Coding::exchanged) word = big_endian(word);
            std::memcpy(out(column) + row * kWord, &word, kWord);
        }
    }
}
