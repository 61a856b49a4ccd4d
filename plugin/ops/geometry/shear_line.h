#pragma once

// Where a shear puts the lines of a picture, and how one line is drawn. Lines are rows or columns; this code is the
// same for both. Places along a line are in fixed point, with 16 bits of fraction.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "pixel_formats.h"
#include "row_clones.h"
#include "rows.h"

namespace tarvo::plugin {

// A line of the result. Pixel i of the source line lies across the places `shift + i` and `shift + i + 1`:
//
//     places    | shift | shift + 1 | shift + 2 | ...          previous_weight: the part of each pixel
//     pixels        |     0     |     1     |     2     |      that is in the place behind its own
struct ShearedLine {
    std::int32_t first = 0, end = 0;  // the result's places that blend two source pixels
    bool trails = false;              // the place `end` takes what the last source pixel leaves over
    std::int64_t shift = 0;
    std::uint32_t previous_weight = 0;  // in 65535ths
};

// All lines of a result. Those that show source lines are content, the others are blank.
class ShearPlan {
public:
    struct Sides {
        std::int32_t lines;   // across the shear
        std::int32_t length;  // along it
    };
    // The sheared source lies in the middle of the result and is cropped where it is larger.
    ShearPlan(Sides source, Sides result, double shear);

    // The first line of the result that is content, and the end of those that are.
    std::int32_t first_line() const { return first_line_; }
    std::int32_t end_line() const { return end_line_; }
    bool is_content(std::int32_t line) const { return line >= first_line_ && line < end_line_; }
    std::int32_t source_line(std::int32_t line) const { return line - first_line_ + first_source_line_; }
    std::int32_t source_length() const { return source_.length; }
    ShearedLine line(std::int32_t line) const;

private:
    Sides source_, result_;
    std::int32_t first_line_, end_line_;
    std::int32_t first_source_line_;
    std::int64_t step_;          // each line begins this much before the one above it
    std::int64_t first_offset_;  // where the first content line begins
};

// --- blends of two neighbouring pixels -------------------------------------------------------------------------------

constexpr std::uint32_t kWholeWeight = 65535;

// Returns the mean of two levels. `weight` is that of `previous`.
TARVO_INLINED inline std::uint32_t mix(std::uint32_t previous, std::uint32_t current, std::uint32_t weight) {
    const std::uint32_t sum = previous * weight + current * (kWholeWeight - weight);
    return (sum + (sum >> 16) + 1) >> 16;  // the sum / 65535
}

// Blends every channel.
struct BlendColors {
    std::uint32_t weight;

    TARVO_INLINED PixelColor operator()(PixelColor previous, PixelColor current) const {
        return pack_rgb(mix(red_of(previous), red_of(current), weight),
                        mix(green_of(previous), green_of(current), weight),
                        mix(blue_of(previous), blue_of(current), weight));
    }
};

// Blends the low bytes, and makes a grey of them.
struct BlendLevels {
    std::uint32_t weight;

    TARVO_INLINED PixelColor operator()(PixelColor previous, PixelColor current) const {
        return grey(mix(previous & 255, current & 255, weight));
    }
};

// out[x] = the blend of pairs[x] and pairs[x + 1].
template <class Blend>
void blend_row(const PixelColor* pairs, PixelColor* out, std::size_t count, const Blend& blend) {
    on_this_processor([=]() TARVO_INLINED {
        for (std::size_t x = 0; x < count; ++x) out[x] = blend(pairs[x], pairs[x + 1]);
    });
}

// --- edges: what surrounds a line, in each of the three kinds of pictures --------------------------------------------

// An image whose mask hides uncovered places.
struct MaskedImageEdges {
    using Blend = BlendColors;
    static constexpr bool kKeepsCutNeighbor = false;

    PixelColor fill() const { return 0x888888; }
    PixelColor before(PixelColor first) const { return first; }
    PixelColor trailing(PixelColor last, const ShearedLine&) const { return last & 0xFFFFFF; }
};

// The mask of such an image. It is transparent all around.
struct MaskEdges {
    using Blend = BlendLevels;
    static constexpr bool kKeepsCutNeighbor = false;

    PixelColor fill() const { return 0xFFFFFF; }
    PixelColor before(PixelColor) const { return fill(); }
    PixelColor trailing(PixelColor last, const ShearedLine& line) const {
        return Blend{line.previous_weight}(last, fill());
    }
};

// An image in a frame of one colour. A source pixel that is just cut off at the result's edge still blends into the
// first place.
struct FrameEdges {
    using Blend = BlendColors;
    static constexpr bool kKeepsCutNeighbor = true;

    PixelColor frame;

    PixelColor fill() const { return frame; }
    PixelColor before(PixelColor) const { return frame; }
    PixelColor trailing(PixelColor last, const ShearedLine& line) const;
};

// Draws the places from `from` on, at most a chunk of them. `read(index, colors)` returns the address of the source
// line's pixels from `index` on. They lie there already, or it reads them into `colors`.
template <class Edges, class Read>
void draw_segment(const ShearedLine& line, const Edges& edges, std::int32_t from, std::span<PixelColor> out,
                  Read read) {
    const std::int32_t to = from + static_cast<std::int32_t>(out.size());
    const std::int32_t first = std::clamp(line.first, from, to), end = std::clamp(line.end, from, to);
    const auto place = [&](std::int32_t at) { return out.data() + (at - from); };
    const auto source_index = [&](std::int32_t at) { return static_cast<std::int32_t>(at - line.shift); };

    std::fill(place(from), place(first), edges.fill());
    if (first < end) {
        std::array<PixelColor, kChunkPixels + 1> room;
        const PixelColor* pairs = room.data();
        const auto count = static_cast<std::size_t>(end - first);
        const std::int32_t index = source_index(first);
        if (first > line.first || (Edges::kKeepsCutNeighbor && index > 0)) {
            pairs = read(index - 1, std::span(room.data(), count + 1));
        } else {
            const PixelColor* const own = read(index, std::span(room.data() + 1, count));
            if (own != room.data() + 1) std::copy_n(own, count, room.data() + 1);
            room[0] = edges.before(room[1]);
        }
        blend_row(pairs, place(first), count, typename Edges::Blend{line.previous_weight});
    }
    std::fill(place(end), place(to), edges.fill());
    const bool has_last = line.end > line.first || Edges::kKeepsCutNeighbor;
    if (line.trails && has_last && line.end >= from && line.end < to) {
        PixelColor room;
        const PixelColor* const last = read(source_index(line.end) - 1, std::span(&room, 1));
        *place(line.end) = edges.trailing(*last, line);
    }
}

}  // namespace tarvo::plugin
