#pragma once

// Crawling ants: the dashed outline of a selection, whose dashes move from call to call.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Returns a new picture with a region outlined in dashes of two colours, each `ant_size` pixels long, at least 1. The
// dashes move by one pixel when `ant_state`, from 0 to 2 * ant_size - 1, goes up by 1.
REALpictureStruct* TRV_CrawlingAnts(REALpictureStruct* p, REALobjectStruct* rect, int ant_color, int shadow_color,
                                    int ant_size, int ant_state);
