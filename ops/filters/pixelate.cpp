#include "pixelate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "channel_sums.h"
#include "error_state.h"
#include "forms.h"
#include "row_clones.h"
#include "rows.h"

namespace {

constexpr const char* kCaller = "TRV_Pixelate";

// Sums down the columns of a chunk. Red and blue share a word: the sums of 256 rows have 16 bits each.
struct ColumnSums {
    static constexpr std::int32_t kMostRows = 256;
    std::array<std::uint32_t, kChunkPixels> red_blue{}, green{};
};

TARVO_ROW_CLONES void add_row(ColumnSums& sums, const PixelColor* colors, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        sums.red_blue[x] += colors[x] & 0xFF00FF;
        sums.green[x] += green_of(colors[x]);
    }
}

// The blocks of some columns of one band of rows: of as many whole blocks as a chunk holds, or of a single wider one.
using BlockSums = std::array<ChannelSums, kChunkPixels>;

// Calls `visit(block, first, end)` for the blocks of a chunk.
template <class Visit>
void for_each_block(std::size_t count, std::int32_t pixelation, Visit visit) {
    const auto size = static_cast<std::size_t>(pixelation);
    for (std::size_t block = 0, first = 0; first < count; ++block, first += size)
        visit(block, first, std::min(first + size, count));
}

void add_columns(BlockSums& blocks, const ColumnSums& sums, std::size_t count, std::int32_t rows,
                 std::int32_t pixelation) {
    for_each_block(count, pixelation, [&](std::size_t block, std::size_t first, std::size_t end) {
        ChannelSums& total = blocks[block];
        for (std::size_t x = first; x < end; ++x) {
            total.red += sums.red_blue[x] >> 16;
            total.green += sums.green[x];
            total.blue += sums.red_blue[x] & 0xFFFF;
        }
        total.count += (end - first) * static_cast<std::size_t>(rows);
    });
}

// The source's colours as the result would hold them, which at another depth are not the same.
void read_as_stored(const TRV_Picture& source, TRV_Picture& result, std::int32_t row, std::int32_t column,
                    std::span<PixelColor> colors) {
    source.GetPixels(row, column, colors, kCaller);
    if (source.depth() == result.depth()) return;
    result.SetPixels(row, column, colors, kCaller);
    result.GetPixels(row, column, colors, kCaller);
}

void sum_blocks(const TRV_Picture& source, TRV_Picture& result, const Region& area, std::int32_t pixelation,
                BlockSums& blocks) {
    constexpr std::int32_t kRowsAhead = 4;
    const std::int32_t last_row = source.height() - 1;
    Chunk colors;
    for_each_chunk(area.left, area.right, [&](std::int32_t column, std::size_t count) {
        for (std::int32_t row = area.top; row <= area.bottom;) {
            const std::int32_t rows = std::min(area.bottom - row + 1, ColumnSums::kMostRows);
            ColumnSums sums;
            for (const std::int32_t end = row + rows; row < end; ++row) {
                read_as_stored(source, result, row, column, {colors.data(), count});
                add_row(sums, colors.data(), count);
                source.Prefetch(std::min(row + kRowsAhead, last_row), column, count);
            }
            add_columns(blocks, sums, count, rows, pixelation);
        }
    });
}

void fill_blocks(TRV_Picture& result, const Region& area, std::int32_t pixelation, const BlockSums& blocks) {
    Chunk colors;
    for_each_chunk(area.left, area.right, [&](std::int32_t column, std::size_t count) {
        for_each_block(count, pixelation, [&](std::size_t block, std::size_t first, std::size_t end) {
            std::fill(colors.data() + first, colors.data() + end, blocks[block].mean_color());
        });
        for (std::int32_t row = area.top; row <= area.bottom; ++row)
            result.SetPixels(row, column, {colors.data(), count}, kCaller);
    });
}

// The last pixel that blocks from `first` on reach, of `size` pixels: none begins on the last pixel of the region, and
// the last one runs on beyond it, as far as the picture does.
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

void PrivPixelate(const TRV_Picture& source, TRV_Picture& result, const Region& region, int pixelation) {
    const Region mosaic = mosaic_of(source, region, pixelation);
    if (mosaic.empty()) return copy_region(source, result, whole_of(source), kCaller);
    copy_around(source, result, mosaic, kCaller);
    const std::int32_t group = std::max(kChunkPixels / pixelation, 1) * pixelation;
    for_each_piece(mosaic.top, mosaic.bottom, pixelation, [&](std::int32_t top, std::int32_t bottom) {
        for_each_piece(mosaic.left, mosaic.right, group, [&](std::int32_t left, std::int32_t right) {
            BlockSums blocks{};
            sum_blocks(source, result, {left, top, right, bottom}, pixelation, blocks);
            fill_blocks(result, {left, top, right, bottom}, pixelation, blocks);
        });
    });
}

REALpictureStruct* TRV_Pixelate(REALpictureStruct* p, REALobjectStruct* rect, int pixelation) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    TRV_Picture source(p, false);
    if (!source.Lock()) return Fail(ErrorCode::source_lock);
    const Region region = SelectRegion(source, rect);
    if (region.empty()) return Fail(ErrorCode::selection);
    if (pixelation < 1) return Fail(ErrorCode::pixelation);
    TRV_Picture result(source.width(), source.height(), result_depth(source), true);
    if (!result.Lock()) return nullptr;  // the one operation that leaves no code here
    PrivPixelate(source, result, region, pixelation);
    return result.picture();
}
