#pragma once

#include "object.h"

namespace tarvo::host {

// Draws the picture over the rectangle of a pixel map, in the map's coordinates, scaled by taking the nearest pixel and
// clipped to the map. Masks do not matter. An empty rectangle, or pixels that cannot be locked, draw nothing.
void draw_picture(const Picture& picture, const Rect& where, PixMapHandle target);

}  // namespace tarvo::host
