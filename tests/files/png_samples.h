#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarvo::host {

// A PNG file put together by hand: chunk by chunk, its pixels stored without compression.
struct PngSample {
    std::uint32_t width, height;
    int bit_depth, color_type;
    std::vector<std::uint8_t> rows;  // each row with its filter byte; passes one after the other when interlaced
    std::vector<std::uint8_t> palette = {};  // PLTE
    std::vector<std::uint8_t> clear = {};    // tRNS
    std::vector<std::uint8_t> exif = {};     // eXIf
    bool interlaced = false;
    bool exif_behind = false;  // behind the pixels
};

std::vector<std::uint8_t> png_file(const PngSample& sample);

// A TIFF header and one entry: the orientation.
std::vector<std::uint8_t> exif_of_orientation(int orientation, bool big_endian = true);

}  // namespace tarvo::host
