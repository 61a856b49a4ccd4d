#pragma once

// Cuts a rectangle out of a picture. Where the rectangle reaches beyond the picture, the result gets a frame.

#include "picture.h"
#include "real_interface.h"
#include "rectangle.h"

namespace tarvo::plugin {

// The colours beyond the source: on rows that the source does not have, and beside those that it has.
struct TrimFrame {
    PixelColor rows, columns;
};

}  // namespace tarvo::plugin

// Without a rectangle, the whole picture is copied. The source's mask is trimmed too.
REALpictureStruct* TRV_Trim(REALpictureStruct* p, REALobjectStruct* trim_rect, int frame_color);

// The result has no mask. The declaration lacks `as_picture`, so the host calls the entry below.
REALobjectStruct* TRV_ClientPicture_Trim(REALobjectStruct* cp, REALobjectStruct* trim_rect, int frame_color,
                                         bool as_picture);
// The same with a result in own memory.
REALobjectStruct* TRV_ClientPicture_Trim_OwnMemory(REALobjectStruct* cp, REALobjectStruct* trim_rect, int frame_color);

// The kernel. The pictures are locked, and the result's first pixel is the one at the area's corner.
void PrivTrim(const TRV_Picture& source, TRV_Picture& result, const TRV_Rectangle_Data& area,
              tarvo::plugin::TrimFrame frame);
