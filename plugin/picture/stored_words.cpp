#include "stored_words.h"

#include <algorithm>
#include <cstring>

#include "pixel_blocks.h"
#include "row_clones.h"

namespace tarvo::plugin {
namespace {

constexpr std::size_t kWord = XRgb32::kBytes;

// Memory is asked for this far ahead of what is moved.
constexpr std::size_t kAhead = 16 * kCacheLine;

struct alignas(kCacheLine) CacheLine {
    std::uint8_t bytes[kCacheLine];
};

using Bytes = std::uint8_t __attribute__((vector_size(16)));

// Writes sixteen bytes, each chosen from those of `first`, numbered 0 to 15, and of `second`, numbered 16 to 31.
template <int... chosen>
TARVO_INLINED inline void shuffle(const std::uint8_t* first, const std::uint8_t* second, std::uint8_t* to) {
    Bytes from[2];
    std::memcpy(&from[0], first, sizeof(Bytes));
    std::memcpy(&from[1], second, sizeof(Bytes));
    const Bytes mixed = __builtin_shufflevector(from[0], from[1], chosen...);
    std::memcpy(to, &mixed, sizeof mixed);
}

// Packs the pixels of a cache line into three quarters of one.
TARVO_INLINED inline void pack_cache_line(const std::uint8_t* words, std::uint8_t* bytes) {
    shuffle<1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15, 17, 18, 19, 21>(words, words + 16, bytes);
    shuffle<6, 7, 9, 10, 11, 13, 14, 15, 17, 18, 19, 21, 22, 23, 25, 26>(words + 16, words + 32, bytes + 16);
    shuffle<11, 13, 14, 15, 17, 18, 19, 21, 22, 23, 25, 26, 27, 29, 30, 31>(words + 32, words + 48, bytes + 32);
}

TARVO_INLINED inline void unpack_cache_line(const std::uint8_t* bytes, std::uint8_t* words) {
    constexpr std::uint8_t kZeros[16] = {};
    for (int four = 0; four < 3; ++four)
        shuffle<0, 16, 17, 18, 0, 19, 20, 21, 0, 22, 23, 24, 0, 25, 26, 27>(kZeros, bytes + 12 * four,
                                                                            words + 16 * four);
    // The last four pixels are the end of the sixteen bytes that are loaded: nothing behind them is read.
    shuffle<0, 20, 21, 22, 0, 23, 24, 25, 0, 26, 27, 28, 0, 29, 30, 31>(kZeros, bytes + 32, words + 48);
}

TARVO_INLINED inline void pack_singly(const std::uint8_t* words, std::uint8_t* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) Rgb24::store(bytes + i * Rgb24::kBytes, XRgb32::load(words + i * kWord));
}

TARVO_INLINED inline void unpack_singly(const std::uint8_t* bytes, std::uint8_t* words, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) XRgb32::store(words + i * kWord, Rgb24::load(bytes + i * Rgb24::kBytes));
}

// How many of `count` pixels of three bytes lie before the first one that begins a cache line. That is one pixel of
// every kCacheLine, and because 3 has an inverse modulo kCacheLine its number can be computed.
std::size_t packed_before_cache_line(const std::uint8_t* bytes, std::size_t count) {
    constexpr std::size_t kInverse = 43;
    static_assert(kInverse * Rgb24::kBytes % kCacheLine == 1);
    const std::size_t past = reinterpret_cast<std::uintptr_t>(bytes) % kCacheLine;
    return std::min((kCacheLine - past) * kInverse % kCacheLine, count);
}

}  // namespace

void copy_words(const std::uint8_t* from, std::uint8_t* to, std::size_t words, StoreMode mode) {
    const std::size_t count = words * kWord;
    const std::size_t past = reinterpret_cast<std::uintptr_t>(to) % kCacheLine;
    std::size_t done = mode == StoreMode::streamed ? std::min((kCacheLine - past) % kCacheLine, count) : count;
    if (done > 0) std::memmove(to, from, done);
    for (; done + kCacheLine <= count; done += kCacheLine) {
        CacheLine line;
        __builtin_prefetch(from + done + kAhead);
        std::memcpy(line.bytes, from + done, kCacheLine);
        stream_cache_line(line.bytes, to + done);
    }
    if (done < count) std::memmove(to + done, from + done, count - done);
}

// Reads upwards in memory and writes downwards, because processors read ahead upwards only.
void mirror_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, StoreMode mode) {
    const auto mirror = [&](std::uint8_t* out, std::size_t done, std::size_t words) TARVO_INLINED {
        for (std::size_t i = 0; i < words; ++i)
            std::memcpy(out + (words - 1 - i) * kWord, from + (done + i) * kWord, kWord);
    };
    std::uint8_t* const end = to + count * kWord;
    const bool streams = mode == StoreMode::streamed && has_aligned_pixels(to);
    const std::size_t past_line = reinterpret_cast<std::uintptr_t>(end) % kCacheLine / kWord;
    const std::size_t behind = streams ? std::min(past_line, count) : count;
    mirror(end - behind * kWord, 0, behind);
    std::size_t done = behind;
    for (; done + kCacheLinePixels <= count; done += kCacheLinePixels) {
        CacheLine line;
        __builtin_prefetch(from + done * kWord + kAhead);
        mirror(line.bytes, done, kCacheLinePixels);
        stream_cache_line(line.bytes, end - done * kWord - kCacheLine);
    }
    mirror(to, done, count - done);
}

TARVO_ROW_CLONES void pack_words(const std::uint8_t* words, std::uint8_t* bytes, std::size_t count, StoreMode mode) {
    const bool streams = mode == StoreMode::streamed;
    std::size_t done = streams ? packed_before_cache_line(bytes, count) : 0;
    pack_singly(words, bytes, done);
    for (; streams && done + kCacheLine <= count; done += kCacheLine) {
        alignas(kCacheLine) std::uint8_t lines[kCacheLine * Rgb24::kBytes];
        for (std::size_t i = 0; i < kCacheLine; i += kCacheLinePixels)
            pack_cache_line(words + (done + i) * kWord, lines + i * Rgb24::kBytes);
        for (std::size_t i = 0; i < sizeof lines; i += kCacheLine)
            stream_cache_line(lines + i, bytes + done * Rgb24::kBytes + i);
    }
    for (; done + kCacheLinePixels <= count; done += kCacheLinePixels)
        pack_cache_line(words + done * kWord, bytes + done * Rgb24::kBytes);
    pack_singly(words + done * kWord, bytes + done * Rgb24::kBytes, count - done);
}

TARVO_ROW_CLONES void unpack_words(const std::uint8_t* bytes, std::uint8_t* words, std::size_t count, StoreMode mode) {
    const bool streams = mode == StoreMode::streamed && has_aligned_pixels(words);
    std::size_t done = streams ? pixels_before_cache_line(words, count) : 0;
    unpack_singly(bytes, words, done);
    for (; done + kCacheLinePixels <= count; done += kCacheLinePixels) {
        CacheLine line;
        unpack_cache_line(bytes + done * Rgb24::kBytes, line.bytes);
        if (streams)
            stream_cache_line(line.bytes, words + done * kWord);
        else
            std::memcpy(words + done * kWord, line.bytes, kCacheLine);
    }
    unpack_singly(bytes + done * Rgb24::kBytes, words + done * kWord, count - done);
}

void PieceWriter::write(std::uint8_t* words, std::size_t count, std::uint8_t* to, StoreMode mode, PieceEnd end) {
    const std::size_t bytes = waiting_ + count * kWord;
    std::uint8_t* const from = words - waiting_;
    to -= waiting_;
    // A whole line is copied, whatever waits: that is faster than a few bytes.
    std::memcpy(words - kCacheLine, last_line_, kCacheLine);
    const bool waits = mode == StoreMode::streamed && end == PieceEnd::inside_row && has_aligned_pixels(to);
    const std::size_t past_line = waits ? reinterpret_cast<std::uintptr_t>(to + bytes) % kCacheLine : 0;
    waiting_ = std::min(past_line, bytes);
    copy_words(from, to, (bytes - waiting_) / kWord, mode);
    std::memcpy(last_line_, from + bytes - kCacheLine, kCacheLine);
}

}  // namespace tarvo::plugin
