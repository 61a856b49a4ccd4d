#pragma once

// JPEG files, by libjpeg. Colour profiles are ignored; an Exif orientation is applied.

#include "format.h"

namespace tarvo::host {

// CMYK and YCCK files are converted plainly.
Image decode_jpeg(std::span<const std::uint8_t> file, const Limits& limits);
// Alpha is left out. An image of greys is written as such, others with their colours at full resolution.
Bytes encode_jpeg(const Image& image, const EncodeOptions& options);

}  // namespace tarvo::host
