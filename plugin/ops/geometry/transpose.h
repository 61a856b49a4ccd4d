#pragma once

// Transposition: kernels that walk down columns read them as rows in memory, work on these and turn them back.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "pixel_blocks.h"
#include "pixel_formats.h"
#include "row_clones.h"
#include "word_squares.h"

namespace tarvo::plugin {

// What becomes of each word on the way. By `exchanged`, 32-bit pixels become colours and colours become 32-bit pixels.
enum class Coding { kept, exchanged };

// Word `row` of out(column) = word `column` of in(row). Both functions return the address of a row's first word. Words
// are transposed in squares, 16 rows of in at a time, so that every row of out gets a whole cache line at a time:
//
//                |   4   |   4   | ...                       |      16       |
//     in(0)      |  sq.  |  sq.  |                 out(0)    | sq. ...  sq.  |
//       ...      |  ...  |  ...  |                 out(4)    | sq. ...  sq.  |
//     in(15)     |  sq.  |  sq.  |                   ...
//
// What is left at the right and at the bottom is transposed word by word.
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
    on_this_processor([=]() TARVO_INLINED {
        std::size_t row = 0;
        for (; row + kCacheLinePixels <= rows; row += kCacheLinePixels)
            transpose_some(row, std::index_sequence<kCacheLinePixels>{});
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

}  // namespace tarvo::plugin
