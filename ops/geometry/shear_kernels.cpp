#include "shear_kernels.h"

#include <algorithm>
#include <array>

#include "forms.h"
#include "shear_line.h"
#include "transpose.h"

namespace {

constexpr int kMaskDiffers = 10;

// One picture that is sheared into another.
template <class Edges>
struct Layer {
    const TRV_Picture& source;
    TRV_Picture& result;
    Edges edges;
    const char* caller;

    // A run of the source. Where it reaches beyond (a mask may be smaller than its image) there is what surrounds it.
    void read(std::int32_t row, std::int32_t column, std::span<PixelColor> colors) const {
        const std::int32_t wanted = static_cast<std::int32_t>(colors.size());
        const std::int32_t have = row < source.height() ? std::clamp(source.width() - column, 0, wanted) : 0;
        if (have) source.GetPixels(row, column, colors.first(have), caller);
        std::ranges::fill(colors.subspan(have), edges.fill());
    }
    void prefetch(std::int32_t row, std::int32_t column, std::size_t count) const {
        if (row < source.height()) source.Prefetch(row, column, count);
    }
};

// --- rows ------------------------------------------------------------------------------------------------------------

template <class Edges>
void shear_row(const ShearPlan& plan, const Layer<Edges>& layer, std::int32_t row) {
    const ShearedLine line = plan.line(row);
    Chunk colors;
    for_each_chunk(0, layer.result.width() - 1, [&](std::int32_t column, std::size_t count) {
        const std::span out(colors.data(), count);
        draw_segment(line, layer.edges, column, out, [&](std::int32_t index, std::span<PixelColor> into) {
            layer.read(plan.source_line(row), index, into);
            return into.data();
        });
        layer.result.SetPixels(row, column, out, layer.caller);
    });
}

// `shear(layer)` for the layers, one or two.
template <class... Edges>
void shear_rows(const TRV_Picture& source, const TRV_Picture& result, double shear, int yield,
                const Layer<Edges>&... layers) {
    const ShearPlan plan({source.height(), source.width()}, {result.height(), result.width()}, shear);
    YieldBudget budget(yield);
    for (std::int32_t row = 0; row < result.height(); ++row) {
        budget.before_row(result.width());
        (shear_row(plan, layers, row), ...);
    }
}

// --- columns ---------------------------------------------------------------------------------------------------------

// Columns are sheared side by side as rows of a small block: a result's piece, and the piece of the source that goes
// into it.
constexpr std::int32_t kColumns = 64;
constexpr std::int32_t kRows = 128;
// Neighbouring columns are at most a pixel apart; one more pixel is blended in, and one may be begun.
constexpr std::int32_t kSourceRows = kRows + kColumns + 2;

// The columns of a block.
struct ColumnBlock {
    std::int32_t column, count;               // of the result
    std::int32_t first_content, end_content;  // those with content, counted from `column`
    std::int32_t source_column;               // of the first one with content
    std::array<ShearedLine, kColumns> lines;

    ColumnBlock(const ShearPlan& plan, std::int32_t first, std::int32_t columns)
        : column(first),
          count(columns),
          first_content(std::clamp(plan.first_line() - first, 0, columns)),
          end_content(std::clamp(plan.end_line() - first, 0, columns)),
          source_column(plan.source_line(first + first_content)) {
        for (std::int32_t i = 0; i < count; ++i) lines[i] = plan.line(column + i);
    }
};

struct RowRange {
    std::int32_t first, end;
};

// The source rows that the block needs for `count` result rows.
RowRange source_rows(const ColumnBlock& block, std::int32_t row, std::int32_t count, std::int32_t source_height) {
    std::int64_t first = source_height, end = 0;
    for (std::int32_t i = block.first_content; i < block.end_content; ++i) {
        first = std::min(first, row - block.lines[i].shift - 1);
        end = std::max(end, row + count - block.lines[i].shift);
    }
    return {static_cast<std::int32_t>(std::clamp<std::int64_t>(first, 0, source_height)),
            static_cast<std::int32_t>(std::clamp<std::int64_t>(end, 0, source_height))};
}

template <class Edges>
void shear_block(const Layer<Edges>& layer, std::int32_t source_height, const ColumnBlock& block, std::int32_t row,
                 std::int32_t count) {
    std::array<PixelColor, std::size_t{kSourceRows} * kColumns> rows, columns;
    const RowRange window = source_rows(block, row, count, source_height);
    const std::int32_t content = block.end_content - block.first_content;
    for (std::int32_t y = window.first; y < window.end; ++y) {
        layer.read(y, block.source_column, {&rows[std::size_t{kColumns} * (y - window.first)], std::size_t(content)});
        layer.prefetch(y + kRows, block.source_column, std::size_t(content));
    }
    if (window.first < window.end)
        transpose({rows.data(), kColumns}, window.end - window.first, content, {columns.data(), kSourceRows});

    std::array<PixelColor, std::size_t{kRows} * kColumns> drawn_columns, drawn_rows;
    for (std::int32_t i = 0; i < block.count; ++i) {
        const PixelColor* const line = &columns[std::size_t{kSourceRows} * std::max(i - block.first_content, 0)];
        const std::span out(&drawn_columns[std::size_t{kRows} * i], count);
        draw_segment(block.lines[i], layer.edges, row, out,
                     [&](std::int32_t index, std::span<PixelColor>) { return line + (index - window.first); });
    }
    transpose({drawn_columns.data(), kRows}, block.count, count, {drawn_rows.data(), kColumns});
    for (std::int32_t y = 0; y < count; ++y)
        layer.result.SetPixels(row + y, block.column,
                               {&drawn_rows[std::size_t{kColumns} * y], std::size_t(block.count)}, layer.caller);
}

template <class Edges>
void shear_column_block(const Layer<Edges>& layer, std::int32_t source_height, const ColumnBlock& block) {
    for (std::int32_t row = 0; row < layer.result.height(); row += kRows)
        shear_block(layer, source_height, block, row, std::min(kRows, layer.result.height() - row));
}

template <class... Edges>
void shear_columns(const TRV_Picture& source, const TRV_Picture& result, double shear, int yield,
                   const Layer<Edges>&... layers) {
    const ShearPlan plan({source.width(), source.height()}, {result.width(), result.height()}, shear);
    YieldBudget budget(yield);
    for (std::int32_t column = 0; column < result.width(); column += kColumns) {
        const ColumnBlock block(plan, column, std::min(kColumns, result.width() - column));
        for (std::int32_t i = 0; i < block.count; ++i) budget.before_row(result.height());
        (shear_column_block(layers, source.height(), block), ...);
    }
}

FrameEdges frame_of(int frame_color) { return {static_cast<PixelColor>(frame_color) & 0xFFFFFF}; }

}  // namespace

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
