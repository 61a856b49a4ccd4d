#pragma once

// The sum and the difference of two pictures of one size, channel by channel, modulo 256.

#include "picture.h"
#include "real_interface.h"

REALpictureStruct* TRV_Add(REALpictureStruct* p, REALpictureStruct* addend, int yield);
REALpictureStruct* TRV_Subtract(REALpictureStruct* p, REALpictureStruct* subtractend, int yield);
REALobjectStruct* TRV_ClientPicture_Add(REALobjectStruct* cp, REALobjectStruct* addend, int yield, bool as_picture);
REALobjectStruct* TRV_ClientPicture_Subtract(REALobjectStruct* cp, REALobjectStruct* subtractend, int yield,
                                             bool as_picture);

// The kernels. All pictures are locked and have one size.
void PrivAdd(const TRV_Picture& source, const TRV_Picture& addend, TRV_Picture& result, int yield);
void PrivSubtract(const TRV_Picture& source, const TRV_Picture& subtractend, TRV_Picture& result, int yield);
