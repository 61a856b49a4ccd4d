#include "adjustment.h"

namespace tarvo::plugin {

void copy_source_mask(const TRV_Picture& source, const TRV_Picture& result, const char* caller) {
    TRV_Picture source_mask(source, kAsMask);
    TRV_Picture result_mask(result, kAsMask);
    if (!source_mask.Lock() || !result_mask.Lock()) return set_error(ErrorCode::mask_lock);
    copy_mask_rows(source_mask, result_mask, caller);
}

bool mask_fits(const TRV_Picture& mask, const TRV_Picture& source) {
    bool fits = true;
    if (!same_size(mask, source)) {
        set_error(ErrorCode::mask_size);
        fits = false;
    }
    switch (mask.depth()) {
        case 1:
        case 2:
        case 4:
        case 8:
        case 16:
        case 24:
        case 32: return fits;
        default: set_error(ErrorCode::mask_not_greyscale); return false;
    }
}

}  // namespace tarvo::plugin
