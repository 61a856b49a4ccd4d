#pragma once

#include "object.h"

namespace tarvo::host {

// Draws the picture over the rectangle of a pixel map, in the map's coordinates, scaled by taking the nearest pixel and
// clipped to the map. Masks do not matter. Nothing is drawn when the rectangle is empty or pixels cannot be locked.
void draw_picture(const Picture& picture, const Rect& where, PixMapHandle target);

}  // namespace tarvo::host
