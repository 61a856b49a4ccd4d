#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarvo::host {

// A TIFF file made by the library's own writer.
struct TiffSample {
    std::uint32_t width, height;
    int bits, samples, photometric;
    std::vector<std::uint16_t> values;       // `samples` for each pixel, row by row
    std::vector<std::uint16_t> extras = {};  // what the samples behind those of colors are
    int compression = 1;
    std::uint32_t rows_in_a_strip = 2;
    std::uint32_t tile = 0;  // its side; 0: strips
    bool planes = false;
    std::string mode = "l";  // "l" or "b": the byte order; "8": large files' form
    int orientation = 1;
    std::vector<std::uint16_t> palette = {};  // all reds, greens, blues
    int format = 1;                           // of samples
    int pages = 1;
    std::vector<std::uint8_t> profile = {};
    int ink_set = 0;  // 0: not told
};

std::vector<std::uint8_t> tiff_file(const TiffSample& sample);

}  // namespace tarvo::host
