#include "trim.h"

#include <algorithm>
#include <cstdint>

#include "adjustment.h"
#include "forms.h"
#include "pixel_runs.h"

namespace tarvo::plugin {
namespace {

constexpr bool kInOwnMemory = false;  // of a client picture that a program does not want as a host picture

constexpr const char* kCaller = "TRV_Trim";
constexpr PixelColor kTransparent = 0xFFFFFF;

TRV_Rectangle_Data trim_area(const TRV_Picture& source, REALobjectStruct* trim_rect) {
    const TRV_Rectangle_Data* const area = TRV_Rectangle_GetData(trim_rect);
    return area ? *area : TRV_Rectangle_Data{0, 0, source.width(), source.height()};
}

// An area whose right or bottom edge wraps is none, and neither is one with a side below 1.
bool is_area(const TRV_Rectangle_Data& area) {
    return area.width >= 1 && area.height >= 1 && area.right() >= area.left && area.bottom() >= area.top;
}

// On rows that the source does not have, the mask is transparent. Beside the rows that it has, the mask gets the
// frame's colour, as the image does: programs know it so.
void trim_mask(const TRV_Picture& source, const TRV_Picture& result, const TRV_Rectangle_Data& area, PixelColor frame) {
    TRV_Picture source_mask(source, kAsMask);
    TRV_Picture result_mask(result, kAsMask);
    if (!source_mask.Lock() || !result_mask.Lock()) return;
    PrivTrim(source_mask, result_mask, area, {kTransparent, frame});
}

template <class Form>
typename Form::Handle trim(Form form, typename Form::Handle p, REALobjectStruct* trim_rect, int frame_color,
                           SourceMask mask) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    const TRV_Rectangle_Data area = trim_area(source, trim_rect);
    if (!is_area(area)) return fail(ErrorCode::trim_area);

    const PixelColor frame = static_cast<PixelColor>(frame_color) & 0xFFFFFF;
    return form.produce(area.width, area.height, result_depth(source), ResultMask::none, [&](TRV_Picture& result) {
        PrivTrim(source, result, area, {frame, frame});
        if (mask == SourceMask::copied && source.HasMask()) trim_mask(source, result, area, frame);
    });
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivTrim(const TRV_Picture& source, TRV_Picture& result, const TRV_Rectangle_Data& area, TrimFrame frame) {
    const std::int32_t width = std::min(result.width(), area.width);
    const std::int32_t height = std::min(result.height(), area.height);
    // The result's columns from `first` to before `end` are the source's.
    const auto column_of = [&](std::int32_t source_column) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{source_column} - area.left, 0, width));
    };
    const std::int32_t first = column_of(0), end = column_of(source.width());
    for (std::int32_t row = 0; row < height; ++row) {
        const std::int32_t source_row = area.top + row;
        if (source_row < 0 || source_row >= source.height()) {
            fill_run(result, {row, 0}, width, frame.rows, kCaller);
            continue;
        }
        fill_run(result, {row, 0}, first, frame.columns, kCaller);
        copy_run(source, {source_row, std::max(area.left, 0)}, result, {row, first}, end - first, kCaller);
        fill_run(result, {row, end}, width - end, frame.columns, kCaller);
    }
}

REALpictureStruct* TRV_Trim(REALpictureStruct* p, REALobjectStruct* trim_rect, int frame_color) {
    return trim(PictureForm{}, p, trim_rect, frame_color, SourceMask::copied);
}

REALobjectStruct* TRV_ClientPicture_Trim(REALobjectStruct* cp, REALobjectStruct* trim_rect, int frame_color,
                                         bool as_picture) {
    return trim(ClientForm{as_picture}, cp, trim_rect, frame_color, SourceMask::left_behind);
}

REALobjectStruct* TRV_ClientPicture_Trim_OwnMemory(REALobjectStruct* cp, REALobjectStruct* trim_rect, int frame_color) {
    return TRV_ClientPicture_Trim(cp, trim_rect, frame_color, kInOwnMemory);
}
