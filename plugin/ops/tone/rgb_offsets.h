#pragma once

// Offsets: a number added to each channel; and the mean colour of a region.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Deltas from -255 to 255. New pictures with a region changed, or the whole weighted by a mask; or the region changed
// in the picture itself. Results have no mask.
REALpictureStruct* TRV_AdjustRGB(REALpictureStruct* p, REALobjectStruct* rect, int red_delta, int green_delta,
                                 int blue_delta);
REALpictureStruct* TRV_AdjustRGBWithMask(REALpictureStruct* p, REALpictureStruct* mask, int red_delta, int green_delta,
                                         int blue_delta);
void TRV_AdjustRGB_InPlace(REALpictureStruct* p, REALobjectStruct* rect, int red_delta, int green_delta,
                           int blue_delta);

// The mean of each channel over a region, fractions cut off. Null outputs are skipped.
void TRV_GetAverageRGB(REALpictureStruct* p, REALobjectStruct* rect, int* red, int* green, int* blue);

// The kernels: locked pictures of one size, deltas in range.
void PrivAdjustRGB(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, int red_delta,
                   int green_delta, int blue_delta);
void PrivAdjustRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int red_delta,
                           int green_delta, int blue_delta);
void PrivAdjustRGB_InPlace(TRV_Picture& picture, const tarvo::plugin::Region& region, int red_delta, int green_delta,
                           int blue_delta);
void PrivGetAverageRGB(const TRV_Picture& source, const tarvo::plugin::Region& region, int* red, int* green, int* blue);
