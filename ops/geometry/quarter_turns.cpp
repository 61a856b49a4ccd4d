#include "quarter_turns.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "pixel_runs.h"
#include "row_clones.h"
#include "transpose.h"

namespace {

TARVO_ROW_CLONES void reverse_row(const PixelColor* colors, PixelColor* reversed, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) reversed[x] = colors[count - 1 - x];
}

// --- rows stay rows --------------------------------------------------------------------------------------------------

struct Mirroring {
    RunAccess access;
    bool left_right, top_bottom;
    const char* caller;
};

void mirror(const Mirroring& how, const TRV_Picture& source, TRV_Picture& result, int yield) {
    const std::int32_t width = std::min(source.width(), result.width());
    const std::int32_t height = std::min(source.height(), result.height());
    YieldBudget budget(yield);
    Chunk colors, reversed;
    for (std::int32_t row = 0; row < height; ++row) {
        budget.before_row(result.width());
        const std::int32_t source_row = how.top_bottom ? source.height() - 1 - row : row;
        for_each_chunk(0, width - 1, [&](std::int32_t column, std::size_t count) {
            const std::int32_t mirrored = source.width() - column - static_cast<std::int32_t>(count);
            const std::span run(colors.data(), count);
            (source.*how.access.read)(source_row, how.left_right ? mirrored : column, run, how.caller);
            if (how.left_right) reverse_row(colors.data(), reversed.data(), count);
            (result.*how.access.write)(row, column, how.left_right ? std::span(reversed.data(), count) : run,
                                       how.caller);
        });
    }
}

// --- columns become rows ---------------------------------------------------------------------------------------------

constexpr std::int32_t kTile = 64;
using Tile = std::array<PixelColor, std::size_t{kTile} * kTile>;

// Of a source with less than a byte a pixel, each row gives its first pixel for all of its columns: addresses are
// counted in whole bytes, bit 0 is read.
void read_first_pixel(const TRV_Picture& source, long row, long column, std::span<PixelColor> colors,
                      const char* caller) {
    if (source.bitsPerPixel() == 0) return source.GetPixels(row, column, colors, caller);
    source.GetPixelBits(row, 0, colors.first(1), caller);
    std::ranges::fill(colors, colors.front());
}

void read_whole_pixels(const TRV_Picture& source, long row, long column, std::span<PixelColor> colors,
                       const char* caller) {
    source.GetPixels(row, column, colors, caller);
}

// Result pixel (x, y) is source pixel (y, x), each coordinate counted from the far end where it is reversed.
struct Turning {
    void (*read)(const TRV_Picture&, long row, long column, std::span<PixelColor>, const char*);
    void (TRV_Picture::*write)(long, long, std::span<const PixelColor>, const char*);
    bool reverses_columns, reverses_rows;  // of the source
    bool last_row_first;                   // the order in which the result is walked
    const char* caller;
};

constexpr Block<PixelColor> block_of(Tile& tile) { return {tile.data(), kTile}; }

// The result's rows from `row` on, `count` of them.
void turn_band(const Turning& how, const TRV_Picture& source, TRV_Picture& result, std::int32_t row,
               std::int32_t count, std::int32_t width) {
    Tile rows, columns;
    const std::int32_t source_column = how.reverses_columns ? source.width() - row - count : row;
    const auto source_row = [&](std::int32_t column) {
        return how.reverses_rows ? source.height() - 1 - column : column;
    };
    for (std::int32_t column = 0; column < width; column += kTile) {
        const std::int32_t tile_width = std::min(kTile, width - column);
        for (std::int32_t x = 0; x < tile_width; ++x) {
            const std::span run(block_of(rows).row(x), static_cast<std::size_t>(count));
            how.read(source, source_row(column + x), source_column, run, how.caller);
            const std::int32_t later = column + x + kTile;
            if (later < width) source.Prefetch(source_row(later), source_column, run.size());
        }
        transpose({rows.data(), kTile}, tile_width, count, block_of(columns));
        for (std::int32_t y = 0; y < count; ++y) {
            const std::int32_t line = how.reverses_columns ? count - 1 - y : y;
            const std::span run(block_of(columns).row(line), static_cast<std::size_t>(tile_width));
            (result.*how.write)(row + y, column, run, how.caller);
        }
    }
}

void turn(const Turning& how, const TRV_Picture& source, TRV_Picture& result, int yield) {
    const std::int32_t width = std::min(source.height(), result.width());
    const std::int32_t height = std::min(source.width(), result.height());
    YieldBudget budget(yield);
    for (std::int32_t done = 0; done < height; done += kTile) {
        const std::int32_t count = std::min(kTile, height - done);
        for (std::int32_t i = 0; i < count; ++i) budget.before_row(result.width());
        turn_band(how, source, result, how.last_row_first ? height - done - count : done, count, width);
    }
}

}  // namespace

void Priv_Rotate0(const TRV_Picture& source, TRV_Picture& result, int yield) {
    mirror({kSingleBits, false, false, "Priv_Rotate0"}, source, result, yield);
}

void Priv_Rotate0_H(const TRV_Picture& source, TRV_Picture& result, int yield) {
    mirror({kWholePixels, true, false, "Priv_Rotate0_H"}, source, result, yield);
}

void Priv_Rotate0_V(const TRV_Picture& source, TRV_Picture& result, int yield) {
    mirror({kWholePixels, false, true, "Priv_Rotate0_V"}, source, result, yield);
}

void Priv_Rotate0_HV(const TRV_Picture& source, TRV_Picture& result, int yield) {
    mirror({kSingleBits, true, true, "Priv_Rotate0_HV"}, source, result, yield);
}

void Priv_Rotate90(const TRV_Picture& source, TRV_Picture& result, int yield) {
    turn({read_first_pixel, kSingleBits.write, false, true, true, "Priv_Rotate90"}, source, result, yield);
}

void Priv_Rotate90_H(const TRV_Picture& source, TRV_Picture& result, int yield) {
    turn({read_whole_pixels, kWholePixels.write, true, true, false, "Priv_Rotate90_H"}, source, result, yield);
}

void Priv_Rotate90_V(const TRV_Picture& source, TRV_Picture& result, int yield) {
    turn({read_whole_pixels, kWholePixels.write, false, false, false, "Priv_Rotate90_V"}, source, result, yield);
}

void Priv_Rotate90_HV(const TRV_Picture& source, TRV_Picture& result, int yield) {
    turn({read_first_pixel, kSingleBits.write, true, false, false, "Priv_Rotate90_HV"}, source, result, yield);
}

QuarterTurn& quarter_turn(int turns, bool flip_h, bool flip_v) {
    // [turns][flip_h + 2 * flip_v]
    static constexpr QuarterTurn* kKernels[4][4] = {
        {Priv_Rotate0, Priv_Rotate0_H, Priv_Rotate0_V, Priv_Rotate0_HV},
        {Priv_Rotate90, Priv_Rotate90_H, Priv_Rotate90_V, Priv_Rotate90_HV},
        {Priv_Rotate180, Priv_Rotate180_H, Priv_Rotate180_V, Priv_Rotate180_HV},
        {Priv_Rotate270, Priv_Rotate270_H, Priv_Rotate270_V, Priv_Rotate270_HV},
    };
    return *kKernels[turns & 3][(flip_h ? 1 : 0) + (flip_v ? 2 : 0)];
}
