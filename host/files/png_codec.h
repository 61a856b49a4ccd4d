#pragma once

// PNG files, by libpng. Colour profiles and gamma are ignored; of 16 bits a channel the high byte is kept; an Exif
// orientation is applied.

#include "format.h"

namespace tarvo::host {

Image decode_png(std::span<const std::uint8_t> file, const Limits& limits);
// An indexed image is written with its palette and depth, or as greys where its palette is theirs.
Bytes encode_png(const Image& image, const EncodeOptions& options);

}  // namespace tarvo::host
