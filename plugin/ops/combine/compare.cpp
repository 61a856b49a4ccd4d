#include "compare.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "error_state.h"
#include "forms.h"
#include "pixel_maps.h"
#include "pixel_runs.h"
#include "region.h"

namespace tarvo::plugin {
namespace {

// In this operation alone, the last row and column of a region are left out.
bool regions_agree(const TRV_Picture& a, const TRV_Picture& b, const Region& region) {
    if (region.empty()) return true;
    bool same = true;
    for (std::int32_t row = region.top; same && row < region.bottom; ++row)
        for_each_chunk(region.left, region.right - 1, [&](std::int32_t column, std::size_t count) {
            same = same && a.same_colors(b, row, column, count, "PrivCompare_NonVector");
        });
    return same;
}

bool disagree(ErrorCode code) {
    set_error(code);
    return false;
}

// --- the map ---------------------------------------------------------------------------------------------------------

constexpr PixelColor kEqual = 0xFFFFFF;
constexpr PixelColor kDifferent = 0xFF0000;
constexpr PixelColor kOnlyFirst = 0xDDFFDD;
constexpr PixelColor kNotFirst = 0xDDDDFF;
constexpr const char* kDifferenceCaller = "TRV_Difference";

// Compares whole words, top bytes included.
struct MapDifference {
    TARVO_INLINED PixelColor operator()(PixelColor color, PixelColor other) const {
        return color == other ? kEqual : kDifferent;
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

bool PrivCompare_NonVector(REALpictureStruct* p, REALpictureStruct* compare, REALobjectStruct* rect) {
    clear_error();
    if (!compare) return disagree(ErrorCode::compare_nil);  // if both are nil, this code is the one that stays
    if (!p) return disagree(ErrorCode::source_nil);
    if (p == compare) return true;
    TRV_Picture a(p, kAsImage);
    if (!a.Lock()) return disagree(ErrorCode::source_lock);
    const Region region = select_region(a, rect);
    TRV_Picture b(compare, kAsImage);
    if (!b.Lock()) return disagree(ErrorCode::compare_lock);
    return same_size(a, b) && a.depth() == b.depth() && regions_agree(a, b, region);
}

bool TRV_Compare(REALpictureStruct* p, REALpictureStruct* compare, REALobjectStruct* rect) {
    clear_error();
    return PrivCompare_NonVector(p, compare, rect);
}

void PrivDifference(const TRV_Picture& picture, const TRV_Picture& compare, TRV_Picture& result) {
    for (std::int32_t row = 0; row < result.height(); ++row) {
        const auto columns = [row](const TRV_Picture& each) {
            return row < each.height() ? std::max(each.width(), 0) : 0;
        };
        const std::int32_t end = columns(picture);
        const std::int32_t common_end = std::min(end, columns(compare));
        if (common_end > 0)
            map_run(result, row, 0, static_cast<std::size_t>(common_end), kDifferenceCaller, MapDifference{},
                    RunSource{picture, row, 0}, RunSource{compare, row, 0});
        fill_run(result, {row, common_end}, end - common_end, kOnlyFirst, kDifferenceCaller);
        fill_run(result, {row, end}, result.width() - end, kNotFirst, kDifferenceCaller);
    }
}

REALpictureStruct* TRV_Difference(REALpictureStruct* p, REALpictureStruct* compare) {
    TRV_Picture a(p, kAsImage);
    if (!a.Lock()) return nullptr;
    TRV_Picture b(compare, kAsImage);
    if (!b.Lock()) return nullptr;
    TRV_Picture result(std::max(a.width(), b.width()), std::max(a.height(), b.height()), 32, kHandOver);
    if (!result.Lock()) return nullptr;
    PrivDifference(a, b, result);
    return result.picture();
}
