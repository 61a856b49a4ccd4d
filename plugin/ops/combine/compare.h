#pragma once

// Whether two pictures hold the same pixels, and a map of where they do not.

#include "picture.h"
#include "real_interface.h"

// True when size, depth and, in the region, all pixels agree; top bytes do not count, nor do the region's last row and
// last column.
bool TRV_Compare(REALpictureStruct* p, REALpictureStruct* compare, REALobjectStruct* rect);
// A new 32-bit picture that holds both: white where they agree, top bytes included, red where not, green where there is
// only `p`, blue elsewhere. Neither clears nor sets the error code.
REALpictureStruct* TRV_Difference(REALpictureStruct* p, REALpictureStruct* compare);

bool PrivCompare_NonVector(REALpictureStruct* p, REALpictureStruct* compare, REALobjectStruct* rect);
// Locked pictures; the result holds both.
void PrivDifference(const TRV_Picture& picture, const TRV_Picture& compare, TRV_Picture& result);
