#pragma once

// How JPEG files were made, told from what they are.

#include <cstdio>  // jpeglib.h needs it

#include <jpeglib.h>

#include "metadata.h"

namespace tarvo::host {

// Tells it of a file whose header has been read. The quality is the one whose quantisation steps are nearest to the
// file's in all: exactly that of a file that was made by the same library. Throws std::bad_alloc.
JpegMaking making_of(const jpeg_decompress_struct& file);

}  // namespace tarvo::host
