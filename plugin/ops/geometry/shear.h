#pragma once

// Shears: rows shifted sideways, or columns up and down, in proportion to their place.

#include "real_interface.h"

// New pictures of the given size, the sheared source in the middle. `shear`: pixels from line to line, -1 to 1.
// What the source does not cover is transparent, or has the frame's colour.
REALpictureStruct* TRV_ShearHorizontal(REALpictureStruct* p, int width, int height, double shear, int yield);
REALpictureStruct* TRV_ShearVertical(REALpictureStruct* p, int width, int height, double shear, int yield);
REALpictureStruct* TRV_ShearHorizontal_Frame(REALpictureStruct* p, int width, int height, double shear, int frame_color,
                                             int yield);
REALpictureStruct* TRV_ShearVertical_Frame(REALpictureStruct* p, int width, int height, double shear, int frame_color,
                                           int yield);

// Their work. A picture or mask that cannot be locked gives nil and no code.
REALpictureStruct* PrivShear_NonVector(REALpictureStruct* p, int width, int height, double shear, bool horizontal,
                                       int yield);
REALpictureStruct* PrivShear_Frame_NonVector(REALpictureStruct* p, int width, int height, double shear, bool horizontal,
                                             int frame_color, int yield);
