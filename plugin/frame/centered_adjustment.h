#pragma once

// The course of the operations that have a centre colour and, for each channel, a factor or weight from 0 to 255.

#include "adjustment.h"

struct CenteredAdjustment {
    using Kernel = void(const TRV_Picture& source, TRV_Picture& result, const Region& region, int center, double red,
                        double green, double blue, int yield);
    using MaskKernel = void(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                            double red, double green, double blue, int yield);

    const char* name;
    Kernel* kernel;
    MaskKernel* mask_kernel;
    SourceMask source_mask;  // of the region form; results of the mask form never have one
};

inline bool CenteredFactorsPass(double red, double green, double blue) {
    return ChannelsInRange(0.0, 255.0, red, green, blue);
}

template <class Form>
typename Form::Handle adjust_about_center(const CenteredAdjustment& operation, Form form, typename Form::Handle p,
                                          REALobjectStruct* rect, int center, double red, double green, double blue,
                                          int yield) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (!CenteredFactorsPass(red, green, blue)) return nullptr;
    return adjust_region(form, p, rect, operation.source_mask, operation.name,
                         [&](const TRV_Picture& source, TRV_Picture& result, const Region& region) {
                             operation.kernel(source, result, region, center, red, green, blue, yield);
                         });
}

template <class Form>
typename Form::Handle adjust_about_center_with_mask(const CenteredAdjustment& operation, Form form,
                                                    typename Form::Handle p, REALpictureStruct* mask, int center,
                                                    double red, double green, double blue, int yield) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (!mask) return Fail(ErrorCode::mask_nil);
    if (!CenteredFactorsPass(red, green, blue)) return nullptr;
    return adjust_with_mask(form, p, mask,
                            [&](const TRV_Picture& source, const TRV_Picture& weights, TRV_Picture& result) {
                                operation.mask_kernel(source, weights, result, center, red, green, blue, yield);
                            });
}
