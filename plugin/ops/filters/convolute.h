#pragma once

// Convolution: each pixel becomes a weighted mean of its neighbours, first along rows, then along columns.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// A new picture with a region filtered; a filter that is nil leaves its direction as it is.
REALpictureStruct* TRV_Convolute(REALpictureStruct* p, REALobjectStruct* rect, REALobjectStruct* horiz_convolution,
                                 REALobjectStruct* vert_convolution);

// The two passes: locked pictures of one size, a TRV_Convolution or nil.
void PrivConvoluteHorizontal(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                             const Region& region);
void PrivConvoluteVertical(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                           const Region& region);
