#include "shear_kernels.h"

#include <algorithm>
#include <array>
#include <utility>

#include "bands.h"
#include "forms.h"
#include "pixel_maps.h"
#include "pixel_runs.h"
#include "shear_line.h"
#include "stored_words.h"
#include "transpose.h"

namespace tarvo::plugin {
namespace {

constexpr int kMaskDiffers = 10;

// An image or a mask that is sheared into another.
template <class Edges>
struct Layer {
    const TRV_Picture& source;
    TRV_Picture& result;
    Edges edges;
    const char* caller;

    // Reads a run of the source. Beyond the source, which as a mask may be smaller than its image, it reads the fill.
    void read(std::int32_t row, std::int32_t column, std::span<PixelColor> colors) const {
        const std::int32_t wanted = static_cast<std::int32_t>(colors.size());
        const std::int32_t have = row < source.height() ? std::clamp(source.width() - column, 0, wanted) : 0;
        if (have) source.get_pixels(row, column, colors.first(have), caller);
        std::ranges::fill(colors.subspan(have), edges.fill());
    }
    void prefetch(std::int32_t row, std::int32_t column, std::size_t count) const {
        if (row < source.height()) source.prefetch(row, column, count);
    }
};

struct Range {
    std::int32_t first, end;
};

// --- rows ------------------------------------------------------------------------------------------------------------

// Returns the places of a row that blend two pixels of the layer's source, and no edge.
template <class Edges>
Range inner_places(const ShearedLine& line, const Layer<Edges>& layer, std::int32_t source_row) {
    const std::int64_t end = std::min(line.shift + layer.source.width(), std::int64_t{line.end});
    const std::int32_t first = line.first + 1;
    if (source_row >= layer.source.height() || end <= first) return {line.first, line.first};
    return {first, static_cast<std::int32_t>(end)};
}

template <class Edges>
void shear_row(const ShearPlan& plan, const Layer<Edges>& layer, std::int32_t row) {
    const ShearedLine line = plan.line(row);
    const std::int32_t source_row = plan.source_line(row);
    Chunk colors;
    const auto draw = [&](std::int32_t from, std::int32_t end) {
        for_each_chunk(from, end - 1, [&](std::int32_t column, std::size_t count) {
            const std::span out(colors.data(), count);
            draw_segment(line, layer.edges, column, out, [&](std::int32_t index, std::span<PixelColor> into) {
                layer.read(source_row, index, into);
                return into.data();
            });
            layer.result.set_pixels(row, column, out, layer.caller);
        });
    };
    const Range inner = inner_places(line, layer, source_row);
    draw(0, inner.first);
    if (inner.first < inner.end) {
        const auto index = static_cast<std::int32_t>(inner.first - line.shift);
        map_run(layer.result, row, inner.first, static_cast<std::size_t>(inner.end - inner.first), layer.caller,
                typename Edges::Blend{line.previous_weight}, RunSource{layer.source, source_row, index - 1},
                RunSource{layer.source, source_row, index});
    }
    draw(inner.end, layer.result.width());
}

// Shears the rows of all layers.
template <class... Edges>
void shear_rows(const TRV_Picture& source, const TRV_Picture& result, double shear, int yield,
                const Layer<Edges>&... layers) {
    const ShearPlan plan({source.height(), source.width()}, {result.height(), result.width()}, shear);
    YieldBudget budget(yield);
    in_bands_between_yields(result.height(), result.width(), kSingleRows, budget,
                            [&](std::int32_t first, std::int32_t end) {
                                for (std::int32_t row = first; row < end; ++row) (shear_row(plan, layers, row), ...);
                            });
}

// --- columns ---------------------------------------------------------------------------------------------------------

// Columns are sheared in tiles: some columns of the source become rows in memory, these are sheared side by side, and
// what comes of it is turned back into columns of the result.
constexpr std::int32_t kColumns = 64;
constexpr std::int32_t kRows = 128;
constexpr std::int32_t kBandRows = 4 * kRows;
// The most rows of the source that a tile needs: neighbouring columns are shifted by at most a pixel against each
// other, one more pixel is blended in, and one more may be begun.
constexpr std::int32_t kSourceRows = kRows + kColumns + 2;

// Some neighbouring columns of the result, and the columns of the source that they show.
struct ColumnBlock {
    std::int32_t column, count;               // in the result
    std::int32_t first_content, end_content;  // the columns with content, counted from `column`
    std::int32_t source_column;               // the source's column that the first of them shows
    std::array<ShearedLine, kColumns> lines;

    ColumnBlock(const ShearPlan& plan, std::int32_t first, std::int32_t columns)
        : column(first),
          count(columns),
          first_content(std::clamp(plan.first_line() - first, 0, columns)),
          end_content(std::clamp(plan.end_line() - first, 0, columns)),
          source_column(plan.source_line(first + first_content)) {
        for (std::int32_t i = 0; i < count; ++i) lines[i] = plan.line(column + i);
    }
    std::size_t content() const { return static_cast<std::size_t>(end_content - first_content); }
};

// Returns the rows of the source that the block needs for `count` rows of the result.
Range source_rows(const ColumnBlock& block, std::int32_t row, std::int32_t count, std::int32_t source_height) {
    std::int64_t first = source_height, end = 0;
    for (std::int32_t i = block.first_content; i < block.end_content; ++i) {
        first = std::min(first, row - block.lines[i].shift - 1);
        end = std::max(end, row + count - block.lines[i].shift);
    }
    return {static_cast<std::int32_t>(std::clamp<std::int64_t>(first, 0, source_height)),
            static_cast<std::int32_t>(std::clamp<std::int64_t>(end, 0, source_height))};
}

// Draws layers in bands of the result, each from left to right.
class ColumnShear {
public:
    explicit ColumnShear(const ShearPlan& plan) : plan_(plan) {}

    template <class Edges>
    void draw_band(const Layer<Edges>& layer, const Range& band) {
        const auto block_at = [&](std::int32_t column) {
            return ColumnBlock(plan_, column, std::clamp(layer.result.width() - column, 0, kColumns));
        };
        const auto tile_at = [&](const ColumnBlock& block, std::int32_t row) {
            const std::int32_t count = std::min(kRows, band.end - row);
            return Tile{block, row, count, source_rows(block, row, count, plan_.source_length())};
        };
        for (ColumnBlock block = block_at(0); block.count > 0;) {
            const ColumnBlock next = block_at(block.column + block.count);
            for (std::int32_t row = band.first; row < band.end; row += kRows) {
                const Tile tile = tile_at(block, row);
                if (row + kRows < band.end)
                    draw(layer, tile, tile_at(block, row + kRows), tile.window.end, &writers_[row - band.first]);
                else
                    draw(layer, tile, tile_at(next, band.first), 0, &writers_[row - band.first]);
            }
            block = next;
        }
    }

private:
    // A tile is drawn at once. It is some rows of a block, with the rows of the source that they need.
    struct Tile {
        const ColumnBlock& block;
        std::int32_t row, count;
        Range window;
    };

    // Draws a tile, and meanwhile asks for the next one's rows of the source from `fetched` on, a few at a time: of all
    // at once, processors would forget some.
    template <class Edges>
    void draw(const Layer<Edges>& layer, const Tile& tile, const Tile& next, std::int32_t fetched,
              PieceWriter* writers) {
        constexpr std::int32_t kFetchedAtOnce = 4;
        static_assert(kFetchedAtOnce * kColumns >= kSourceRows);
        const ColumnBlock& block = tile.block;
        read_columns(layer, tile);
        std::int32_t fetch = std::max(fetched, next.window.first);
        for (std::int32_t i = 0; i < block.count; ++i) {
            for (const std::int32_t end = std::min(fetch + kFetchedAtOnce, next.window.end); fetch < end; ++fetch)
                layer.prefetch(fetch, next.block.source_column, next.block.content());
            const PixelColor* const line = columns_[std::max(i - block.first_content, 0)].data();
            const std::span out(drawn_[i].data(), static_cast<std::size_t>(tile.count));
            draw_segment(block.lines[i], layer.edges, tile.row, out,
                         [&](std::int32_t index, std::span<PixelColor>) { return line + (index - tile.window.first); });
        }
        write_rows(layer, tile, writers);
    }

    // Reads the tile's part of the source into `columns_`, as far as the block has content.
    template <class Edges>
    void read_columns(const Layer<Edges>& layer, const Tile& tile) {
        const std::int32_t first = tile.window.first, end = tile.window.end;
        if (first >= end) return;
        const std::int32_t column = tile.block.source_column;
        const std::size_t content = tile.block.content();
        const auto rows = static_cast<std::size_t>(end - first);
        const auto row = [&](std::size_t y) { return first + static_cast<std::int32_t>(y); };
        const auto to = [this](std::size_t x) { return bytes_of(columns_[x].data()); };
        const bool covered =
            end <= layer.source.height() && std::cmp_less_equal(column + content, layer.source.width());
        if (covered && rows_are_words(layer.source, first, end)) {
            const auto from = [&](std::size_t y) { return layer.source.words_at(row(y), column); };
            transpose<Coding::exchanged>(rows, content, from, to);
        } else {
            for (std::size_t y = 0; y < rows; ++y) layer.read(row(y), column, std::span(rows_[y].data(), content));
            const auto from = [this](std::size_t y) { return bytes_of(rows_[y].data()); };
            transpose<Coding::kept>(rows, content, from, to);
        }
    }

    template <class Edges>
    void write_rows(const Layer<Edges>& layer, const Tile& tile, PieceWriter* writers) {
        const auto pixels = static_cast<std::size_t>(tile.block.count), rows = static_cast<std::size_t>(tile.count);
        const std::int32_t column = tile.block.column;
        const auto from = [this](std::size_t x) { return bytes_of(drawn_[x].data()); };
        const auto to = [this](std::size_t y) { return out_[y].bytes(); };
        TRV_Picture& result = layer.result;
        const auto row = [&](std::size_t y) { return tile.row + static_cast<std::int32_t>(y); };
        if (rows_are_words(result, tile.row, tile.row + tile.count)) {
            transpose<Coding::exchanged>(pixels, rows, from, to);
            const bool last = column + tile.block.count == result.width();
            const PieceEnd end = last ? PieceEnd::at_row_end : PieceEnd::inside_row;
            for (std::size_t y = 0; y < rows; ++y)
                writers[y].write(out_[y], pixels, result.words_at(row(y), column),
                                 result.store_mode(WritingOrder::strips), end);
        } else {
            transpose<Coding::kept>(pixels, rows, from, to);
            for (std::size_t y = 0; y < rows; ++y)
                result.set_pixels(row(y), column, {out_[y].words, pixels}, layer.caller);
        }
    }

    static std::uint8_t* bytes_of(PixelColor* colors) { return reinterpret_cast<std::uint8_t*>(colors); }

    const ShearPlan& plan_;

    std::array<std::array<PixelColor, kColumns>, kSourceRows> rows_;
    std::array<std::array<PixelColor, kSourceRows>, kColumns> columns_;
    std::array<std::array<PixelColor, kRows>, kColumns> drawn_;
    std::array<RowPiece<kColumns>, kRows> out_;
    std::array<PieceWriter, kBandRows> writers_;
};

// This is on the stack, about 205 KiB.
static_assert(sizeof(ColumnShear) <= kMostStackBytes);

// Shears the columns of all layers, in bands of the result. Before a band, the host gets control as often as it would
// for the band's share of the columns.
template <class... Edges>
void shear_columns(const TRV_Picture& source, const TRV_Picture& result, double shear, int yield,
                   const Layer<Edges>&... layers) {
    const ShearPlan plan({source.width(), source.height()}, {result.width(), result.height()}, shear);
    ColumnShear columns(plan);
    YieldBudget budget(yield);
    std::int64_t passed = 0;
    for (std::int32_t row = 0; row < result.height(); row += kBandRows) {
        const std::int32_t end = std::min(row + kBandRows, result.height());
        for (; passed < std::int64_t{result.width()} * end / result.height(); ++passed)
            budget.before_row(result.height());
        (columns.draw_band(layers, {row, end}), ...);
    }
}

FrameEdges frame_of(int frame_color) { return {static_cast<PixelColor>(frame_color) & 0xFFFFFF}; }

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

int Priv_ShearHorizontal(const TRV_Picture& source, TRV_Picture& result, const TRV_Picture& source_mask,
                         TRV_Picture& result_mask, double shear, int yield) {
    if (!same_size(result, result_mask)) return kMaskDiffers;
    shear_rows(source, result, shear, yield, Layer<MaskedImageEdges>{source, result, {}, "Priv_ShearHorizontal"},
               Layer<MaskEdges>{source_mask, result_mask, {}, "Priv_ShearHorizontal mask"});
    return 0;
}

int Priv_ShearVertical(const TRV_Picture& source, TRV_Picture& result, const TRV_Picture& source_mask,
                       TRV_Picture& result_mask, double shear, int yield) {
    if (!same_size(result, result_mask)) return kMaskDiffers;
    shear_columns(source, result, shear, yield, Layer<MaskedImageEdges>{source, result, {}, "Priv_ShearVertical"},
                  Layer<MaskEdges>{source_mask, result_mask, {}, "Priv_ShearVertical mask"});
    return 0;
}

void Priv_ShearHorizontal(const TRV_Picture& source, TRV_Picture& result, double shear, int frame_color, int yield) {
    shear_rows(source, result, shear, yield,
               Layer<FrameEdges>{source, result, frame_of(frame_color), "Priv_ShearHorizontal frame"});
}

void Priv_ShearVertical(const TRV_Picture& source, TRV_Picture& result, double shear, int frame_color, int yield) {
    shear_columns(source, result, shear, yield,
                  Layer<FrameEdges>{source, result, frame_of(frame_color), "Priv_ShearVertical frame"});
}
