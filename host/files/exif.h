#pragma once

#include <cstdint>
#include <span>

namespace tarvo::host {

// The orientation, 1 to 8, that Exif data tell; 1 when they tell none. The data begin with their TIFF header.
int exif_orientation(std::span<const std::uint8_t> tiff);

}  // namespace tarvo::host
