#include "pnm.h"

#include <string>

namespace tarvo::host {

namespace {

Bytes begin(const std::string& header, std::size_t row_bytes, int height) {
    Bytes file;
    file.reserve(header.size() + row_bytes * static_cast<std::size_t>(height));
    file.assign(header.begin(), header.end());
    return file;
}

// "P6\n640 480\n", then what follows.
std::string pnm_header(char kind, const Image& image, const char* rest) {
    return std::string("P") + kind + '\n' + std::to_string(image.width) + ' ' + std::to_string(image.height) + '\n' +
           rest;
}

std::string pam_header(const Image& image, int channels, int maximum, const char* tuple_type) {
    return "P7\nWIDTH " + std::to_string(image.width) + "\nHEIGHT " + std::to_string(image.height) + "\nDEPTH " +
           std::to_string(channels) + "\nMAXVAL " + std::to_string(maximum) + "\nTUPLTYPE " + tuple_type + "\nENDHDR\n";
}

// The file of that header with `channels` bytes for each pixel, which `put(color, bytes)` writes.
template <class Put>
Bytes raw_file(const Image& image, const std::string& header, std::size_t channels, Put put) {
    const std::size_t row_bytes = static_cast<std::size_t>(image.width) * channels;
    Bytes file = begin(header, row_bytes, image.height);
    std::vector<Rgba> colors(static_cast<std::size_t>(image.width));
    for (int y = 0; y < image.height; ++y) {
        read_row(image, y, colors.data());
        file.resize(file.size() + row_bytes);
        std::uint8_t* out = file.data() + file.size() - row_bytes;
        for (const Rgba& color : colors) {
            put(color, out);
            out += channels;
        }
    }
    return file;
}

void put_grey(const Rgba& color, std::uint8_t* out) { out[0] = luma(color); }

void put_rgb(const Rgba& color, std::uint8_t* out) {
    out[0] = color.red;
    out[1] = color.green;
    out[2] = color.blue;
}

void put_rgba(const Rgba& color, std::uint8_t* out) {
    put_rgb(color, out);
    out[3] = color.alpha;
}

}  // namespace

Bytes encode_pbm(const Image& image, const EncodeOptions&) {
    const std::size_t row_bytes = (static_cast<std::size_t>(image.width) + 7) / 8;
    Bytes file = begin(pnm_header('4', image, ""), row_bytes, image.height);
    std::vector<Rgba> colors(static_cast<std::size_t>(image.width));
    for (int y = 0; y < image.height; ++y) {
        read_row(image, y, colors.data());
        file.resize(file.size() + row_bytes);
        std::uint8_t* out = file.data() + file.size() - row_bytes;
        for (std::size_t x = 0; x < colors.size(); ++x)
            if (luma(colors[x]) < 128) out[x / 8] = static_cast<std::uint8_t>(out[x / 8] | 0x80 >> x % 8);
    }
    return file;
}

Bytes encode_pgm(const Image& image, const EncodeOptions&) {
    return raw_file(image, pnm_header('5', image, "255\n"), 1, put_grey);
}

Bytes encode_ppm(const Image& image, const EncodeOptions&) {
    return raw_file(image, pnm_header('6', image, "255\n"), 3, put_rgb);
}

Bytes encode_pam(const Image& image, const EncodeOptions&) {
    if (is_bilevel(image))
        return raw_file(image, pam_header(image, 1, 1, "BLACKANDWHITE"), 1,
                        [](const Rgba& color, std::uint8_t* out) { out[0] = color == kWhite; });
    if (is_grey(image)) return raw_file(image, pam_header(image, 1, 255, "GRAYSCALE"), 1, put_grey);
    if (has_alpha(image)) return raw_file(image, pam_header(image, 4, 255, "RGB_ALPHA"), 4, put_rgba);
    return raw_file(image, pam_header(image, 3, 255, "RGB"), 3, put_rgb);
}

}  // namespace tarvo::host
