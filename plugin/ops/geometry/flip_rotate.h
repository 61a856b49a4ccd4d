#pragma once

// Mirrors a picture and then turns it by quarter turns, and its mask with it.

#include "picture.h"
#include "real_interface.h"

// `rotation` counts quarter turns clockwise, from 0 to 3.
REALpictureStruct* TRV_FlipRotate(REALpictureStruct* p, bool flip_h, bool flip_v, int rotation, int yield);

// The work of TRV_FlipRotate. The first binds the source and calls one of the others, which make the result for a
// source without a mask and for one with a mask.
REALpictureStruct* PrivFlipRotate_NonVector(REALpictureStruct* p, bool flip_h, bool flip_v, int rotation, int yield);
REALpictureStruct* PrivFlipRotate_NoMask_NonVector(TRV_Picture& source, bool flip_h, bool flip_v, int rotation,
                                                   int yield);
REALpictureStruct* PrivFlipRotate_Mask_NonVector(TRV_Picture& source, bool flip_h, bool flip_v, int rotation,
                                                 int yield);
