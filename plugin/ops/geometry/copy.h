#pragma once

// A plain duplicate of a picture, at least 16 bits deep.

#include "picture.h"
#include "real_interface.h"

// Returns a copy without the mask. The method is declared but registered with no host.
REALpictureStruct* TRV_CopyPicture(REALpictureStruct* p);

// The kernel. The pictures are locked and have one size.
void PrivCopyPicture(const TRV_Picture& source, TRV_Picture& result);
