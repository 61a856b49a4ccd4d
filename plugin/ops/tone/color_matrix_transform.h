#pragma once

// The colour-matrix transform: each pixel's red, green and blue are multiplied, as a row vector, by a matrix.

#include "color_matrix.h"
#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Return a new picture with a region transformed, or with all of it transformed as far as a mask says. The result has
// no mask.
REALpictureStruct* TRV_AdjustRGB_Matrix(REALpictureStruct* p, REALobjectStruct* rect, REALobjectStruct* cm);
REALpictureStruct* TRV_AdjustRGBWithMask_Matrix(REALpictureStruct* p, REALpictureStruct* mask, REALobjectStruct* cm);

// The kernels. The pictures are locked and have one size.
void PrivAdjustRGB_Matrix(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region,
                          const TRV_ColorMatrix_Data& matrix);
void PrivAdjustRGBWithMask_Matrix(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result,
                                  const TRV_ColorMatrix_Data& matrix);
