#pragma once

// Turns a picture by any angle: by whole quarter turns, and by three shears for the rest, which is at most 45 degrees.

#include "real_interface.h"

// `rotation` is in degrees clockwise, from 0 to below 360. The corners are transparent, or have the frame's colour. If
// a picture or mask cannot be locked, the result is nil and there is no code.
REALpictureStruct* TRV_FreeRotateByShear(REALpictureStruct* p, double rotation, int yield);
REALpictureStruct* TRV_FreeRotateByShear_Frame(REALpictureStruct* p, double rotation, int frame_color, int yield);

// The work of the two after their checks.
REALpictureStruct* PrivFreeRotateByShear_NonVector(REALpictureStruct* p, double rotation, int yield);
REALpictureStruct* PrivFreeRotateByShear_Frame_NonVector(REALpictureStruct* p, double rotation, int frame_color,
                                                         int yield);
