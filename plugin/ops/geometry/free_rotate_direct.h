#pragma once

// Turns a picture by any angle: by whole quarter turns, and for the rest each result pixel is the mean of what its
// square covers of the source. Edges are anti-aliased against the frame's colour. The result has no mask unless quarter
// turns alone are wanted.

#include "picture.h"
#include "real_interface.h"

// `rotation` is in degrees clockwise, from 0 to below 360. For quarter turns alone the result is that of
// TRV_FlipRotate.
REALpictureStruct* TRV_FreeRotateDirect(REALpictureStruct* p, double rotation, int frame_color);
// The coarse variant: every source pixel that a square touches counts once. No declaration names it.
REALpictureStruct* TRV_FreeRotateFast(REALpictureStruct* p, double rotation, int frame_color);

// The work of the two after their checks.
REALpictureStruct* PrivFreeRotateDirect_NonVector(REALpictureStruct* p, double rotation, int frame_color);
REALpictureStruct* PrivFreeRotateFast_NonVector(REALpictureStruct* p, double rotation, int frame_color);

// The kernels. They draw a locked source into the middle of a locked result, turned by an angle between 0 and half of
// pi.
void PrivRotateDirect(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color);
void PrivRotateFast(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color);
