#pragma once

// A mirrored and turned picture, one pixel at a time.

#include <string>
#include <utility>

#include "plain_pixels.h"

namespace tarvo::test {

struct Turn {
    int rotation;
    bool flip_h, flip_v;

    std::string name() const {
        return std::to_string(rotation) + " turns" + (flip_h ? ", left and right mirrored" : "") +
               (flip_v ? ", top and bottom mirrored" : "");
    }
};

struct Place {
    int x, y;
};

// Where the pixel (x, y) of a turned picture comes from: turned back one quarter at a time, then mirrored back.
inline Place source_of(const Turn& turn, Place at, int width, int height) {
    int w = width, h = height;  // of the picture before each quarter turn
    if (turn.rotation % 2) std::swap(w, h);
    for (int i = 0; i < turn.rotation; ++i) {
        std::swap(w, h);
        at = {at.y, h - 1 - at.x};
    }
    return {turn.flip_h ? w - 1 - at.x : at.x, turn.flip_v ? h - 1 - at.y : at.y};
}

// Eight kernels do the work; those that mirror an even number of times see single bits.
inline bool sees_bits(const Turn& turn) { return turn.flip_h == turn.flip_v; }

inline void plain_turn(const Turn& turn, const host::Picture& source, bool source_as_mask, host::Picture& result,
                       bool result_as_mask) {
    const Addressing write = sees_bits(turn) ? Addressing::single_bits : Addressing::whole_pixels;
    const Addressing read = turn.rotation % 2 && sees_bits(turn) ? Addressing::row_start : write;
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            const Place from = source_of(turn, {x, y}, source.width(), source.height());
            store(result, x, y, load(source, from.x, from.y, source_as_mask, read), result_as_mask, write);
        }
    }
}

}  // namespace tarvo::test
