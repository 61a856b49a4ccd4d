#pragma once

// Convolution: each pixel becomes a weighted mean of its neighbours, first along rows, then along columns.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Returns a new picture with a region filtered. Nil for a filter leaves the picture as it is in that direction.
REALpictureStruct* TRV_Convolute(REALpictureStruct* p, REALobjectStruct* rect, REALobjectStruct* horiz_convolution,
                                 REALobjectStruct* vert_convolution);

// The two passes. The pictures are locked and have one size; `convolution` is a TRV_Convolution or nil.
void PrivConvoluteHorizontal(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                             const tarvo::plugin::Region& region);
void PrivConvoluteVertical(const TRV_Picture& source, TRV_Picture& destination, REALobjectStruct* convolution,
                           const tarvo::plugin::Region& region);
