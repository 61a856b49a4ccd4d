#include "stretch.h"

#include <algorithm>
#include <array>

#include "area_average.h"
#include "forms.h"
#include "pixel_runs.h"
#include "transpose.h"

namespace {

constexpr std::int32_t kMaskDepth = 32;  // of the mask's intermediate picture

// Below a byte a pixel, the address moves on with the pixels but bit 0 is read at each: a byte's first pixel stands for all
// that it holds.
void read_run(const TRV_Picture& source, std::int32_t row, std::int32_t column, std::span<PixelColor> colors,
              const char* caller) {
    const std::int32_t bits = source.bitsPerPixel();
    const std::uint8_t* const start = source.RowStart(row);
    if (bits == 0 || !start) return source.GetPixels(row, column, colors, caller);
    for (PixelColor& color : colors) {
        const auto byte = std::int64_t{column++} * bits / 8;
        color = static_cast<PixelColor>(source.GetPixel(start + byte, 0, source.depth(), caller));
    }
}

// --- along rows: rows side by side, a tile's columns as lines --------------------------------------------------------

constexpr std::int32_t kTile = 64;

class RowsAsLanes {
public:
    RowsAsLanes(const TRV_Picture& source, TRV_Picture& destination, std::int32_t row, std::int32_t count)
        : source_(source), destination_(destination), row_(row), count_(count) {}

    const PixelColor* read(std::int32_t column) {
        if (column % kTile == 0) load(column, std::min(kTile, source_.width() - column));
        return tile_line(sources_, column);
    }
    PixelColor* out(std::int32_t column) { return tile_line(results_, column); }
    void done(std::int32_t column) {
        if (column % kTile == kTile - 1 || column == destination_.width() - 1) store(column / kTile * kTile, column + 1);
    }

private:
    static constexpr const char* kCaller = "Priv_StetchHorizontal";
    using Tile = std::array<PixelColor, std::size_t{kTile} * kTile>;
    static PixelColor* tile_line(Tile& tile, std::int32_t line) { return &tile[std::size_t{kTile} * (line % kTile)]; }

    void load(std::int32_t column, std::int32_t columns) {
        const std::int32_t later = column + columns, ahead = std::min(kTile, source_.width() - later);
        for (std::int32_t i = 0; i < count_; ++i) {
            read_run(source_, row_ + i, column, {tile_line(rows_, i), std::size_t(columns)}, kCaller);
            source_.Prefetch(row_ + i, later, std::size_t(ahead));
        }
        transpose({rows_.data(), kTile}, count_, columns, {sources_.data(), kTile});
    }
    void store(std::int32_t column, std::int32_t end) {
        const std::int32_t columns = end - column;
        transpose({results_.data(), kTile}, columns, count_, {rows_.data(), kTile});
        for (std::int32_t i = 0; i < count_; ++i)
            destination_.SetPixelBits(row_ + i, column, {tile_line(rows_, i), std::size_t(columns)}, kCaller);
    }

    const TRV_Picture& source_;
    TRV_Picture& destination_;
    std::int32_t row_, count_;
    Tile rows_, sources_, results_;
};

// --- along columns: a run of each row is a line ----------------------------------------------------------------------

using WriteRun = void(TRV_Picture& destination, std::int32_t row, std::int32_t column, std::span<PixelColor> colors,
                      const char* caller);

void write_colors(TRV_Picture& destination, std::int32_t row, std::int32_t column, std::span<PixelColor> colors,
                  const char* caller) {
    destination.SetPixelBits(row, column, colors, caller);
}

// As `read_run` reads: always bit 0.
void write_red_as_grey(TRV_Picture& destination, std::int32_t row, std::int32_t column, std::span<PixelColor> colors,
                       const char* caller) {
    for (PixelColor& color : colors) color = grey(red_of(color));
    const std::int32_t bits = destination.bitsPerPixel();
    std::uint8_t* const start = destination.RowStart(row);
    if (bits == 0 || !start) return destination.SetPixels(row, column, colors, caller);
    for (const PixelColor color : colors) {
        const auto byte = std::int64_t{column++} * bits / 8;
        destination.SetPixel(start + byte, 0, color, destination.depth(), caller);
    }
}

class ColumnsAsLanes {
public:
    ColumnsAsLanes(const TRV_Picture& source, TRV_Picture& destination, std::int32_t column, std::size_t count,
                   WriteRun& write)
        : source_(source), destination_(destination), column_(column), count_(count), write_(write) {}

    const PixelColor* read(std::int32_t row) {
        if (row + 1 < source_.height()) source_.Prefetch(row + 1, column_, count_);
        read_run(source_, row, column_, {line_.data(), count_}, kCaller);
        return line_.data();
    }
    PixelColor* out(std::int32_t) { return result_.data(); }
    void done(std::int32_t row) { write_(destination_, row, column_, {result_.data(), count_}, kCaller); }

private:
    static constexpr const char* kCaller = "Priv_StetchVertical";

    const TRV_Picture& source_;
    TRV_Picture& destination_;
    std::int32_t column_;
    std::size_t count_;
    WriteRun& write_;
    Chunk line_, result_;
};

void stretch_columns(const TRV_Picture& source, TRV_Picture& destination, int yield, WriteRun& write) {
    const AxisWeights weights(source.height(), destination.height());
    YieldBudget budget(yield);
    const std::int32_t width = std::min(source.width(), destination.width());
    for_each_chunk(0, width - 1, [&](std::int32_t column, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) budget.before_row(destination.height());
        ColumnsAsLanes lines(source, destination, column, count, write);
        average_lines(weights, count, lines);
    });
}

// --- both forms ------------------------------------------------------------------------------------------------------

// Every check runs; of several that fail, the last one's code stays.
bool arguments_pass(const void* p, int width, int height) {
    ClearError();
    bool pass = true;
    const auto check = [&pass](bool fine, ErrorCode code) {
        if (fine) return;
        SetError(code);
        pass = false;
    };
    check(p != nullptr, ErrorCode::source_nil);
    check(width >= 1, ErrorCode::stretch_width);
    check(height >= 1, ErrorCode::stretch_height);
    return pass;
}

template <class Form>
typename Form::Handle stretch(Form form, typename Form::Handle p, int width, int height, int yield) {
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return Fail(ErrorCode::source_lock);
    const bool has_mask = source.HasMask();
    return form.produce(width, height, source.depth(), has_mask, [&](TRV_Picture& result) {
        const auto path = has_mask ? PrivStretch_NonVector_Mask : PrivStretch_NonVector_NoMask;
        path(source, result, yield);
    });
}

}  // namespace

void Priv_StetchHorizontal(const TRV_Picture& source, TRV_Picture& destination, int yield) {
    const AxisWeights weights(source.width(), destination.width());
    YieldBudget budget(yield);
    const std::int32_t height = std::min(source.height(), destination.height());
    for (std::int32_t row = 0; row < height; row += kTile) {
        const std::int32_t count = std::min(kTile, height - row);
        for (std::int32_t i = 0; i < count; ++i) budget.before_row(destination.width());
        RowsAsLanes lines(source, destination, row, count);
        average_lines(weights, count, lines);
    }
}

void Priv_StetchVertical(const TRV_Picture& source, TRV_Picture& destination, int yield) {
    stretch_columns(source, destination, yield, write_colors);
}

void Priv_StetchVerticalMask(const TRV_Picture& source, TRV_Picture& destination) {
    stretch_columns(source, destination, 0, write_red_as_grey);
}

void PrivStretch_NonVector_NoMask(TRV_Picture& source, TRV_Picture& result, int yield) {
    TRV_Picture intermediate(result.width(), source.height(), result_depth(result), false);
    if (!intermediate.Lock()) return SetError(ErrorCode::intermediate_lock);
    Priv_StetchHorizontal(source, intermediate, yield);
    Priv_StetchVertical(intermediate, result, yield);
}

void PrivStretch_NonVector_Mask(TRV_Picture& source, TRV_Picture& result, int yield) {
    TRV_Picture source_mask(source, true);
    TRV_Picture result_mask(result, true);
    if (!source_mask.Lock() || !result_mask.Lock()) return SetError(ErrorCode::source_lock);
    TRV_Picture intermediate(result.width(), source.height(), result_depth(result), false);
    TRV_Picture intermediate_mask(result.width(), source.height(), kMaskDepth, false);
    if (!intermediate.Lock() || !intermediate_mask.Lock()) return SetError(ErrorCode::intermediate_lock);
    Priv_StetchHorizontal(source, intermediate, yield);
    Priv_StetchHorizontal(source_mask, intermediate_mask, yield);
    Priv_StetchVertical(intermediate, result, yield);
    Priv_StetchVertical(intermediate_mask, result_mask, yield);
}

// A result that cannot be made leaves no code.
REALpictureStruct* PrivStretch_NonVector(REALpictureStruct* p, int width, int height, int yield) {
    return stretch(PictureForm{.refusal = ErrorCode::none}, p, width, height, yield);
}

REALobjectStruct* PrivStretch_NonVector(REALobjectStruct* cp, int width, int height, int yield, bool as_picture) {
    return stretch(ClientForm{as_picture}, cp, width, height, yield);
}

REALpictureStruct* TRV_Stretch(REALpictureStruct* p, int width, int height, int yield) {
    return arguments_pass(p, width, height) ? PrivStretch_NonVector(p, width, height, yield) : nullptr;
}

REALobjectStruct* TRV_ClientPicture_Stretch(REALobjectStruct* cp, int width, int height, int yield, bool as_picture) {
    return arguments_pass(cp, width, height) ? PrivStretch_NonVector(cp, width, height, yield, as_picture) : nullptr;
}
