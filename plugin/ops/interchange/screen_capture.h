#pragma once

#include "real_interface.h"

// Returns a new picture of the whole main screen, whatever the arguments are; null without an error code when there is
// no main screen.
REALpictureStruct* TRV_ScreenCapture(REALobjectStruct* s, REALobjectStruct* capture_rect);
