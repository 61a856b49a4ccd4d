#pragma once

// TIFF files, read by libtiff. Greys, palettes and RGB of 1 to 16 bits, of which the high 8 are kept, and inks; strips
// and tiles, pixels together or in planes, either byte order. What is transparent is so again: colours that a file has
// multiplied by alpha are divided by it. Of several pages the first is read.

#include "format.h"

namespace tarvo::host {

void decode_tiff(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target);
// An indexed image is written with its palette and depth, or as greys where its palette is theirs; without its palette
// where that is partly clear. `fast` compression is none.
FilePixels encode_tiff(const PixelSource& image, const EncodeOptions& options, ByteSink& file);

}  // namespace tarvo::host
