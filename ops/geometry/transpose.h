#pragma once

// Columns of a picture as rows in memory: what kernels work on that go against the grain.

#include <cstddef>

#include "pixel_formats.h"

// A block of colours, `stride` colours from one row to the next.
template <class Color>
struct Block {
    Color* colors;
    std::size_t stride;

    Color* row(std::size_t index) const { return colors + index * stride; }
};

// out(column, row) = in(row, column). The blocks do not overlap.
void transpose(Block<const PixelColor> in, std::size_t rows, std::size_t columns, Block<PixelColor> out);
