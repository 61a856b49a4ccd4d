#pragma once

// TRV_ClientPicture: a picture in memory of the plugin's own, or in a host picture, for chains of operations that make
// no host picture until the program asks for one.

#include "client_picture_data.h"
#include "real_interface.h"

extern REALclassDefinition TRV_ClientPicture_Class;

// The data of an instance; null for nil.
TRV_ClientPicture_Data* TRV_ClientPicture_GetData(REALobjectStruct* clientPicture);

// A new instance of that size, cleared, with one reference for the caller; nil when a size is below 1, memory is short
// or the bytes do not fit in 31 bits. With `as_picture` a new host picture backs it, of any depth the host makes,
// without it own memory of depth 16, 24 or 32. `withMask` asks for a mask: 8 bits in own memory, the host picture's own
// if it has one.
REALobjectStruct* TRV_ClientPicture_new(long width, long height, long depth, bool withMask, bool as_picture);
