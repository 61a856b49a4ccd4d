#pragma once

// Runs of 32-bit pixels moved as they are stored.

#include <cstddef>
#include <cstdint>

#include "pixel_blocks.h"

namespace tarvo::plugin {

void copy_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, StoreMode mode);
// Copies the last pixel first. The runs do not overlap.
void mirror_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, StoreMode mode);
// Drop the unused bytes, and put them back as 0:
//
//     words     0 R G B | 0 R G B | 0 R G B | ...
//     bytes     R G B R G B R G B ...             at any address
void pack_words(const std::uint8_t* words, std::uint8_t* bytes, std::size_t count, StoreMode mode);
void unpack_words(const std::uint8_t* bytes, std::uint8_t* words, std::size_t count, StoreMode mode);

// Some words of a row, with the room in front of them that a PieceWriter needs.
template <std::size_t kWords>
struct alignas(kCacheLine) RowPiece {
    std::uint8_t room[kCacheLine];
    PixelColor words[kWords];

    std::uint8_t* bytes() { return reinterpret_cast<std::uint8_t*>(words); }
};

// Whether a piece is the last one of its row.
enum class PieceEnd { inside_row, at_row_end };

// Writes a row in pieces, one after the other, but in whole cache lines. What a piece leaves of its last line waits for
// the next piece:
//
//     the row        |   line    |   line    |   line    |   line    | ...
//     first piece    |<------- written ----->| waits |
//     second piece                           | room  |<- words ----->|
//                                            |<------ written ------>|
class PieceWriter {
public:
    // Writes the first `count` words of a piece to `to`, where the piece before ended. The room in front of the words
    // is overwritten with what has waited. Nothing waits after a row's last piece, nor if lines are not streamed.
    template <std::size_t kWords>
    void write(RowPiece<kWords>& piece, std::size_t count, std::uint8_t* to, StoreMode mode, PieceEnd end) {
        write(piece.bytes(), count, to, mode, end);
    }

private:
    void write(std::uint8_t* words, std::size_t count, std::uint8_t* to, StoreMode mode, PieceEnd end);

    std::size_t waiting_ = 0;               // bytes
    std::uint8_t last_line_[kCacheLine]{};  // the last bytes of the piece before; those that wait are its end
};

}  // namespace tarvo::plugin
