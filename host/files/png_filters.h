#pragma once

// The filters of PNG rows, which make a row of the differences from its neighbours.

#include <cstdint>
#include <span>

#include "byte_sink.h"

namespace tarvo::host {

// Filters rows of so many bytes, `step` of them a pixel. The byte of its filter stands before a row.
class PngFilters {
public:
    PngFilters(std::size_t row_bytes, std::size_t step);

    // Appends the row as it is.
    static void append_plain(std::span<const std::uint8_t> row, Bytes& out);
    // Appends the row by the filter that makes the least of its differences. The row above the first one is zeros.
    void append_filtered(std::span<const std::uint8_t> row, std::span<const std::uint8_t> above, Bytes& out);

private:
    const std::size_t step_;
    Bytes tried_, best_;
};

}  // namespace tarvo::host
