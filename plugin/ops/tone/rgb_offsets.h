#pragma once

// Offsets: a number is added to each channel. A region's mean colour is measured here, too.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Return a new picture with a region changed, or with all of it changed as far as a mask says; the third changes the
// region of the picture itself. Deltas are from -255 to 255. Results have no mask.
REALpictureStruct* TRV_AdjustRGB(REALpictureStruct* p, REALobjectStruct* rect, int red_delta, int green_delta,
                                 int blue_delta);
REALpictureStruct* TRV_AdjustRGBWithMask(REALpictureStruct* p, REALpictureStruct* mask, int red_delta, int green_delta,
                                         int blue_delta);
void TRV_AdjustRGB_InPlace(REALpictureStruct* p, REALobjectStruct* rect, int red_delta, int green_delta,
                           int blue_delta);

// Puts out the mean of each channel over a region, truncated. Null outputs are skipped.
void TRV_GetAverageRGB(REALpictureStruct* p, REALobjectStruct* rect, int* red, int* green, int* blue);

// The kernels. The pictures are locked and have one size, and deltas are in range. Null outputs are skipped.
void PrivAdjustRGB(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, int red_delta,
                   int green_delta, int blue_delta);
void PrivAdjustRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int red_delta,
                           int green_delta, int blue_delta);
void PrivAdjustRGB_InPlace(TRV_Picture& picture, const tarvo::plugin::Region& region, int red_delta, int green_delta,
                           int blue_delta);
void PrivGetAverageRGB(const TRV_Picture& source, const tarvo::plugin::Region& region, int* red, int* green, int* blue);
