#pragma once

// The pixels of a PNG file as the chunks of its zlib stream.

#include <cstdint>
#include <functional>
#include <span>

#include "compression.h"
#include "image.h"

namespace tarvo::host {

// Rows as the file has them: packed, some pixels in a byte.
struct PngRows {
    int height;
    std::size_t row_bytes;
    std::size_t filter_step;  // bytes a pixel, at least 1
    bool may_filter;          // differences of neighbours mean something: not those of indices
    std::function<void(int y, std::uint8_t* row)> read;
};

using TakeChunk = std::function<void(std::span<const std::uint8_t> chunk)>;

// Calls `take(chunk)` with what goes into one IDAT chunk each. How a band of rows is filtered and coded is found by
// trying it on some of its rows; on all of them where the file is to be small. The same rows give the same bytes.
// Throws what `read` and `take` throw, and std::bad_alloc.
void deflate_png(const PngRows& rows, Compression effort, const TakeChunk& take);

}  // namespace tarvo::host
