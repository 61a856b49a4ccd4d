#pragma once

// 32-bit pixels moved as they are stored. `streams` writes whole cache lines past the caches.

#include <cstddef>
#include <cstdint>

void copy_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool streams);
// The last one first. The runs do not overlap.
void mirror_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool streams);
// Without their unused bytes, which come back as 0: three bytes a pixel, anywhere in memory.
void pack_words(const std::uint8_t* words, std::uint8_t* bytes, std::size_t count, bool streams);
void unpack_words(const std::uint8_t* bytes, std::uint8_t* words, std::size_t count, bool streams);

// So many rows become columns at once.
inline constexpr std::size_t kTurnedRows = 16;
// Word i of the row from[k] becomes word k of row i, for `count` rows that lie `stride` bytes apart.
void turn_words(const std::uint8_t* const* from, std::uint8_t* to, std::size_t stride, std::size_t count);
