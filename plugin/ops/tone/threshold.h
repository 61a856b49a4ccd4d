#pragma once

// Threshold: pixels on one side of a colour get another colour.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Return a new picture in which `target` replaces the matching pixels of a region, or is mixed into all matching pixels
// as far as a mask says. A channel passes when it is at or above the threshold's; with `darker`, at or below it. A
// pixel matches when all of its channels pass; without `and_threshold`, when one of them does.
REALpictureStruct* TRV_Threshold(REALpictureStruct* p, REALobjectStruct* rect, bool darker, bool and_threshold,
                                 int threshold, int target);
REALpictureStruct* TRV_ThresholdWithMask(REALpictureStruct* p, REALpictureStruct* mask, bool darker, bool and_threshold,
                                         int threshold, int target);

// The kernels. The pictures are locked and have one size.
void PrivThreshold(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, bool darker,
                   bool and_threshold, int threshold, int target);
void PrivThresholdWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, bool darker,
                           bool and_threshold, int threshold, int target);
