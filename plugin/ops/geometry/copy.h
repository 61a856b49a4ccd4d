#pragma once

// A plain duplicate of a picture, at least 16 bits deep.

#include "picture.h"
#include "real_interface.h"

// For use within the library: it is declared, and no host is told of it. A mask is left behind.
REALpictureStruct* TRV_CopyPicture(REALpictureStruct* p);

// The kernel: locked pictures of one size.
void PrivCopyPicture(const TRV_Picture& source, TRV_Picture& result);
