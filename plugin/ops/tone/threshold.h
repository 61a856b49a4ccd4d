#pragma once

// Threshold: pixels on one side of a colour become another one.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// New pictures with the pixels of a region that match replaced by `target`, or those of the whole picture mixed with it
// as a mask says. A channel passes when it is at or above the threshold's, with `darker` at or below it; a pixel
// matches when all its channels pass, without `and_threshold` when one does.
REALpictureStruct* TRV_Threshold(REALpictureStruct* p, REALobjectStruct* rect, bool darker, bool and_threshold,
                                 int threshold, int target);
REALpictureStruct* TRV_ThresholdWithMask(REALpictureStruct* p, REALpictureStruct* mask, bool darker, bool and_threshold,
                                         int threshold, int target);

// The kernels: locked pictures of one size.
void PrivThreshold(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, bool darker,
                   bool and_threshold, int threshold, int target);
void PrivThresholdWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, bool darker,
                           bool and_threshold, int threshold, int target);
