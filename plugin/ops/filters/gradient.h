#pragma once

// Gradients: new pictures that fade from one colour at the top to another at the bottom, each row a single colour.

#include "picture.h"
#include "real_interface.h"

// Return a new picture that fades from `color1` to `color2`, or by way of `color2` in the middle to `color3`. The host
// gets no control, whatever `yield` is.
REALpictureStruct* TRV_MakeGradient(int width, int height, int color1, int color2, int yield);
REALpictureStruct* TRV_MakeDoubleGradient(int width, int height, int color1, int color2, int color3, int yield);

// The kernels. The picture is locked.
void PrivMakeGradient(TRV_Picture& result, int color1, int color2);
void PrivMakeDoubleGradient(TRV_Picture& result, int color1, int color2, int color3);
