#include "stretch.h"

#include <algorithm>
#include <array>
#include <utility>

#include "area_average.h"
#include "forms.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

constexpr std::int32_t kMaskDepth = 32;  // the depth of a mask's intermediate picture

// Below a byte a pixel, the first pixel of each byte is read for all that are in it: the address moves on, but the bit
// is always 0.
void read_run(const TRV_Picture& source, std::int32_t row, std::int32_t column, std::span<PixelColor> colors,
              const char* caller) {
    const std::int32_t bits = source.bitsPerPixel();
    const std::uint8_t* const start = source.row_start(row);
    if (bits == 0 || !start) return source.get_pixels(row, column, colors, caller);
    for (PixelColor& color : colors) {
        const auto byte = std::int64_t{column++} * bits / 8;
        color = static_cast<PixelColor>(source.GetPixel(start + byte, 0, source.depth(), caller));
    }
}

// Calls `visit(column, count)` for the runs of a row that is `width` pixels long.
template <class Visit>
void for_each_run(std::int32_t width, std::int32_t run, Visit visit) {
    for_each_piece(0, width - 1, run, [&](std::int32_t first, std::int32_t last) {
        visit(first, static_cast<std::size_t>(last - first + 1));
    });
}

constexpr const char* kRowsCaller = "Priv_StetchHorizontal";
constexpr const char* kColumnsCaller = "Priv_StetchVertical";

// Asks for the memory of a run some rows ahead. Whole rows follow each other in memory, and processors read ahead
// themselves.
void prefetch_run(const TRV_Picture& source, std::int32_t row, std::int32_t column, std::size_t count) {
    constexpr std::int32_t kRowsAhead = 4;
    if (std::cmp_equal(count, source.width())) return;
    if (row + kRowsAhead < source.height()) source.prefetch(row + kRowsAhead, column, count);
}

void average_row(RowAverage& across, const TRV_Picture& source, std::int32_t row, PixelColor* out) {
    prefetch_run(source, row, across.source_column(), across.source_count());
    const auto read = [&](std::int32_t column, std::span<PixelColor> colors) {
        read_run(source, row, column, colors, kRowsCaller);
    };
    across.average(read, out);
}

using WriteRun = void(TRV_Picture& destination, std::int32_t row, std::int32_t column,
                      std::span<const PixelColor> colors, const char* caller);

void write_colors(TRV_Picture& destination, std::int32_t row, std::int32_t column, std::span<const PixelColor> colors,
                  const char* caller) {
    destination.set_pixel_bits(row, column, colors, caller);
}

// Below a byte a pixel, bit 0 is written of every pixel's byte, as read_run reads.
void write_red_as_grey(TRV_Picture& destination, std::int32_t row, std::int32_t column,
                       std::span<const PixelColor> colors, const char* caller) {
    RunColors levels;
    std::ranges::transform(colors, levels.begin(), [](PixelColor color) { return grey(red_of(color)); });
    const std::int32_t bits = destination.bitsPerPixel();
    std::uint8_t* const start = destination.row_start(row);
    if (bits == 0 || !start) return destination.set_pixels(row, column, {levels.data(), colors.size()}, caller);
    for (std::size_t x = 0; x < colors.size(); ++x) {
        const auto byte = (std::int64_t{column} + static_cast<std::int64_t>(x)) * bits / 8;
        destination.SetPixel(start + byte, 0, levels[x], destination.depth(), caller);
    }
}

// Writes black columns, for a result that covers nothing of the source.
void blacken(TRV_Picture& destination, std::int32_t column, std::size_t count, WriteRun& write) {
    for (std::int32_t row = 0; row < destination.height(); ++row) {
        RunColors black{};
        write(destination, row, column, {black.data(), count}, kColumnsCaller);
    }
}

// Makes the columns from `column` on of the destination from those of the source. `read(row, line)` reads these, row by
// row.
template <class Read>
void average_columns(const AxisWeights& weights, TRV_Picture& destination, std::int32_t column, std::size_t count,
                     WriteRun& write, Read read) {
    if (!weights.cover()) return blacken(destination, column, count, write);
    ColumnAverage down(weights, count);
    for (std::int32_t row = 0; row < weights.source_lines; ++row) {
        read(row, down.next());
        down.take([&](std::int32_t result_row, const PixelColor* colors) {
            write(destination, result_row, column, {colors, count}, kColumnsCaller);
        });
    }
}

void stretch_columns(const TRV_Picture& source, TRV_Picture& destination, int yield, WriteRun& write) {
    const AxisWeights weights(source.height(), destination.height());
    YieldBudget budget(yield);
    const std::int32_t width = std::min(source.width(), destination.width());
    for_each_run(width, run_pixels(width), [&](std::int32_t column, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) budget.before_row(destination.height());
        average_columns(weights, destination, column, count, write, [&](std::int32_t row, PixelColor* line) {
            prefetch_run(source, row, column, count);
            read_run(source, row, column, {line, count}, kColumnsCaller);
            for (std::size_t x = 0; x < count; ++x) line[x] &= 0xFFFFFF;
        });
    });
}

// --- along both at once ----------------------------------------------------------------------------------------------

// Gives what the two passes would, one after the other by way of an intermediate picture that keeps every bit. The host
// gets control as often.
void stretch_both(const TRV_Picture& source, TRV_Picture& result, int yield) {
    // These are on the stack together, about 208 KiB.
    static_assert(sizeof(RowAverage) + sizeof(ColumnAverage) + sizeof(RunColors) <= kMostStackBytes);
    const AxisWeights across(source.width(), result.width()), down(source.height(), result.height());
    YieldBudget row_budget(yield), column_budget(yield);
    for_each_run(result.width(), RowAverage::run_pixels(across), [&](std::int32_t column, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) column_budget.before_row(result.height());
        RowAverage row_average(across, column, count);
        average_columns(down, result, column, count, write_colors, [&](std::int32_t row, PixelColor* line) {
            if (column == 0) row_budget.before_row(result.width());
            average_row(row_average, source, row, line);
        });
    });
}

// Stretches by way of an intermediate picture. Of a small depth, or of another size than was asked for, it changes the
// result. Otherwise it need only exist.
void stretch_by_way_of(TRV_Picture& intermediate, const TRV_Picture& source, TRV_Picture& result, int yield) {
    const bool keeps_colors = intermediate.depth() == 24 || intermediate.depth() == 32;
    const bool fits = intermediate.width() == result.width() && intermediate.height() == source.height();
    if (keeps_colors && fits) return stretch_both(source, result, yield);
    Priv_StetchHorizontal(source, intermediate, yield);
    Priv_StetchVertical(intermediate, result, yield);
}

// --- both forms ------------------------------------------------------------------------------------------------------

// All checks run. When several fail, the code of the last one stays.
bool arguments_pass(const void* p, int width, int height) {
    clear_error();
    bool pass = true;
    const auto check = [&pass](bool fine, ErrorCode code) {
        if (fine) return;
        set_error(code);
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
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    const bool has_mask = source.HasMask();
    const ResultMask mask = has_mask ? ResultMask::wanted : ResultMask::none;
    return form.produce(width, height, source.depth(), mask, [&](TRV_Picture& result) {
        const auto path = has_mask ? PrivStretch_NonVector_Mask : PrivStretch_NonVector_NoMask;
        path(source, result, yield);
    });
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void Priv_StetchHorizontal(const TRV_Picture& source, TRV_Picture& destination, int yield) {
    const AxisWeights weights(source.width(), destination.width());
    YieldBudget budget(yield);
    const std::int32_t height = std::min(source.height(), destination.height());
    for_each_run(destination.width(), RowAverage::run_pixels(weights), [&](std::int32_t column, std::size_t count) {
        RowAverage across(weights, column, count);
        RunColors line;
        for (std::int32_t row = 0; row < height; ++row) {
            if (column == 0) budget.before_row(destination.width());
            average_row(across, source, row, line.data());
            destination.set_pixel_bits(row, column, {line.data(), count}, kRowsCaller);
        }
    });
}

void Priv_StetchVertical(const TRV_Picture& source, TRV_Picture& destination, int yield) {
    stretch_columns(source, destination, yield, write_colors);
}

void Priv_StetchVerticalMask(const TRV_Picture& source, TRV_Picture& destination) {
    stretch_columns(source, destination, 0, write_red_as_grey);
}

void PrivStretch_NonVector_NoMask(TRV_Picture& source, TRV_Picture& result, int yield) {
    TRV_Picture intermediate(result.width(), source.height(), result_depth(result), kTemporary);
    if (!intermediate.Lock()) return set_error(ErrorCode::intermediate_lock);
    stretch_by_way_of(intermediate, source, result, yield);
}

void PrivStretch_NonVector_Mask(TRV_Picture& source, TRV_Picture& result, int yield) {
    TRV_Picture source_mask(source, kAsMask);
    TRV_Picture result_mask(result, kAsMask);
    if (!source_mask.Lock() || !result_mask.Lock()) return set_error(ErrorCode::source_lock);
    TRV_Picture intermediate(result.width(), source.height(), result_depth(result), kTemporary);
    TRV_Picture intermediate_mask(result.width(), source.height(), kMaskDepth, kTemporary);
    if (!intermediate.Lock() || !intermediate_mask.Lock()) return set_error(ErrorCode::intermediate_lock);
    stretch_by_way_of(intermediate, source, result, yield);
    stretch_by_way_of(intermediate_mask, source_mask, result_mask, yield);
}

REALpictureStruct* PrivStretch_NonVector(REALpictureStruct* p, int width, int height, int yield) {
    return stretch(kSilentForm, p, width, height, yield);
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
