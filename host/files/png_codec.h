#pragma once

// PNG files, by libpng. Colour profiles are carried, and gamma is ignored; of 16 bits a channel the high byte is kept;
// an Exif orientation is applied.

#include "format.h"

namespace tarvo::host {

void decode_png(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target);
// An indexed image is written with its palette and depth, or as greys where its palette is theirs.
FilePixels encode_png(const PixelSource& image, const EncodeOptions& options, ByteSink& file);

}  // namespace tarvo::host
