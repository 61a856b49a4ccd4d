#pragma once

// TRV_ClientPicture: a picture in the plugin's own memory or in a host picture. In a chain of operations on them, no
// host picture is made until the program asks for one.

#include "client_picture_data.h"
#include "real_interface.h"

extern REALclassDefinition TRV_ClientPicture_Class;

// Returns the data of an instance; null for nil.
TRV_ClientPicture_Data* TRV_ClientPicture_GetData(REALobjectStruct* clientPicture);

// Returns a new, cleared instance with one reference for the caller; nil when a side is below 1, memory is short or the
// bytes do not fit in 31 bits. With `as_picture` the image is in a new host picture, of any depth that the host makes;
// without, it is in own memory, with a depth of 16, 24 or 32. `withMask` asks for a mask: own memory then has one of 8
// bits, and of a host picture it is the mask that it already has, if any.
REALobjectStruct* TRV_ClientPicture_new(long width, long height, long depth, bool withMask, bool as_picture);
