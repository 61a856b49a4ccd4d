#pragma once

// The kernels of shears, and of the rotation that is made of three. A horizontal shear shifts rows, the top one
// farthest to the right when `shear` is positive; a vertical one shifts columns, the left one farthest down.

#include "picture.h"

// With masks, uncovered places are mid grey and transparent, and source pixels beyond their mask count as transparent.
// If the result and its mask differ in size, these draw nothing and return 10, else 0.
int Priv_ShearHorizontal(const TRV_Picture& source, TRV_Picture& result, const TRV_Picture& source_mask,
                         TRV_Picture& result_mask, double shear, int yield);
int Priv_ShearVertical(const TRV_Picture& source, TRV_Picture& result, const TRV_Picture& source_mask,
                       TRV_Picture& result_mask, double shear, int yield);

// Without masks, uncovered places have the frame's colour.
void Priv_ShearHorizontal(const TRV_Picture& source, TRV_Picture& result, double shear, int frame_color, int yield);
void Priv_ShearVertical(const TRV_Picture& source, TRV_Picture& result, double shear, int frame_color, int yield);
