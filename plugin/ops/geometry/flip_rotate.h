#pragma once

// Mirrors a picture, then turns it by quarter turns; its mask too.

#include "picture.h"
#include "real_interface.h"

// `rotation`: quarter turns clockwise, 0 to 3.
REALpictureStruct* TRV_FlipRotate(REALpictureStruct* p, bool flip_h, bool flip_v, int rotation, int yield);

// Its layers: binds the source; makes the result of a source without a mask, or with one.
REALpictureStruct* PrivFlipRotate_NonVector(REALpictureStruct* p, bool flip_h, bool flip_v, int rotation, int yield);
REALpictureStruct* PrivFlipRotate_NoMask_NonVector(TRV_Picture& source, bool flip_h, bool flip_v, int rotation,
                                                   int yield);
REALpictureStruct* PrivFlipRotate_Mask_NonVector(TRV_Picture& source, bool flip_h, bool flip_v, int rotation,
                                                 int yield);
