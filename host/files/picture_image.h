#pragma once

// Between the host's pictures and images.

#include "host.h"
#include "image.h"

namespace tarvo::host {

// A new graphics world of 32 bits. With `keep_depth` an indexed image keeps its indices: one bit of black and white
// gives a 1-bit picture, any other an 8-bit one with the image's colours. Alpha becomes a 32-bit mask of greys, 0 where
// the image is opaque. Throws HostError.
ObjectRef picture_of(Host& host, const Image& image, bool keep_depth);

// Pixels of up to 8 bits give an indexed image, others RGB; a picture with a mask gives RGBA, and is opaque beyond a
// mask smaller than itself. Colours are as the host draws them. Throws FileError for a picture that has no pixels, or
// pixels of an unknown depth.
Image image_of(const Picture& picture);

}  // namespace tarvo::host
