#pragma once

// Cuts a rectangle out of a picture. Where it reaches beyond the picture it frames it.

#include "picture.h"
#include "real_interface.h"
#include "rectangle.h"

// Without a rectangle: all of the picture. The source's mask goes along.
REALpictureStruct* TRV_Trim(REALpictureStruct* p, REALobjectStruct* trim_rect, int frame_color);

// Without the mask. The host passes no `as_picture`: what it calls is the entry below.
REALobjectStruct* TRV_ClientPicture_Trim(REALobjectStruct* cp, REALobjectStruct* trim_rect, int frame_color,
                                         bool as_picture);
// The same, into memory of the client picture's own.
REALobjectStruct* TRV_ClientPicture_Trim_OwnMemory(REALobjectStruct* cp, REALobjectStruct* trim_rect, int frame_color);

// What a trim paints beyond the source: on rows that the source does not have, and beside those that it has.
struct TrimFrame {
    PixelColor rows, columns;
};

// The kernel: locked pictures, the result's first pixel at the area's corner.
void PrivTrim(const TRV_Picture& source, TRV_Picture& result, const TRV_Rectangle_Data& area, TrimFrame frame);
