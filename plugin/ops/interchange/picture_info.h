#pragma once

// Facts about a picture.

#include "real_interface.h"

// Bytes from one row of the picture to the next; 0 after a failure.
int TRV_RowBytes(REALpictureStruct* source);
// A line of text: size and depth of the picture, or what the host says of one that cannot be locked, without an error
// code.
REALstringStruct* TRV_Info(REALpictureStruct* source);
