#pragma once

#include "real_interface.h"

// A new picture of the whole main screen, whatever the screen and the rectangle are; null without an error code when
// there is no main screen.
REALpictureStruct* TRV_ScreenCapture(REALobjectStruct* s, REALobjectStruct* capture_rect);
