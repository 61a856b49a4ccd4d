#include "quarter_turns.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "bands.h"
#include "pixel_runs.h"
#include "rows.h"
#include "stored_words.h"
#include "transpose.h"

namespace tarvo::plugin {
namespace {

// --- rows stay rows --------------------------------------------------------------------------------------------------

struct Mirroring {
    RunAccess access;
    Flips flips;
    const char* caller;
};

void mirror(const Mirroring& how, const TRV_Picture& source, TRV_Picture& result, int yield) {
    const std::int32_t width = std::min(source.width(), result.width());
    const std::int32_t height = std::min(source.height(), result.height());
    YieldBudget budget(yield);
    const std::int32_t column = how.flips.horizontal ? source.width() - width : 0;
    const auto mirror_row = [&](std::int32_t i) {
        // The source is walked downwards, because processors read ahead so.
        const Place from = {how.flips.vertical ? source.height() - height + i : i, column};
        const Place to = {how.flips.vertical ? height - 1 - i : i, 0};
        const auto move = how.flips.horizontal ? mirror_run : copy_run;
        move(source, from, result, to, width, how.caller, how.access);
    };
    in_bands_between_yields(height, result.width(), kSingleRows, budget, [&](std::int32_t first, std::int32_t end) {
        for (std::int32_t i = first; i < end; ++i) mirror_row(i);
    });
}

// --- columns become rows ---------------------------------------------------------------------------------------------

// In a source of less than a byte a pixel, all columns of a row read its first pixel: the address stands still, and the
// bit is always 0.
void read_first_pixel(const TRV_Picture& source, long row, long column, std::span<PixelColor> colors,
                      const char* caller) {
    if (source.bitsPerPixel() == 0) return source.get_pixels(row, column, colors, caller);
    source.get_pixel_bits(row, 0, colors.first(1), caller);
    std::ranges::fill(colors, colors.front());
}

void read_whole_pixels(const TRV_Picture& source, long row, long column, std::span<PixelColor> colors,
                       const char* caller) {
    source.get_pixels(row, column, colors, caller);
}

// A quarter turn. Result pixel (x, y) is source pixel (y, x), each coordinate counted from the far end if it is
// reversed.
struct Turning {
    void (*read)(const TRV_Picture&, long row, long column, std::span<PixelColor>, const char*);
    void (TRV_Picture::*write)(long, long, std::span<const PixelColor>, const char*);
    const char* caller;
    bool reverses_columns = false, reverses_rows = false;  // those of the source
    bool last_row_first = false;                           // whether the result is walked upwards
};

// A strip of the result: `count` rows from `row` on.
struct Strip {
    const Turning& how;
    const TRV_Picture& source;
    TRV_Picture& result;
    std::int32_t row, count;

    std::int32_t source_column() const { return how.reverses_columns ? source.width() - row - count : row; }
    std::int32_t source_row(std::int32_t column) const {
        return how.reverses_rows ? source.height() - 1 - column : column;
    }
    // The result's row that gets the source's column `source_column() + index`.
    std::int32_t result_row(std::int32_t index) const {
        return row + (how.reverses_columns ? count - 1 - index : index);
    }
};

// Turns any pictures, as colours, in square tiles: rows are read, transposed and written.
class ColorTurner {
public:
    static constexpr std::int32_t kRows = 64;  // in a strip

    void turn(const Strip& strip, std::int32_t width) {
        for (std::int32_t column = 0; column < width; column += kRows)
            turn_tile(strip, column, std::min(kRows, width - column));
    }

private:
    using TileColors = std::array<std::array<PixelColor, kRows>, kRows>;

    void turn_tile(const Strip& strip, std::int32_t column, std::int32_t width) {
        for (std::int32_t x = 0; x < width; ++x) {
            const std::span run(rows_[x].data(), static_cast<std::size_t>(strip.count));
            strip.how.read(strip.source, strip.source_row(column + x), strip.source_column(), run, strip.how.caller);
        }
        const auto row_of = [](TileColors& tile) {
            return [&tile](std::size_t row) { return reinterpret_cast<std::uint8_t*>(tile[row].data()); };
        };
        transpose<Coding::kept>(width, strip.count, row_of(rows_), row_of(columns_));
        for (std::int32_t y = 0; y < strip.count; ++y) {
            const std::span run(columns_[y].data(), static_cast<std::size_t>(width));
            (strip.result.*strip.how.write)(strip.result_row(y), column, run, strip.how.caller);
        }
    }

    TileColors rows_, columns_;
};

// Turns pictures of 32 bits, as their pixels are stored. A tile is a cache line of each of kColumns rows of the source,
// and becomes kRows rows of a strip, each of which a PieceWriter writes behind the tile before:
//
//     source    |  16 pixels  |               result    |  128 pixels  |  128 pixels  |
//               |     ...     | 128 rows     (strip)    |     ...      |     ...      | 16 rows
class WordTurner {
public:
    static constexpr std::int32_t kRows = 16;  // in a strip
    static_assert(kRows == std::int32_t{kCacheLinePixels});

    static bool fits(const TRV_Picture& picture) { return rows_are_words(picture, 0, picture.height()); }

    void turn(const Strip& strip, std::int32_t width) {
        find_rows(strip, 0, width);
        for (std::int32_t column = 0; column < width; column += kColumns) {
            const std::int32_t columns = std::min(kColumns, width - column);
            // The tile is transposed as a whole. Where it has fewer columns, what is too much is not written.
            transpose<Coding::kept>(
                kColumns, static_cast<std::size_t>(strip.count), [this](std::size_t x) { return from_[x]; },
                [this](std::size_t y) { return pieces_[y].bytes(); });
            const PieceEnd end = column + columns == width ? PieceEnd::at_row_end : PieceEnd::inside_row;
            if (end == PieceEnd::inside_row) find_rows(strip, column + columns, width);
            for (std::int32_t y = 0; y < strip.count; ++y) {
                std::uint8_t* const to = strip.result.words_at(strip.result_row(y), column);
                const auto count = static_cast<std::size_t>(columns);
                writers_[y].write(pieces_[y], count, to, strip.result.store_mode(WritingOrder::strips), end);
            }
        }
    }

private:
    static constexpr std::int32_t kColumns = 128;
    static constexpr std::int32_t kWord = 4;

    // Finds the source's rows for a tile and asks for all of their memory at once. Behind the source's last row, that
    // one is repeated; what comes of it is not written.
    void find_rows(const Strip& strip, std::int32_t column, std::int32_t width) {
        for (std::int32_t x = 0; x < kColumns; ++x) {
            from_[x] = strip.source.words_at(strip.source_row(std::min(column + x, width - 1)), strip.source_column());
            __builtin_prefetch(from_[x]);
            __builtin_prefetch(from_[x] + (strip.count - 1) * kWord);
        }
    }

    std::array<RowPiece<kColumns>, kRows> pieces_;
    std::array<const std::uint8_t*, kColumns> from_;
    std::array<PieceWriter, kRows> writers_;
};

template <class Turner>
void turn_strips(const Turning& how, const TRV_Picture& source, TRV_Picture& result, int yield) {
    const std::int32_t width = std::min(source.height(), result.width());
    const std::int32_t height = std::min(source.width(), result.height());
    YieldBudget budget(yield);
    in_bands_between_yields(height, result.width(), Turner::kRows, budget, [&](std::int32_t first, std::int32_t end) {
        static_assert(sizeof(Turner) <= kMostStackBytes);  // up to 32 KiB
        Turner turner;
        for_each_piece(first, end - 1, Turner::kRows, [&](std::int32_t top, std::int32_t bottom) {
            const std::int32_t count = bottom - top + 1;
            turner.turn({how, source, result, how.last_row_first ? height - top - count : top, count}, width);
        });
    });
}

void turn(const Turning& how, const TRV_Picture& source, TRV_Picture& result, int yield) {
    const bool as_stored = WordTurner::fits(source) && WordTurner::fits(result);
    (as_stored ? turn_strips<WordTurner> : turn_strips<ColorTurner>)(how, source, result, yield);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void Priv_Rotate0(const TRV_Picture& source, TRV_Picture& result, int yield) {
    mirror({kSingleBits, {}, "Priv_Rotate0"}, source, result, yield);
}

void Priv_Rotate0_H(const TRV_Picture& source, TRV_Picture& result, int yield) {
    mirror({kWholePixels, {.horizontal = true}, "Priv_Rotate0_H"}, source, result, yield);
}

void Priv_Rotate0_V(const TRV_Picture& source, TRV_Picture& result, int yield) {
    mirror({kWholePixels, {.vertical = true}, "Priv_Rotate0_V"}, source, result, yield);
}

void Priv_Rotate0_HV(const TRV_Picture& source, TRV_Picture& result, int yield) {
    mirror({kSingleBits, {.horizontal = true, .vertical = true}, "Priv_Rotate0_HV"}, source, result, yield);
}

void Priv_Rotate90(const TRV_Picture& source, TRV_Picture& result, int yield) {
    turn({.read = read_first_pixel,
          .write = kSingleBits.write,
          .caller = "Priv_Rotate90",
          .reverses_rows = true,
          .last_row_first = true},
         source, result, yield);
}

void Priv_Rotate90_H(const TRV_Picture& source, TRV_Picture& result, int yield) {
    turn({.read = read_whole_pixels,
          .write = kWholePixels.write,
          .caller = "Priv_Rotate90_H",
          .reverses_columns = true,
          .reverses_rows = true},
         source, result, yield);
}

void Priv_Rotate90_V(const TRV_Picture& source, TRV_Picture& result, int yield) {
    turn({.read = read_whole_pixels, .write = kWholePixels.write, .caller = "Priv_Rotate90_V"}, source, result, yield);
}

void Priv_Rotate90_HV(const TRV_Picture& source, TRV_Picture& result, int yield) {
    turn({.read = read_first_pixel, .write = kSingleBits.write, .caller = "Priv_Rotate90_HV", .reverses_columns = true},
         source, result, yield);
}

// The second names, which are the same functions. Each is given the linker's name of the first one; a wrong one does
// not compile.
#define SECOND_NAME(name, first_name) \
    __attribute__((alias("_Z" first_name "RK11TRV_PictureRS_i"))) void name(const TRV_Picture&, TRV_Picture&, int)
SECOND_NAME(Priv_Rotate180, "15Priv_Rotate0_HV");
SECOND_NAME(Priv_Rotate180_H, "14Priv_Rotate0_V");
SECOND_NAME(Priv_Rotate180_V, "14Priv_Rotate0_H");
SECOND_NAME(Priv_Rotate180_HV, "12Priv_Rotate0");
SECOND_NAME(Priv_Rotate270, "16Priv_Rotate90_HV");
SECOND_NAME(Priv_Rotate270_H, "15Priv_Rotate90_V");
SECOND_NAME(Priv_Rotate270_V, "15Priv_Rotate90_H");
SECOND_NAME(Priv_Rotate270_HV, "13Priv_Rotate90");
#undef SECOND_NAME

namespace tarvo::plugin {

QuarterTurn& quarter_turn(int turns, Flips flips) {
    // [turns][horizontal + 2 * vertical]
    static constexpr QuarterTurn* kKernels[4][4] = {
        {Priv_Rotate0, Priv_Rotate0_H, Priv_Rotate0_V, Priv_Rotate0_HV},
        {Priv_Rotate90, Priv_Rotate90_H, Priv_Rotate90_V, Priv_Rotate90_HV},
        {Priv_Rotate180, Priv_Rotate180_H, Priv_Rotate180_V, Priv_Rotate180_HV},
        {Priv_Rotate270, Priv_Rotate270_H, Priv_Rotate270_V, Priv_Rotate270_HV},
    };
    return *kKernels[turns & 3][(flips.horizontal ? 1 : 0) + (flips.vertical ? 2 : 0)];
}

}  // namespace tarvo::plugin
