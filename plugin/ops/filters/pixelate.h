#pragma once

// Pixelate: square blocks of a region become their mean colour, a mosaic.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// A new picture with blocks of `pixelation` x `pixelation` pixels over a region. At least 1.
REALpictureStruct* TRV_Pixelate(REALpictureStruct* p, REALobjectStruct* rect, int pixelation);

// The kernel: locked pictures of one size.
void PrivPixelate(const TRV_Picture& source, TRV_Picture& result, const Region& region, int pixelation);
