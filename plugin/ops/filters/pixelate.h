#pragma once

// Pixelate: a mosaic of square blocks, each of which has its mean colour.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Returns a new picture with blocks of `pixelation` x `pixelation` pixels over a region. `pixelation` is at least 1.
REALpictureStruct* TRV_Pixelate(REALpictureStruct* p, REALobjectStruct* rect, int pixelation);

// The kernel. The pictures are locked and have one size.
void PrivPixelate(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, int pixelation);
