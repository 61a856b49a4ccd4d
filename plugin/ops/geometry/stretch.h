#pragma once

// Stretches a picture to any width and height. Each result pixel is the mean of what it covers of the source.

#include "picture.h"
#include "real_interface.h"

// The result has the source's depth. The source's mask is stretched too.
REALpictureStruct* TRV_Stretch(REALpictureStruct* p, int width, int height, int yield);
REALobjectStruct* TRV_ClientPicture_Stretch(REALobjectStruct* cp, int width, int height, int yield, bool as_picture);

// The work of the two after their checks. The first two make the result and call one of the others, which stretch the
// image alone or image and mask, by way of intermediate pictures.
REALpictureStruct* PrivStretch_NonVector(REALpictureStruct* p, int width, int height, int yield);
REALobjectStruct* PrivStretch_NonVector(REALobjectStruct* cp, int width, int height, int yield, bool as_picture);
void PrivStretch_NonVector_NoMask(TRV_Picture& source, TRV_Picture& result, int yield);
void PrivStretch_NonVector_Mask(TRV_Picture& source, TRV_Picture& result, int yield);

// The kernels, along one axis each; the other sides of source and destination are equal. Their names have always been
// spelled so.
void Priv_StetchHorizontal(const TRV_Picture& source, TRV_Picture& destination, int yield);
void Priv_StetchVertical(const TRV_Picture& source, TRV_Picture& destination, int yield);
// The vertical kernel for the red channel alone, which it writes as grey.
void Priv_StetchVerticalMask(const TRV_Picture& source, TRV_Picture& destination);
