#pragma once

// Shears: rows are shifted sideways, or columns up and down, in proportion to their place.

#include "real_interface.h"

// Return a new picture of the given size with the sheared source in its middle. `shear` is in pixels from line to line,
// from -1 to 1. What the source does not cover is transparent, or has the frame's colour.
REALpictureStruct* TRV_ShearHorizontal(REALpictureStruct* p, int width, int height, double shear, int yield);
REALpictureStruct* TRV_ShearVertical(REALpictureStruct* p, int width, int height, double shear, int yield);
REALpictureStruct* TRV_ShearHorizontal_Frame(REALpictureStruct* p, int width, int height, double shear, int frame_color,
                                             int yield);
REALpictureStruct* TRV_ShearVertical_Frame(REALpictureStruct* p, int width, int height, double shear, int frame_color,
                                           int yield);

// The work of the four after their checks. If a picture or mask cannot be locked, the result is nil and there is no
// code.
REALpictureStruct* PrivShear_NonVector(REALpictureStruct* p, int width, int height, double shear, bool horizontal,
                                       int yield);
REALpictureStruct* PrivShear_Frame_NonVector(REALpictureStruct* p, int width, int height, double shear, bool horizontal,
                                             int frame_color, int yield);
