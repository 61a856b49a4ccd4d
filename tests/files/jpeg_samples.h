#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace tarvo::host {

enum class JpegColors { grey, rgb, ycc, cmyk, adobe_cmyk, adobe_ycck, two_channels };

// A JPEG file of the best quality. `samples`: one byte a channel, as the file's makers count them.
struct JpegSample {
    unsigned width, height;
    JpegColors colors;
    std::vector<std::uint8_t> samples;
    std::vector<std::uint8_t> exif = {};  // without the mark that goes before it
    bool progressive = false;
    bool separate_scans = false;                     // of three channels: a scan each
    std::vector<std::pair<int, int>> sampling = {};  // of each channel, across and down; none: 1, 1
};

std::vector<std::uint8_t> jpeg_file(const JpegSample& sample);

}  // namespace tarvo::host
