#pragma once

// Facts about a picture.

#include "real_interface.h"

// Returns the bytes from one row of the picture to the next; 0 after a failure.
int TRV_RowBytes(REALpictureStruct* source);
// Returns a line of text with the picture's size and depth. If the picture cannot be locked, the line tells what the
// host says of it, and there is no error code.
REALstringStruct* TRV_Info(REALpictureStruct* source);
