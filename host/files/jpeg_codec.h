#pragma once

// JPEG files, by libjpeg. Colour profiles are carried; an Exif orientation is applied.

#include "format.h"

namespace tarvo::host {

// CMYK and YCCK files are converted plainly.
void decode_jpeg(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target);
// Alpha is left out. An image of greys is written as such.
FilePixels encode_jpeg(const PixelSource& image, const EncodeOptions& options, ByteSink& file);

}  // namespace tarvo::host
