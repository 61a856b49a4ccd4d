#pragma once

// WebP files, by libwebp. Of an animation the first frame is read.

#include "format.h"

namespace tarvo::host {

// A place for resolutions it has not, but for Exif's.
inline constexpr MetadataRoom kWebpRoom = {
    .exif = kMostMetadataBytes, .xmp = kMostMetadataBytes, .icc = kMostMetadataBytes};

void decode_webp(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target);
// A file of greys there is none.
inline bool has_no_greys(const ImageForm&) { return false; }
// Without loss, unless a quality is told.
FilePixels encode_webp(const PixelSource& image, const EncodeOptions& options, ByteSink& file);

}  // namespace tarvo::host
