#pragma once

// 32-bit pixels moved as they are stored. `streams` writes whole cache lines past the caches.

#include <cstddef>
#include <cstdint>

#include "pixel_blocks.h"

void copy_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool streams);
// The last one first. The runs do not overlap.
void mirror_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool streams);
// Without their unused bytes, which come back as 0: three bytes a pixel, anywhere in memory.
void pack_words(const std::uint8_t* words, std::uint8_t* bytes, std::size_t count, bool streams);
void unpack_words(const std::uint8_t* bytes, std::uint8_t* words, std::size_t count, bool streams);

// Writes a row in pieces, but in whole cache lines: what does not fill one waits for the next piece.
class PieceWriter {
public:
    // `words` go to `to`, where the last piece ended; in front of them is room for a cache line. `ends` the row, or
    // what may wait.
    void write(std::uint8_t* words, std::size_t count, std::uint8_t* to, bool streams, bool ends);

private:
    std::size_t waiting_ = 0;  // bytes
    std::uint8_t last_line_[kCacheLine]{};
};
