#pragma once

// Runs of 32-bit pixels, read, worked on and written a block at a time. All that is done to a block is done in one
// function, so that its colours stay in registers:
//
//     |  part  |    block    |    block    |  ...  |    block    |  part  |
//              ^ the first cache line that begins in the run, if lines are written past the caches

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "pixel_formats.h"
#include "row_clones.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#else
#include <cstring>
#endif

namespace tarvo::plugin {

inline constexpr std::size_t kCacheLine = 64;
inline constexpr std::size_t kCacheLinePixels = kCacheLine / XRgb32::kBytes;
inline constexpr std::size_t kBlockPixels = 32;

// The colours that a kernel works on, always a whole block. Where a part of a block is wanted, the kernel works on the
// rest too, which is then not written.
struct alignas(kCacheLine) ColorBlock {
    PixelColor colors[kBlockPixels];
};

// A kernel is a function object marked TARVO_INLINED. Either it makes one colour, `kernel(color, others...)`, from
// those of all pictures at a place; or it takes blocks, `kernel(colors, others...)`, and works in place on the first.
template <class Kernel, class... Colors>
concept ColorKernel = std::is_invocable_r_v<PixelColor, const Kernel&, Colors...>;

template <class Kernel, class... Others>
TARVO_INLINED inline void apply_kernel(const Kernel& kernel, PixelColor* colors, const Others*... others) {
    if constexpr (ColorKernel<Kernel, PixelColor, Others...>) {
        const Kernel own = kernel;  // a copy: for all the compiler knows, writing a colour might change the original
        for (std::size_t x = 0; x < kBlockPixels; ++x) colors[x] = own(colors[x], others[x]...);
    } else {
        kernel(colors, others...);
    }
}

template <class Format>
TARVO_INLINED inline void decode_as(const std::uint8_t* __restrict row, PixelColor* __restrict span,
                                    std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) span[x] = Format::load(row + x * Format::kBytes);
}

template <class Format>
TARVO_INLINED inline void encode_as(const PixelColor* __restrict span, std::uint8_t* __restrict row,
                                    std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) Format::store(row + x * Format::kBytes, span[x]);
}

// How runs of 32-bit pixels are written: with ordinary stores, or in whole cache lines past the caches. That is faster
// for what is so large that it has left the caches before it is read again; and for much smaller pictures where several
// rows are written at a time, since processors do not foresee which lines these will be.
enum class StoreMode { cached, streamed };
enum class WritingOrder { rows, strips };

#if defined(__SSE2__)
inline constexpr bool kWritesPastCaches = true;
#else
inline constexpr bool kWritesPastCaches = false;
#endif

constexpr StoreMode store_mode_for(std::int64_t bytes, WritingOrder order = WritingOrder::rows) {
    const std::int64_t streamed_bytes = std::int64_t{order == WritingOrder::rows ? 16 : 4} << 20;
    return kWritesPastCaches && bytes >= streamed_bytes ? StoreMode::streamed : StoreMode::cached;
}

// Writes one cache line to an aligned address, past the caches if the compiler knows how. An ordinary store reads each
// line before it overwrites it, which is a third of the memory traffic of a large picture. No plain loop compiles to
// this.
TARVO_INLINED inline void stream_cache_line(const std::uint8_t* line, std::uint8_t* to) {
#if defined(__SSE2__)
    for (std::size_t i = 0; i < kCacheLine; i += sizeof(__m128i))
        _mm_stream_si128(reinterpret_cast<__m128i*>(to + i),
                         _mm_load_si128(reinterpret_cast<const __m128i*>(line + i)));
#else
    std::memcpy(to, line, kCacheLine);
#endif
}

// To be called after the last of a number of runs: writes that follow come after them.
inline void finish_streaming([[maybe_unused]] StoreMode mode) {
#if defined(__SSE2__)
    if (mode == StoreMode::streamed) _mm_sfence();
#endif
}

// Writes colours as 32-bit pixels, in whole cache lines past the caches. `row` is aligned.
TARVO_INLINED inline void stream_xrgb32_cache_lines(const PixelColor* colors, std::uint8_t* row, std::size_t count) {
    for (std::size_t x = 0; x < count; x += kCacheLinePixels) {
        alignas(kCacheLine) std::uint8_t line[kCacheLine];
        encode_as<XRgb32>(colors + x, line, kCacheLinePixels);
        stream_cache_line(line, row + x * XRgb32::kBytes);
    }
}

// How many of `count` 32-bit pixels lie before the first cache line that begins among them.
inline std::size_t pixels_before_cache_line(const std::uint8_t* row, std::size_t count) {
    const std::size_t past = reinterpret_cast<std::uintptr_t>(row) % kCacheLine;
    return past ? std::min((kCacheLine - past) / XRgb32::kBytes, count) : 0;
}

// Whether no 32-bit pixel of a row lies in two cache lines.
inline bool has_aligned_pixels(const std::uint8_t* row) {
    return reinterpret_cast<std::uintptr_t>(row) % XRgb32::kBytes == 0;
}

// to = kernel(from...), for `count` 32-bit pixels. Runs may be the same memory; otherwise they do not overlap.
template <class Kernel, class... Bytes>
void map_xrgb32_run(std::uint8_t* to, StoreMode mode, std::size_t count, const Kernel& kernel, const Bytes*... from) {
    const bool streams = mode == StoreMode::streamed && has_aligned_pixels(to);
    const std::size_t before_cache_line = streams ? pixels_before_cache_line(to, count) : 0;
    const auto map = [=]<std::size_t... i>(std::index_sequence<i...>) TARVO_INLINED {
        // Blocks and parts have variables of their own: those of whole blocks stay in registers.
        std::size_t x = before_cache_line;
        for (; x + kBlockPixels <= count; x += kBlockPixels) {
            ColorBlock blocks[sizeof...(from)];
            (decode_as<XRgb32>(from + x * XRgb32::kBytes, blocks[i].colors, kBlockPixels), ...);
            apply_kernel(kernel, blocks[i].colors...);
            if (streams)
                stream_xrgb32_cache_lines(blocks[0].colors, to + x * XRgb32::kBytes, kBlockPixels);
            else
                encode_as<XRgb32>(blocks[0].colors, to + x * XRgb32::kBytes, kBlockPixels);
        }
        const std::pair<std::size_t, std::size_t> ends[] = {{0, before_cache_line}, {x, count}};
        for (const auto& [begin, end] : ends) {
            ColorBlock blocks[sizeof...(from)]{};
            (decode_as<XRgb32>(from + begin * XRgb32::kBytes, blocks[i].colors, end - begin), ...);
            apply_kernel(kernel, blocks[i].colors...);
            encode_as<XRgb32>(blocks[0].colors, to + begin * XRgb32::kBytes, end - begin);
        }
    };
    on_this_processor([=]() TARVO_INLINED { map(std::index_sequence_for<Bytes...>{}); });
}

}  // namespace tarvo::plugin
