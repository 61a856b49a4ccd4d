#pragma once

// Stretches a picture to any width and height. Each result pixel is the mean of what it covers of the source.

#include "picture.h"
#include "real_interface.h"

// The source's depth; its mask is stretched too.
REALpictureStruct* TRV_Stretch(REALpictureStruct* p, int width, int height, int yield);
REALobjectStruct* TRV_ClientPicture_Stretch(REALobjectStruct* cp, int width, int height, int yield, bool as_picture);

// Their work: makes the result, then stretches the image, or image and mask, by way of intermediate pictures.
REALpictureStruct* PrivStretch_NonVector(REALpictureStruct* p, int width, int height, int yield);
REALobjectStruct* PrivStretch_NonVector(REALobjectStruct* cp, int width, int height, int yield, bool as_picture);
void PrivStretch_NonVector_NoMask(TRV_Picture& source, TRV_Picture& result, int yield);
void PrivStretch_NonVector_Mask(TRV_Picture& source, TRV_Picture& result, int yield);

// The kernels, along one axis each; the other sides are equal. The names have always been spelled so.
void Priv_StetchHorizontal(const TRV_Picture& source, TRV_Picture& destination, int yield);
void Priv_StetchVertical(const TRV_Picture& source, TRV_Picture& destination, int yield);
// The red channel alone, as grey.
void Priv_StetchVerticalMask(const TRV_Picture& source, TRV_Picture& destination);
