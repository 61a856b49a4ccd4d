#pragma once

// Downsample: fewer levels for each channel.

#include "picture.h"
#include "real_interface.h"

// A new picture with every channel rounded to the nearest multiple of 2^(8 - bits_per_channel). From 1 to 8 bits.
REALpictureStruct* TRV_Downsample(REALpictureStruct* p, int bits_per_channel);

// The kernel: locked pictures of one size.
void PrivDownsample(const TRV_Picture& source, TRV_Picture& result, int bits_per_channel);
