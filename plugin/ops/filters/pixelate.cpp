#include "pixelate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "channel_sums.h"
#include "error_state.h"
#include "forms.h"
#include "pixel_runs.h"
#include "row_clones.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

constexpr const char* kCaller = "TRV_Pixelate";

// Rows are read and written in long runs, where they can be as a whole: memory is fastest so.
constexpr std::int32_t kLongRunPixels = 8 * kChunkPixels;
constexpr std::int32_t kMostBlocks = 1024;

// Sums down the columns of a run. The sums of 256 rows fit in 16 bits, so that red and blue share a word.
struct ColumnSums {
    static constexpr std::int32_t kMostRows = 256;
    std::array<std::uint32_t, kLongRunPixels> red_blue{}, green{};
};

// Rows are added several at a time: that reads and writes the sums less often.
constexpr std::int32_t kRowsAtOnce = 4;

TARVO_ROW_CLONES void add_colors(const PixelColor* colors, std::uint32_t* __restrict red_blue,
                                 std::uint32_t* __restrict green, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        red_blue[x] += colors[x] & 0xFF00FF;
        green[x] += green_of(colors[x]);
    }
}

// Adds 32-bit pixels as they are stored.
TARVO_ROW_CLONES void add_four_rows(const std::uint8_t* __restrict a, const std::uint8_t* __restrict b,
                                    const std::uint8_t* __restrict c, const std::uint8_t* __restrict d,
                                    std::uint32_t* __restrict red_blue, std::uint32_t* __restrict green,
                                    std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        const PixelColor colors[] = {XRgb32::load(a + x * XRgb32::kBytes), XRgb32::load(b + x * XRgb32::kBytes),
                                     XRgb32::load(c + x * XRgb32::kBytes), XRgb32::load(d + x * XRgb32::kBytes)};
        for (const PixelColor color : colors) {
            red_blue[x] += color & 0xFF00FF;
            green[x] += green_of(color);
        }
    }
}

// The sums of neighbouring blocks in one band of rows: of as many as a run holds, or of a single one that is wider.
using BlockSums = std::array<ChannelSums, kMostBlocks>;
static_assert(sizeof(BlockSums) + sizeof(ColumnSums) <= kMostStackBytes);  // 64 KiB on the stack

std::int32_t columns_of_blocks(std::int32_t pixelation) {
    return std::clamp(kLongRunPixels / pixelation, 1, kMostBlocks) * pixelation;
}

// Calls `visit(block, first, end)` for the blocks of a run.
template <class Visit>
void for_each_block(std::size_t count, std::int32_t pixelation, Visit visit) {
    const auto size = static_cast<std::size_t>(pixelation);
    for (std::size_t block = 0, first = 0; first < count; ++block, first += size)
        visit(block, first, std::min(first + size, count));
}

TARVO_ROW_CLONES void add_columns(BlockSums& blocks, const ColumnSums& sums, std::size_t count, std::int32_t rows,
                                  std::int32_t pixelation) {
    for_each_block(count, pixelation, [&](std::size_t block, std::size_t first, std::size_t end) {
        std::uint32_t red = 0, green = 0, blue = 0;
        for (std::size_t x = first; x < end; ++x) {
            red += sums.red_blue[x] >> 16;
            green += sums.green[x];
            blue += sums.red_blue[x] & 0xFFFF;
        }
        ChannelSums& total = blocks[block];
        total.red += red;
        total.green += green;
        total.blue += blue;
        total.count += (end - first) * static_cast<std::size_t>(rows);
    });
}
static_assert(std::uint64_t{kLongRunPixels} * ColumnSums::kMostRows * 255 <= 0xFFFFFFFF);  // the sums fit in 32 bits

// Reads the source's colours as the result would hold them. At another depth they are not the same.
void read_as_stored(const TRV_Picture& source, TRV_Picture& result, std::int32_t row, std::int32_t column,
                    std::span<PixelColor> colors) {
    source.get_pixels(row, column, colors, kCaller);
    if (source.depth() == result.depth()) return;
    result.set_pixels(row, column, colors, kCaller);
    result.get_pixels(row, column, colors, kCaller);
}

void add_row(const TRV_Picture& source, TRV_Picture& result, std::int32_t row, std::int32_t left, std::int32_t right,
             ColumnSums& sums) {
    Chunk colors;
    for_each_chunk(left, right, [&](std::int32_t column, std::size_t count) {
        read_as_stored(source, result, row, column, {colors.data(), count});
        const std::int32_t at = column - left;
        add_colors(colors.data(), sums.red_blue.data() + at, sums.green.data() + at, count);
    });
}

void add_rows(const TRV_Picture& source, TRV_Picture& result, const Region& area, ColumnSums& sums) {
    std::int32_t row = area.top;
    for (; result.depth() == 32 && row + kRowsAtOnce - 1 <= area.bottom; row += kRowsAtOnce) {
        const auto words = [&](std::int32_t k) { return source.words_at(row + k, area.left); };
        if (!words(0) || !words(1) || !words(2) || !words(3)) break;
        add_four_rows(words(0), words(1), words(2), words(3), sums.red_blue.data(), sums.green.data(),
                      static_cast<std::size_t>(area.right - area.left + 1));
    }
    for (; row <= area.bottom; ++row) add_row(source, result, row, area.left, area.right, sums);
}

void sum_blocks(const TRV_Picture& source, TRV_Picture& result, const Region& area, std::int32_t pixelation,
                BlockSums& blocks) {
    for_each_piece(area.left, area.right, kLongRunPixels, [&](std::int32_t left, std::int32_t right) {
        for_each_piece(area.top, area.bottom, ColumnSums::kMostRows, [&](std::int32_t top, std::int32_t bottom) {
            ColumnSums sums;
            add_rows(source, result, {left, top, right, bottom}, sums);
            add_columns(blocks, sums, static_cast<std::size_t>(right - left + 1), bottom - top + 1, pixelation);
        });
    });
}

void fill_blocks(TRV_Picture& result, const Region& area, std::int32_t pixelation, const BlockSums& blocks) {
    std::array<PixelColor, kLongRunPixels> colors;
    for_each_piece(area.left, area.right, kLongRunPixels, [&](std::int32_t left, std::int32_t right) {
        const std::span run(colors.data(), static_cast<std::size_t>(right - left + 1));
        for_each_block(run.size(), pixelation, [&](std::size_t block, std::size_t first, std::size_t end) {
            std::fill(run.data() + first, run.data() + end, blocks[block].mean_color());
        });
        for (std::int32_t row = area.top; row <= area.bottom; ++row) result.set_pixels(row, left, run, kCaller);
    });
}

// Returns the last row or column that blocks from `first` on reach. No block begins at `last`, where the region ends,
// and the last block goes on beyond it as far as the picture, which has `size` rows or columns.
std::int32_t end_of_blocks(std::int32_t first, std::int32_t last, std::int32_t size, std::int32_t pixelation) {
    if (first >= last) return first - 1;
    const std::int64_t blocks = (std::int64_t{last} - first - 1) / pixelation + 1;
    return static_cast<std::int32_t>(std::min<std::int64_t>(first + blocks * pixelation, size) - 1);
}

Region mosaic_of(const TRV_Picture& picture, const Region& region, std::int32_t pixelation) {
    return {region.left, region.top, end_of_blocks(region.left, region.right, picture.width(), pixelation),
            end_of_blocks(region.top, region.bottom, picture.height(), pixelation)};
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivPixelate(const TRV_Picture& source, TRV_Picture& result, const Region& region, int pixelation) {
    const Region mosaic = mosaic_of(source, region, pixelation);
    if (mosaic.empty()) return copy_region(source, result, whole_of(source), kCaller);
    copy_around(source, result, mosaic, kCaller);
    const std::int32_t columns = columns_of_blocks(pixelation);
    for_each_piece(mosaic.top, mosaic.bottom, pixelation, [&](std::int32_t top, std::int32_t bottom) {
        for_each_piece(mosaic.left, mosaic.right, columns, [&](std::int32_t left, std::int32_t right) {
            BlockSums blocks{};
            sum_blocks(source, result, {left, top, right, bottom}, pixelation, blocks);
            fill_blocks(result, {left, top, right, bottom}, pixelation, blocks);
        });
    });
}

REALpictureStruct* TRV_Pixelate(REALpictureStruct* p, REALobjectStruct* rect, int pixelation) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    const Region region = select_region(source, rect);
    if (region.empty()) return fail(ErrorCode::selection);
    if (pixelation < 1) return fail(ErrorCode::pixelation);
    return kSilentForm.produce(source.width(), source.height(), result_depth(source), ResultMask::none,
                               [&](TRV_Picture& result) { PrivPixelate(source, result, region, pixelation); });
}
