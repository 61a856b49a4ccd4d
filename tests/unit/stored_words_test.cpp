// 32-bit pixels moved as they are stored, against one pixel after the other: wherever runs begin and end in a cache
// line, and whether or not they are written past the caches. Nothing around them is written.

#include "stored_words.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <span>
#include <vector>

#include "pixel_blocks.h"

using namespace tarvo::plugin;

namespace {

constexpr std::size_t kWord = 4, kPacked = 3;
constexpr std::size_t kMost = 150;  // pixels: whole lines of both kinds, and parts on either side

using Bytes = std::vector<std::uint8_t>;

class StoredWords : public ::testing::TestWithParam<StoreMode> {
protected:
    Bytes noise(std::size_t count) {
        Bytes bytes(count);
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
        return bytes;
    }

    // Calls `move(from, to, count)` and `move_singly`, which does the same, for runs of all lengths and places.
    template <class Move, class MoveSingly>
    void compare(std::size_t from_size, std::size_t to_size, Move move, MoveSingly move_singly) {
        for (std::size_t start = 0; start < kCacheLine; ++start) {
            for (std::size_t count = 0; count <= kMost; count += count < 4 ? 1 : 7) {
                const Bytes from = noise(start % 5 + count * from_size);
                Bytes to(noise(kCacheLine + start + count * to_size + kCacheLine));
                Bytes expected = to;
                // As far from a cache line's start in each, wherever the vectors lie.
                const std::size_t past = reinterpret_cast<std::uintptr_t>(to.data()) % kCacheLine;
                const std::size_t offset = (start + kCacheLine - past) % kCacheLine;
                move(from.data() + start % 5, to.data() + offset, count);
                finish_streaming(mode());
                move_singly(from.data() + start % 5, expected.data() + offset, count);
                ASSERT_EQ(to, expected) << count << " pixels, " << start << " bytes past a line";
            }
        }
    }

    StoreMode mode() const { return GetParam(); }

private:
    std::mt19937 random{3};
};

INSTANTIATE_TEST_SUITE_P(Modes, StoredWords, ::testing::Values(StoreMode::cached, StoreMode::streamed));

TEST_P(StoredWords, Copied) {
    compare(
        kWord, kWord, [&](const auto* from, auto* to, std::size_t count) { copy_words(from, to, count, mode()); },
        [](const auto* from, auto* to, std::size_t count) { std::copy_n(from, count * kWord, to); });
}

TEST_P(StoredWords, Mirrored) {
    compare(
        kWord, kWord, [&](const auto* from, auto* to, std::size_t count) { mirror_words(from, to, count, mode()); },
        [](const auto* from, auto* to, std::size_t count) {
            for (std::size_t i = 0; i < count; ++i) std::copy_n(from + i * kWord, kWord, to + (count - 1 - i) * kWord);
        });
}

TEST_P(StoredWords, Packed) {
    compare(
        kWord, kPacked, [&](const auto* from, auto* to, std::size_t count) { pack_words(from, to, count, mode()); },
        [](const auto* from, auto* to, std::size_t count) {
            for (std::size_t i = 0; i < count; ++i) std::copy_n(from + i * kWord + 1, kPacked, to + i * kPacked);
        });
}

TEST_P(StoredWords, Unpacked) {
    compare(
        kPacked, kWord, [&](const auto* from, auto* to, std::size_t count) { unpack_words(from, to, count, mode()); },
        [](const auto* from, auto* to, std::size_t count) {
            for (std::size_t i = 0; i < count; ++i) {
                to[i * kWord] = 0;
                std::copy_n(from + i * kPacked, kPacked, to + i * kWord + 1);
            }
        });
}

TEST_P(StoredWords, WrittenInPieces) {
    constexpr std::size_t kLongest = 40;
    for (std::size_t start = 0; start < kCacheLine; ++start) {
        const Bytes from = noise(kWord * kMost);
        Bytes to = noise(kCacheLine + start + from.size() + kCacheLine);
        Bytes expected = to;
        const std::size_t past = reinterpret_cast<std::uintptr_t>(to.data()) % kCacheLine;
        std::uint8_t* const out = to.data() + (start + kCacheLine - past) % kCacheLine;
        std::ranges::copy(from, expected.begin() + (out - to.data()));
        PieceWriter writer;
        for (std::size_t row = 0; row < 2; ++row) {  // as good as new for the next one
            for (std::size_t done = 0, count; done < kMost; done += count) {
                count = std::min((done * 7 + start + row) % kLongest + 1, kMost - done);
                const Bytes rest = noise(kLongest * kWord);
                RowPiece<kLongest> piece;
                std::ranges::copy(rest, piece.bytes());
                std::copy_n(from.begin() + kWord * done, kWord * count, piece.bytes());
                const PieceEnd end = done + count == kMost ? PieceEnd::at_row_end : PieceEnd::inside_row;
                writer.write(piece, count, out + kWord * done, mode(), end);
            }
            finish_streaming(mode());
            ASSERT_EQ(to, expected) << start << " bytes past a line";
            if (row == 0) std::ranges::fill(std::span(out, from.size()), std::uint8_t{0});
        }
    }
}

}  // namespace
