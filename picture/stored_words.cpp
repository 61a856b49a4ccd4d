#include "stored_words.h"

#include <algorithm>
#include <cstring>

#include "pixel_blocks.h"
#include "word_squares.h"

namespace {

constexpr std::size_t kWord = XRgb32::kBytes;

// How far ahead of what is moved memory is asked for.
constexpr std::size_t kAhead = 16 * kCacheLine;

struct alignas(kCacheLine) Line {
    std::uint8_t bytes[kCacheLine];
};

}  // namespace

void copy_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool streams) {
    const bool by_lines = streams && has_aligned_pixels(to);
    const std::size_t before = by_lines ? pixels_before_line(to, count) : count;
    std::memmove(to, from, before * kWord);
    std::size_t done = before;
    for (; done + kLinePixels <= count; done += kLinePixels) {
        Line line;
        __builtin_prefetch(from + done * kWord + kAhead);
        std::memcpy(line.bytes, from + done * kWord, kCacheLine);
        stream_line(line.bytes, to + done * kWord);
    }
    std::memmove(to + done * kWord, from + done * kWord, (count - done) * kWord);
}

// What is read goes upwards in memory, what is written downwards: memory is read ahead upwards only.
void mirror_words(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool streams) {
    const auto mirror = [&](std::uint8_t* out, std::size_t done, std::size_t words) TARVO_INLINED {
        for (std::size_t i = 0; i < words; ++i)
            std::memcpy(out + (words - 1 - i) * kWord, from + (done + i) * kWord, kWord);
    };
    std::uint8_t* const end = to + count * kWord;
    const bool by_lines = streams && has_aligned_pixels(to);
    const std::size_t past_line = reinterpret_cast<std::uintptr_t>(end) % kCacheLine / kWord;
    const std::size_t behind = by_lines ? std::min(past_line, count) : count;
    mirror(end - behind * kWord, 0, behind);
    std::size_t done = behind;
    for (; done + kLinePixels <= count; done += kLinePixels) {
        Line line;
        __builtin_prefetch(from + done * kWord + kAhead);
        mirror(line.bytes, done, kLinePixels);
        stream_line(line.bytes, end - done * kWord - kCacheLine);
    }
    mirror(to, done, count - done);
}

void turn_words(const std::uint8_t* const* from, std::uint8_t* to, std::size_t stride, std::size_t count) {
    constexpr std::size_t kSide = WordSquare::kSide;
    const std::size_t whole = count / kSide * kSide;
    for (std::size_t i = 0; i < whole; i += kSide) {
        for (std::size_t k = 0; k < kTurnedRows; k += kSide) {
            WordSquare square;
            for (std::size_t j = 0; j < kSide; ++j) square.load(j, from[k + j] + i * kWord);
            square.transpose();
            for (std::size_t j = 0; j < kSide; ++j) square.store(j, to + (i + j) * stride + k * kWord);
        }
    }
    for (std::size_t i = whole; i < count; ++i)
        for (std::size_t k = 0; k < kTurnedRows; ++k)
            std::memcpy(to + i * stride + k * kWord, from[k] + i * kWord, kWord);
}
