#pragma once

// Runs of 32-bit pixels moved as they are stored. With `streams`, whole cache lines are written past the caches.

#include <cstddef>
#include <cstdint>

#include "pixel_blocks.h"

void copy_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool streams);
// Copies the last pixel first. The runs do not overlap.
void mirror_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool streams);
// Drop the unused bytes, and put them back as 0:
//
//     words     0 R G B | 0 R G B | 0 R G B | ...
//     bytes     R G B R G B R G B ...             at any address
void pack_words(const std::uint8_t* words, std::uint8_t* bytes, std::size_t count, bool streams);
void unpack_words(const std::uint8_t* bytes, std::uint8_t* words, std::size_t count, bool streams);

// Writes a row in pieces, one after the other, but in whole cache lines. What a piece leaves of its last line waits for
// the next piece:
//
//     the row        |   line    |   line    |   line    |   line    | ...
//     first piece    |<------- written ----->| waits |
//     second piece                           | room  |<- words ----->|
//                                            |<------ written ------>|
class PieceWriter {
public:
    // `words` belong at `to`, where the piece before ended. The cache line in front of `words` is the caller's too, and
    // is overwritten with what has waited. Nothing waits after a piece that `ends` the row.
    void write(std::uint8_t* words, std::size_t count, std::uint8_t* to, bool streams, bool ends);

private:
    std::size_t waiting_ = 0;               // bytes
    std::uint8_t last_line_[kCacheLine]{};  // the last bytes of the piece before; those that wait are its end
};
