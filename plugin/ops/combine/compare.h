#pragma once

// Compares two pictures: whether they have the same pixels, and a map of where they differ.

#include "picture.h"
#include "real_interface.h"

// Whether size, depth and all pixels of a region agree. Top bytes do not count, nor do the region's last row and
// column.
bool TRV_Compare(REALpictureStruct* p, REALpictureStruct* compare, REALobjectStruct* rect);
// Returns a new 32-bit picture as large as both: white where they agree, top bytes included, red where they do not,
// green where there is only `p`, blue elsewhere. It neither clears nor sets the error code.
REALpictureStruct* TRV_Difference(REALpictureStruct* p, REALpictureStruct* compare);

// The work of TRV_Compare.
bool PrivCompare_NonVector(REALpictureStruct* p, REALpictureStruct* compare, REALobjectStruct* rect);
// The kernel of TRV_Difference. The pictures are locked, and the result is as large as both.
void PrivDifference(const TRV_Picture& picture, const TRV_Picture& compare, TRV_Picture& result);
