#include "free_rotate_direct.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>

#include "back_mapping.h"
#include "bands.h"
#include "flip_rotate.h"
#include "forms.h"
#include "free_rotation.h"
#include "host_reference.h"
#include "numbers.h"
#include "pixel_blocks.h"
#include "row_clones.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

using free_rotation::BackMapping;
using free_rotation::Footprint;
using free_rotation::kFractionBits;
using free_rotation::Position;
using free_rotation::RowWalk;
using free_rotation::Steps;

// The result is made in square tiles, each from a window of the source that fits in the nearest caches.
constexpr std::int32_t kTile = 48;
// A footprint touches at most three source pixels across and three down.
constexpr std::int32_t kReach = 3;
// The side of a window: the tile's diagonal, the pixels that a footprint touches with one more that is read, and what
// the mapping is inexact by.
constexpr std::int32_t kWindow = 80;
static_assert(kTile * 3 / 2 + kReach + 1 <= kWindow);

// --- means under footprints ------------------------------------------------------------------------------------------

// Here the four bytes of a colour are four channels. The unused one is dropped at the end.
constexpr std::size_t kChannels = sizeof(PixelColor);
constexpr std::size_t kTileChannels = kTile * kChannels;

// The finest units are sixteenths of a pixel. A footprint is at most 24 of them long and wide, so that weighted sums
// down its columns fit in 16 bits.
using Channel = std::uint16_t;
constexpr std::uint32_t kMostLength = 24;
static_assert(255 * kMostLength <= std::numeric_limits<Channel>::max());

// Widens the channels of a whole row of a window.
TARVO_ROW_CLONES void spread_row(const PixelColor* __restrict colors, Channel* __restrict channels) {
    const std::uint8_t* const bytes = reinterpret_cast<const std::uint8_t*>(colors);
    for (std::size_t i = 0; i < kWindow * kChannels; ++i) channels[i] = bytes[i];
}

// How much of a footprint lies in each of the pixels that it touches, across or down, in units. A footprint is at least
// a pixel long, so it ends behind the first one:
//
//     pixels        |         |         |         |
//     footprint          |<----------->|
//     weights             w[0]    w[1]  w[2] = 0
struct Overlap {
    std::int32_t first, weights[kReach];

    Overlap(std::int32_t begin, std::int32_t end, int unit_bits) {
        const std::int32_t unit = 1 << unit_bits, length = end - begin;
        first = begin >> unit_bits;
        weights[0] = unit - (begin & (unit - 1));
        weights[1] = std::min(length - weights[0], unit);
        weights[2] = length - weights[0] - weights[1];
    }
};

// The work on a run of result pixels, which is averaged in steps. Each step is a loop over all of the run, which
// compilers turn into vector code.
struct FootprintRun {
    std::int32_t first[kTile];  // the index, in the window, of the upper left pixel that each footprint touches
    Channel across[kReach][kTile], down[kReach][kTile];  // the weights of its overlaps
    float portion[kTile];                                // 1 / its area
    Channel columns[kReach][kTileChannels];              // weighted sums down the columns that it touches
    alignas(kCacheLine) PixelColor means[kTile];
};

TARVO_INLINED inline void find_footprints(Position<std::int32_t> start, const Steps& steps, int unit_bits,
                                          FootprintRun& run) {
    for (std::int32_t x = 0; x < kTile; ++x) {
        const Footprint<std::int32_t> footprint(to_the_right(start, steps, x), steps);
        const Overlap across(footprint.left, footprint.right, unit_bits);
        const Overlap down(footprint.top, footprint.bottom, unit_bits);
        run.first[x] = down.first * kWindow + across.first;
        for (int i = 0; i < kReach; ++i) {
            run.across[i][x] = static_cast<Channel>(across.weights[i]);
            run.down[i][x] = static_cast<Channel>(down.weights[i]);
        }
        run.portion[x] =
            1.0f / static_cast<float>((footprint.right - footprint.left) * (footprint.bottom - footprint.top));
    }
}

// Four pixels side by side, of which the fourth counts nothing.
class FourPixels {
public:
    TARVO_INLINED explicit FourPixels(const Channel* channels) { std::memcpy(&vector_, channels, sizeof vector_); }
    TARVO_INLINED void store(int pixel, Channel* channels) const {
        std::memcpy(channels, reinterpret_cast<const char*>(&vector_) + pixel * kPixelSize, kPixelSize);
    }
    TARVO_INLINED FourPixels& operator*=(Channel weight) { return vector_ *= weight, *this; }
    TARVO_INLINED FourPixels& operator+=(const FourPixels& other) { return vector_ += other.vector_, *this; }

private:
    static constexpr std::size_t kPixelSize = kChannels * sizeof(Channel);
    using Vector [[gnu::vector_size(4 * kPixelSize)]] = Channel;
    Vector vector_;
};

// Written with vectors, because compilers do not turn plain loops into this, and they take twice as long.
TARVO_INLINED inline void sum_columns(const Channel* window, std::size_t count, FootprintRun& run) {
    constexpr std::size_t kRow = kWindow * kChannels;
    for (std::size_t x = 0; x < count; ++x) {
        const Channel* const at = window + static_cast<std::size_t>(run.first[x]) * kChannels;
        FourPixels top(at), middle(at + kRow), bottom(at + 2 * kRow);
        top *= run.down[0][x];
        middle *= run.down[1][x];
        bottom *= run.down[2][x];
        top += middle += bottom;
        for (int i = 0; i < kReach; ++i) top.store(i, run.columns[i] + x * kChannels);
    }
}

template <class Value>
TARVO_INLINED inline void repeat_for_channels(const Value* values, Value* __restrict repeated) {
    for (std::size_t x = 0; x < kTile; ++x)
        for (std::size_t i = 0; i < kChannels; ++i) repeated[x * kChannels + i] = values[x];
}

// Divides the weighted sums of columns by the footprints' areas. With 1/2 added to a sum, a quotient is at least 1/1152
// away from every integer, which is far more than the error of a float: truncated, it is that of an integer division.
TARVO_INLINED inline void divide_columns(std::size_t count, FootprintRun& run) {
    Channel weights[kReach][kTileChannels];
    float portions[kTileChannels];
    for (int i = 0; i < kReach; ++i) repeat_for_channels(run.across[i], weights[i]);
    repeat_for_channels(run.portion, portions);
    std::uint8_t* const means = reinterpret_cast<std::uint8_t*>(run.means);
    for (std::size_t i = 0; i < count * kChannels; ++i) {
        const std::int32_t sum =
            run.columns[0][i] * weights[0][i] + run.columns[1][i] * weights[1][i] + run.columns[2][i] * weights[2][i];
        means[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>((static_cast<float>(sum) + 0.5f) * portions[i]));
    }
}

// Makes the colours of a run of result pixels. The upper left corner of the first is at `start` in the window.
void average_run(const Channel* window, Position<std::int32_t> start, const Steps& steps, int unit_bits,
                 PixelColor* colors, std::size_t count) {
    on_this_processor([&]() TARVO_INLINED {
        FootprintRun run;
        find_footprints(start, steps, unit_bits, run);
        sum_columns(window, count, run);
        divide_columns(count, run);
        for (std::size_t x = 0; x < count; ++x) colors[x] = run.means[x] & 0xFFFFFF;
    });
}

// --- the part of the source that a tile of the result shows ----------------------------------------------------------

struct Box {
    std::int32_t left, top, right, bottom;  // right and bottom lie behind it

    std::int32_t width() const { return right - left; }
    bool meets(const TRV_Picture& picture) const {
        return left < picture.width() && right > 0 && top < picture.height() && bottom > 0;
    }
};

// The channels of a box of source pixels. Beyond the source, pixels have the frame's colour and are averaged like any.
class SourceWindow {
public:
    SourceWindow(const TRV_Picture& source, PixelColor frame, const char* caller)
        : source_(source), frame_(frame), caller_(caller) {}

    // Asks for the memory of the box that is loaded next.
    void prefetch(const Box& box) const {
        const std::int32_t left = std::max(box.left, 0), right = std::min(box.right, source_.width());
        const std::int32_t top = std::max(box.top, 0), bottom = std::min(box.bottom, source_.height());
        if (left >= right) return;
        for (std::int32_t row = top; row < bottom; ++row)
            source_.prefetch(row, left, static_cast<std::size_t>(right - left));
    }
    void load(const Box& box) {
        std::array<PixelColor, kWindow> colors{};
        Channel* channels = channels_.data();
        for (std::int32_t row = box.top; row < box.bottom; ++row, channels += kWindow * kChannels) {
            read(row, box.left, {colors.data(), static_cast<std::size_t>(box.width())});
            spread_row(colors.data(), channels);
        }
    }
    // The first channel of the box. From row to row there are kWindow pixels.
    const Channel* channels() const { return channels_.data(); }

private:
    void read(std::int32_t row, std::int32_t left, std::span<PixelColor> colors) const {
        const auto width = static_cast<std::int32_t>(colors.size());
        const bool in_source = row >= 0 && row < source_.height();
        const std::int32_t first = in_source ? std::clamp(-left, 0, width) : width;
        const std::int32_t end = std::clamp(source_.width() - left, first, width);
        std::fill(colors.begin(), colors.begin() + first, frame_);
        if (first < end) source_.get_pixels(row, left + first, colors.subspan(first, end - first), caller_);
        std::fill(colors.begin() + end, colors.end(), frame_);
    }

    const TRV_Picture& source_;
    PixelColor frame_;
    const char* caller_;
    std::array<Channel, std::size_t{kWindow} * kWindow * kChannels> channels_{};
};

// --- the kernel ------------------------------------------------------------------------------------------------------

// Rotates a picture, with `1 << unit_bits` units to a source pixel.
class Rotator {
public:
    Rotator(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color, int unit_bits,
            const char* caller)
        : source_(source),
          result_(result),
          mapping_(size_of(source), size_of(result), angle, unit_bits),
          unit_bits_(unit_bits),
          frame_(static_cast<PixelColor>(frame_color) & 0xFFFFFF),
          caller_(caller),
          window_(source, frame_, caller) {}

    // Draws the rows from `first` to before `end`.
    void run(std::int32_t first, std::int32_t end) {
        for (std::int32_t row = first; row < end; row += kTile) {
            const std::int32_t rows = std::min(kTile, end - row);
            for (std::int32_t i = 0; i < rows; ++i) walks_[i] = mapping_.walk_of(row + i);
            for_each_chunk(0, result_.width() - 1, [&](std::int32_t column, std::size_t columns) {
                for (std::int32_t i = 0; i < rows; ++i) std::fill_n(band_[i].begin(), columns, frame_);
                draw_tiles(rows, column, static_cast<std::int32_t>(columns));
                for (std::int32_t i = 0; i < rows; ++i)
                    result_.set_pixels(row + i, column, {band_[i].data(), columns}, caller_);
            });
        }
    }

private:
    // A tile of the band at hand. Columns are counted in the result; `end_column` lies behind the tile.
    struct Tile {
        std::int32_t rows, column, end_column;
    };

    // Draws the tiles of the band from the result's `column` on.
    void draw_tiles(std::int32_t rows, std::int32_t column, std::int32_t columns) {
        const std::int32_t end = column + columns;
        const auto tile_from = [&](std::int32_t x) { return Tile{rows, x, std::min(x + kTile, end)}; };
        Box next = source_box(tile_from(column));
        for (std::int32_t x = column; x < end; x += kTile) {
            const Tile tile = tile_from(x);
            const Box box = next;
            next = source_box(tile_from(x + kTile));
            if (!box.meets(source_)) continue;
            window_.load(box);
            window_.prefetch(next);
            for (std::int32_t row = 0; row < rows; ++row) draw_run(row, tile, box, &band_[row][x - column]);
        }
    }

    // Draws a tile's row, from where the row's walk starts.
    void draw_run(std::int32_t row, const Tile& tile, const Box& box, PixelColor* colors) const {
        const RowWalk& walk = walks_[row];
        const std::int32_t first = std::max(tile.column, walk.column), count = tile.end_column - first;
        if (count <= 0) return;
        const Position<std::int64_t> position = mapping_.position(walk, first);
        average_run(window_.channels(), {in_box(position.x, box.left), in_box(position.y, box.top)}, mapping_.steps(),
                    unit_bits_, colors + (first - tile.column), static_cast<std::size_t>(count));
    }
    std::int32_t in_box(std::int64_t position, std::int32_t pixel) const {
        return static_cast<std::int32_t>(position - (std::int64_t{pixel} << (unit_bits_ + kFractionBits)));
    }

    // Returns the box that the tile's footprints touch. Their positions lie between those at the ends of the tile's
    // rows.
    Box source_box(const Tile& tile) const {
        constexpr std::int64_t kFar = std::numeric_limits<std::int64_t>::max() / 2;
        Position<std::int64_t> least = {kFar, kFar}, most = {-kFar, -kFar};
        for (std::int32_t row = 0; row < tile.rows; ++row) {
            const RowWalk& walk = walks_[row];
            if (walk.column >= tile.end_column) continue;
            for (const std::int32_t x : {std::max(tile.column, walk.column), tile.end_column - 1}) {
                const Position<std::int64_t> position = mapping_.position(walk, x);
                least = {std::min(least.x, position.x), std::min(least.y, position.y)};
                most = {std::max(most.x, position.x), std::max(most.y, position.y)};
            }
        }
        if (least.x > most.x) return {};
        const Footprint<std::int64_t> first(least, mapping_.steps()), last(most, mapping_.steps());
        return {.left = pixel_of(first.left),
                .top = pixel_of(first.top),
                .right = pixel_of(last.left) + kReach,
                .bottom = pixel_of(last.top) + kReach};
    }
    std::int32_t pixel_of(std::int64_t units) const { return static_cast<std::int32_t>(units >> unit_bits_); }

    const TRV_Picture& source_;
    TRV_Picture& result_;
    BackMapping mapping_;
    int unit_bits_;
    PixelColor frame_;
    const char* caller_;
    std::array<RowWalk, kTile> walks_;
    std::array<Chunk, kTile> band_;  // rows of the result, which are written in long runs because short ones are slow
    SourceWindow window_;
};

// These are on the stack together, about 150 KiB.
static_assert(sizeof(Rotator) + sizeof(FootprintRun) <= kMostStackBytes);

void rotate_in_bands(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color, int unit_bits,
                     const char* caller) {
    in_bands(0, result.height(), result.width(), kTile, [&](std::int32_t first, std::int32_t end) {
        Rotator(source, result, angle, frame_color, unit_bits, caller).run(first, end);
    });
}

// --- both forms ------------------------------------------------------------------------------------------------------

constexpr bool kUnflipped = false;

using Kernel = void(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color);

// NaN passes the checks of rotations. Its number of quarter turns is out of bounds, and TRV_FlipRotate refuses that.
REALpictureStruct* rotate(REALpictureStruct* p, double rotation, int frame_color, Kernel& kernel) {
    const double turns = std::floor(rotation / 90.0);
    const double degrees = rotation - 90.0 * turns;
    HostReference<REALpictureStruct> turned(
        TRV_FlipRotate(p, kUnflipped, kUnflipped, truncate_to_int32(turns), kNoYielding));
    if (degrees == 0.0 || !turned) return turned.release();

    TRV_Picture source(turned.get(), kAsImage);
    if (!source.Lock()) return fail(ErrorCode::intermediate_lock);
    const double angle = 2.0 * degrees * free_rotation::kPi / 360.0;
    const free_rotation::Diagonal diagonal(source.width(), source.height());
    return PictureForm{}.produce(diagonal.width_at(angle - diagonal.angle), diagonal.height_at(angle + diagonal.angle),
                                 result_depth(source), ResultMask::none,
                                 [&](TRV_Picture& result) { kernel(source, result, angle, frame_color); });
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivRotateDirect(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color) {
    constexpr int kSixteenths = 4;
    rotate_in_bands(source, result, angle, frame_color, kSixteenths, "TRV_FreeRotateDirect");
}

void PrivRotateFast(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color) {
    constexpr int kNoFraction = 0;
    rotate_in_bands(source, result, angle, frame_color, kNoFraction, "TRV_FreeRotateFast");
}

REALpictureStruct* PrivFreeRotateDirect_NonVector(REALpictureStruct* p, double rotation, int frame_color) {
    return rotate(p, rotation, frame_color, PrivRotateDirect);
}

REALpictureStruct* PrivFreeRotateFast_NonVector(REALpictureStruct* p, double rotation, int frame_color) {
    return rotate(p, rotation, frame_color, PrivRotateFast);
}

REALpictureStruct* TRV_FreeRotateDirect(REALpictureStruct* p, double rotation, int frame_color) {
    if (!free_rotation::arguments_pass(p, rotation)) return nullptr;
    return PrivFreeRotateDirect_NonVector(p, rotation, frame_color);
}

REALpictureStruct* TRV_FreeRotateFast(REALpictureStruct* p, double rotation, int frame_color) {
    if (!free_rotation::arguments_pass(p, rotation)) return nullptr;
    return PrivFreeRotateFast_NonVector(p, rotation, frame_color);
}
