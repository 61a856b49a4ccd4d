#pragma once

// Turns a picture by any angle: by whole quarter turns, then each result pixel is the mean of what its square covers of
// the source. Edges are anti-aliased against the frame's colour. Masks are left behind.

#include "picture.h"
#include "real_interface.h"

// `rotation`: degrees clockwise, from 0 to below 360. Quarter turns alone give what TRV_FlipRotate gives.
REALpictureStruct* TRV_FreeRotateDirect(REALpictureStruct* p, double rotation, int frame_color);
// Coarser: every source pixel that a square touches counts once. For use within the library: no declaration names it.
REALpictureStruct* TRV_FreeRotateFast(REALpictureStruct* p, double rotation, int frame_color);

// Their work.
REALpictureStruct* PrivFreeRotateDirect_NonVector(REALpictureStruct* p, double rotation, int frame_color);
REALpictureStruct* PrivFreeRotateFast_NonVector(REALpictureStruct* p, double rotation, int frame_color);

// The kernels: a locked source into the middle of a locked result, turned by an angle between 0 and half of pi.
void PrivRotateDirect(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color);
void PrivRotateFast(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color);
