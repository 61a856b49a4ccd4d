#pragma once

// A shear, one pixel at a time.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <optional>

#include "plain_pixels.h"

namespace tarvo::test {

struct PlainShear {
    bool horizontal;
    double by;
    std::optional<std::uint32_t> frame = {};  // without: image and mask
    // Whether the masks are bound as such, which matters below 8 bits.
    bool source_mask_is_mask = true, result_mask_is_mask = true;
};

// One line: `get` reads the source line's image or mask, `put` writes the result's.
struct PlainLine {
    long source_length, length;
    long offset;  // 16.16
    std::function<std::uint32_t(long)> get, get_mask;
    std::function<void(long, std::uint32_t)> put, put_mask;
};

inline std::uint32_t plain_blend(std::uint32_t previous, std::uint32_t current, unsigned weight) {
    return each_channel([&](int shift) {
        const unsigned p = static_cast<unsigned>(channel(previous, shift));
        const unsigned c = static_cast<unsigned>(channel(current, shift));
        return std::min((p * weight + c * (65535 - weight)) / 65535, 255u);
    });
}

inline void plain_masked_line(const PlainLine& line) {
    const auto blank = [&](long from, long to) {
        for (long i = from; i < to; ++i) line.put(i, 0x888888), line.put_mask(i, 0xFFFFFF);
    };
    const long shift = static_cast<long>(std::floor(static_cast<double>(line.offset) / 65536.0));
    const long end = std::min(shift + line.source_length, line.length);
    if (shift >= line.length || end <= 0) return blank(0, line.length);
    const auto weight = static_cast<unsigned>(line.offset - shift * 65536);
    long at = std::max(shift, 0l), from = std::max(-shift, 0l);
    blank(0, at);
    std::uint32_t previous = line.get(from), previous_mask = 255;
    for (; at < end; ++at, ++from) {
        const std::uint32_t current = line.get(from), current_mask = line.get_mask(from) & 255;
        line.put(at, plain_blend(previous, current, weight));
        line.put_mask(at, (plain_blend(previous_mask, current_mask, weight) & 255) * 0x010101);
        previous = current;
        previous_mask = current_mask;
    }
    if (at < line.length && weight > 0) {
        line.put(at, previous & 0xFFFFFF);
        line.put_mask(at, (plain_blend(previous_mask, 255, weight) & 255) * 0x010101);
        ++at;
    }
    blank(at, line.length);
}

inline void plain_framed_line(const PlainLine& line, std::uint32_t frame) {
    const auto blank = [&](long from, long to) {
        for (long i = from; i < to; ++i) line.put(i, frame);
    };
    const long shift = static_cast<long>(std::floor(static_cast<double>(line.offset) / 65536.0));
    const long end = std::min(shift + line.source_length, line.length);
    if (shift >= line.length || end < 0) return blank(0, line.length);
    const auto weight = static_cast<unsigned>(line.offset - shift * 65536);
    long at = std::max(shift, 0l), from = std::max(-shift, 0l);
    blank(0, at);
    std::uint32_t previous = from > 0 ? line.get(from - 1) : frame;
    for (; at < end; ++at, ++from) {
        const std::uint32_t current = line.get(from);
        line.put(at, plain_blend(previous, current, weight));
        previous = current;
    }
    if (at < line.length && weight > 0) {
        line.put(at++, each_channel([&](int c) {
                     return (static_cast<unsigned>(channel(previous, c)) * weight +
                             static_cast<unsigned>(channel(frame, c)) * (65535 - weight)) >>
                            16;
                 }));
    }
    blank(at, line.length);
}

// `source_mask` and `result_mask` are null with a frame.
inline void plain_shear(const PlainShear& shear, const host::Picture& source, const host::Picture* source_mask,
                        host::Picture& result, host::Picture* result_mask) {
    const bool horizontal = shear.horizontal;
    const long lines = horizontal ? source.height() : source.width(),
               length = horizontal ? source.width() : source.height();
    const long result_lines = horizontal ? result.height() : result.width();
    const long result_length = horizontal ? result.width() : result.height();
    const auto read = [&](const host::Picture& picture, bool as_mask, long line, long at) {
        return horizontal
                   ? load(picture, static_cast<int>(at), static_cast<int>(line), as_mask, Addressing::whole_pixels)
                   : load(picture, static_cast<int>(line), static_cast<int>(at), as_mask, Addressing::whole_pixels);
    };
    const auto write = [&](host::Picture& picture, bool as_mask, long line, long at, std::uint32_t color) {
        store(picture, static_cast<int>(horizontal ? at : line), static_cast<int>(horizontal ? line : at), color,
              as_mask, Addressing::whole_pixels);
    };

    const double signed_part = shear.by * static_cast<double>(lines);
    const long sheared =
        static_cast<long>(std::floor(static_cast<double>(length) + (shear.by >= 0.0 ? signed_part : -signed_part)));
    const long top = result_lines > lines ? (result_lines - lines) / 2 : 0;
    const long cropped_lines = result_lines < lines ? (lines - result_lines) / 2 : 0;
    const long left = sheared < result_length ? (result_length - sheared) / 2 : 0;
    const long crop = sheared > result_length ? (sheared - result_length) / 2 : 0;
    const long step = static_cast<long>(std::floor(shear.by * 65536.0));
    const long first_offset = (step > 0 ? step * lines : 0) + (left - crop) * 65536 - step * cropped_lines;

    // Column by column where sub-byte masks take only the last write of a row.
    for (long line = 0; line < result_lines; ++line) {
        const long source_line = line - top + cropped_lines;
        const bool content = line >= top && line < std::min(lines + top, result_lines);
        PlainLine plain = {
            content ? length : 0,
            result_length,
            content ? first_offset - step * (line - top) : result_length * 65536,
            [&](long at) { return read(source, false, source_line, at); },
            [&](long at) { return source_mask ? read(*source_mask, shear.source_mask_is_mask, source_line, at) : 0; },
            [&](long at, std::uint32_t color) { write(result, false, line, at, color); },
            [&](long at, std::uint32_t color) { write(*result_mask, shear.result_mask_is_mask, line, at, color); }};
        if (shear.frame)
            plain_framed_line(plain, *shear.frame);
        else
            plain_masked_line(plain);
    }
}

}  // namespace tarvo::test
