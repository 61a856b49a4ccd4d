#include "copy.h"

#include <algorithm>

#include "forms.h"
#include "pixel_runs.h"

using namespace tarvo::plugin;

void PrivCopyPicture(const TRV_Picture& source, TRV_Picture& result) {
    const std::int32_t width = std::min(source.width(), result.width());
    const std::int32_t height = std::min(source.height(), result.height());
    // The label is that of the operation that the copy was first made for.
    for (std::int32_t row = 0; row < height; ++row)
        copy_run(source, {row, 0}, result, {row, 0}, width, "TRV_AdjustContrast");
}

REALpictureStruct* TRV_CopyPicture(REALpictureStruct* p) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    const PictureForm form{};
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    return form.produce(source.width(), source.height(), result_depth(source), ResultMask::none,
                        [&](TRV_Picture& result) { PrivCopyPicture(source, result); });
}
