#include "jpeg_samples.h"

#include <cstdio>  // jpeglib.h needs it
#include <cstdlib>

#include <jpeglib.h>

namespace tarvo::host {

namespace {

struct Spaces {
    J_COLOR_SPACE given, stored;
    int channels;
    bool adobe;
};

Spaces spaces_of(JpegColors colors) {
    switch (colors) {
        case JpegColors::grey: return {JCS_GRAYSCALE, JCS_GRAYSCALE, 1, false};
        case JpegColors::rgb: return {JCS_RGB, JCS_RGB, 3, true};
        case JpegColors::ycc: return {JCS_RGB, JCS_YCbCr, 3, false};
        case JpegColors::cmyk: return {JCS_CMYK, JCS_CMYK, 4, false};
        case JpegColors::adobe_cmyk: return {JCS_CMYK, JCS_CMYK, 4, true};
        case JpegColors::adobe_ycck: return {JCS_CMYK, JCS_YCCK, 4, true};
        case JpegColors::two_channels: return {JCS_UNKNOWN, JCS_UNKNOWN, 2, false};
    }
    std::abort();
}

}  // namespace

std::vector<std::uint8_t> jpeg_file(const JpegSample& sample) {
    const Spaces spaces = spaces_of(sample.colors);
    jpeg_compress_struct info;
    jpeg_error_mgr errors;  // ends the program, which is right for a test's own mistake
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* file = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &file, &size);
    info.image_width = sample.width;
    info.image_height = sample.height;
    info.input_components = spaces.channels;
    info.in_color_space = spaces.given;
    jpeg_set_defaults(&info);
    jpeg_set_colorspace(&info, spaces.stored);
    info.write_Adobe_marker = spaces.adobe;
    for (int i = 0; i < spaces.channels; ++i) info.comp_info[i].h_samp_factor = info.comp_info[i].v_samp_factor = 1;
    for (std::size_t i = 0; i < sample.sampling.size(); ++i) {
        info.comp_info[i].h_samp_factor = sample.sampling[i].first;
        info.comp_info[i].v_samp_factor = sample.sampling[i].second;
    }
    jpeg_set_quality(&info, 100, TRUE);
    if (sample.progressive) jpeg_simple_progression(&info);
    static const jpeg_scan_info kScans[] = {{1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    if (sample.separate_scans) {
        info.scan_info = kScans;
        info.num_scans = 3;
    }
    jpeg_start_compress(&info, TRUE);
    if (!sample.exif.empty()) {
        std::vector<std::uint8_t> marker = {'E', 'x', 'i', 'f', 0, 0};
        marker.insert(marker.end(), sample.exif.begin(), sample.exif.end());
        jpeg_write_marker(&info, JPEG_APP0 + 1, marker.data(), static_cast<unsigned>(marker.size()));
    }
    const std::size_t row_bytes = std::size_t{sample.width} * static_cast<std::size_t>(spaces.channels);
    std::vector<std::uint8_t> samples = sample.samples;
    for (std::size_t y = 0; y < sample.height; ++y) {
        JSAMPROW row = samples.data() + y * row_bytes;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::vector<std::uint8_t> result(file, file + size);
    std::free(file);
    return result;
}

}  // namespace tarvo::host
