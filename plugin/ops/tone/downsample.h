#pragma once

// Downsample: each channel gets fewer levels.

#include "picture.h"
#include "real_interface.h"

// Returns a new picture with every channel rounded to the nearest multiple of 2^(8 - bits_per_channel). There are from
// 1 to 8 bits.
REALpictureStruct* TRV_Downsample(REALpictureStruct* p, int bits_per_channel);

// The kernel. The pictures are locked and have one size.
void PrivDownsample(const TRV_Picture& source, TRV_Picture& result, int bits_per_channel);
