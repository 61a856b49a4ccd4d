#include "crawling_ants.h"

#include <cstdint>

#include "error_state.h"
#include "forms.h"
#include "pixel_runs.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

constexpr const char* kCaller = "TRV_CrawlingAnts";

struct Ants {
    PixelColor ant_color, shadow_color;
    std::int32_t size;
    std::int32_t state;

    std::int64_t period() const { return 2 * std::int64_t{size}; }
    bool has_size() const { return size >= 1; }
    bool has_state() const { return state >= 0 && state < period(); }
};

// Gives the colours of the outline's pixels, one after the other.
class Dashes {
public:
    // The phase has the sign of the state. Below 0 one pixel of the ant's colour comes before the first whole period.
    explicit Dashes(const Ants& ants) : ants_(ants), phase_(ants.state % ants.period()) {}

    PixelColor next() {
        const PixelColor color = (phase_ >= ants_.size ? ants_.shadow_color : ants_.ant_color) & 0xFFFFFF;
        if (--phase_ < 0) phase_ = ants_.period() - 1;
        return color;
    }

private:
    const Ants& ants_;
    std::int64_t phase_;
};

void draw_row(TRV_Picture& result, std::int32_t row, const Region& region, Dashes& dashes) {
    for (std::int32_t column = region.left; column <= region.right; ++column)
        result.SetPixel(row, column, dashes.next(), kCaller);
}

void draw_column(TRV_Picture& result, std::int32_t column, const Region& region, Dashes& dashes) {
    for (std::int32_t row = region.top; row <= region.bottom; ++row)
        result.SetPixel(row, column, dashes.next(), kCaller);
}

// Draws two halves, from the top left corner to the bottom right one. In each the dashes run on around its corner;
// where the halves meet they need not fit. Each side overwrites the corners of those before it.
void draw_outline(TRV_Picture& result, const Region& region, const Ants& ants) {
    Dashes top_and_right(ants), left_and_bottom(ants);
    draw_row(result, region.top, region, top_and_right);
    draw_column(result, region.right, region, top_and_right);
    draw_column(result, region.left, region, left_and_bottom);
    draw_row(result, region.bottom, region, left_and_bottom);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

// A wrong size or state of the ants is reported, and the picture is made all the same; without a size it gets no
// outline.
REALpictureStruct* TRV_CrawlingAnts(REALpictureStruct* p, REALobjectStruct* rect, int ant_color, int shadow_color,
                                    int ant_size, int ant_state) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    const Region region = select_region(source, rect);
    if (region.empty()) set_error(ErrorCode::selection);
    const Ants ants = {static_cast<PixelColor>(ant_color), static_cast<PixelColor>(shadow_color), ant_size, ant_state};
    if (!ants.has_size())
        set_error(ErrorCode::ant_size);
    else if (!ants.has_state())
        set_error(ErrorCode::ant_state);
    if (region.empty()) return nullptr;
    return PictureForm{}.produce(source.width(), source.height(), result_depth(source), ResultMask::none,
                                 [&](TRV_Picture& result) {
                                     copy_region(source, result, whole_of(source), kCaller);
                                     if (ants.has_size()) draw_outline(result, region, ants);
                                 });
}
