#include "adjustment.h"

void CopySourceMask(const TRV_Picture& source, const TRV_Picture& result, const char* caller) {
    TRV_Picture source_mask(source, true);
    TRV_Picture result_mask(result, true);
    if (!source_mask.Lock() || !result_mask.Lock()) return SetError(ErrorCode::mask_lock);
    CopyMaskRows(source_mask, result_mask, caller);
}

bool MaskFits(const TRV_Picture& mask, const TRV_Picture& source) {
    bool fits = true;
    if (!same_size(mask, source)) {
        SetError(ErrorCode::mask_size);
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
        default: SetError(ErrorCode::mask_not_greyscale); return false;
    }
}
