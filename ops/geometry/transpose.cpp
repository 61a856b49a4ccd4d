#include "transpose.h"

#include "word_squares.h"

namespace {

constexpr std::size_t kSide = WordSquare::kSide;

void transpose_square(Block<const PixelColor> in, Block<PixelColor> out) {
    WordSquare square;
    for (std::size_t i = 0; i < kSide; ++i) square.load(i, in.row(i));
    square.transpose();
    for (std::size_t i = 0; i < kSide; ++i) square.store(i, out.row(i));
}

void transpose_singly(Block<const PixelColor> in, std::size_t rows, std::size_t columns, Block<PixelColor> out) {
    for (std::size_t column = 0; column < columns; ++column)
        for (std::size_t row = 0; row < rows; ++row) out.row(column)[row] = in.row(row)[column];
}

}  // namespace

void transpose(Block<const PixelColor> in, std::size_t rows, std::size_t columns, Block<PixelColor> out) {
    const std::size_t whole_rows = rows / kSide * kSide, whole_columns = columns / kSide * kSide;
    const auto in_from = [&](std::size_t row, std::size_t column) {
        return Block<const PixelColor>{in.row(row) + column, in.stride};
    };
    const auto out_from = [&](std::size_t row, std::size_t column) {
        return Block<PixelColor>{out.row(column) + row, out.stride};
    };
    for (std::size_t column = 0; column < whole_columns; column += kSide)
        for (std::size_t row = 0; row < whole_rows; row += kSide)
            transpose_square(in_from(row, column), out_from(row, column));
    transpose_singly(in_from(0, whole_columns), whole_rows, columns - whole_columns, out_from(0, whole_columns));
    transpose_singly(in_from(whole_rows, 0), rows - whole_rows, columns, out_from(whole_rows, 0));
}
