#include "pnm.h"

#include <algorithm>
#include <string>
#include <vector>

namespace tarvo::host {

namespace {

// The file of that header with rows of that many bytes, which `put(colors, bytes)` writes; they are 0 before.
template <class Put>
void write_rows(const PixelSource& image, const std::string& header, std::size_t row_bytes, ByteSink& file, Put put) {
    file.write({reinterpret_cast<const std::uint8_t*>(header.data()), header.size()});
    const ImageForm& form = image.form();
    Bytes pixels(form.row_bytes()), row(row_bytes);
    std::vector<Rgba> colors(static_cast<std::size_t>(form.width));
    for (int y = 0; y < form.height; ++y) {
        image.read(y, pixels.data());
        read_colors(form, pixels.data(), colors.data());
        std::ranges::fill(row, std::uint8_t{0});
        put(colors, row.data());
        file.write(row);
    }
}

// "P6\n640 480\n", then what follows.
std::string pnm_header(char kind, const ImageForm& image, const char* rest) {
    return std::string("P") + kind + '\n' + std::to_string(image.width) + ' ' + std::to_string(image.height) + '\n' +
           rest;
}

std::string pam_header(const ImageForm& image, int channels, int maximum, const char* tuple_type) {
    return "P7\nWIDTH " + std::to_string(image.width) + "\nHEIGHT " + std::to_string(image.height) + "\nDEPTH " +
           std::to_string(channels) + "\nMAXVAL " + std::to_string(maximum) + "\nTUPLTYPE " + tuple_type + "\nENDHDR\n";
}

// As `write_rows`, with `channels` bytes for each pixel, which `put(color, bytes)` writes.
template <class Put>
void write_pixels(const PixelSource& image, const std::string& header, std::size_t channels, ByteSink& file, Put put) {
    write_rows(image, header, static_cast<std::size_t>(image.form().width) * channels, file,
               [&](const std::vector<Rgba>& colors, std::uint8_t* out) {
                   for (const Rgba& color : colors) {
                       put(color, out);
                       out += channels;
                   }
               });
}

void put_grey(const Rgba& color, std::uint8_t* out) { out[0] = luma(color); }

void put_grey_alpha(const Rgba& color, std::uint8_t* out) {
    put_grey(color, out);
    out[1] = color.alpha;
}

void put_rgb(const Rgba& color, std::uint8_t* out) {
    out[0] = color.red;
    out[1] = color.green;
    out[2] = color.blue;
}

void put_rgba(const Rgba& color, std::uint8_t* out) {
    put_rgb(color, out);
    out[3] = color.alpha;
}

using Colors = FilePixels::Colors;

}  // namespace

FilePixels encode_pbm(const PixelSource& image, const EncodeOptions&, ByteSink& file) {
    const std::size_t row_bytes = (static_cast<std::size_t>(image.form().width) + 7) / 8;
    write_rows(image, pnm_header('4', image.form(), ""), row_bytes, file,
               [](const std::vector<Rgba>& colors, std::uint8_t* out) {
                   for (std::size_t x = 0; x < colors.size(); ++x)
                       if (luma(colors[x]) < 128) out[x / 8] = static_cast<std::uint8_t>(out[x / 8] | 0x80 >> x % 8);
               });
    return {Colors::black_and_white, 1};
}

FilePixels encode_pgm(const PixelSource& image, const EncodeOptions&, ByteSink& file) {
    write_pixels(image, pnm_header('5', image.form(), "255\n"), 1, file, put_grey);
    return {Colors::grey};
}

FilePixels encode_ppm(const PixelSource& image, const EncodeOptions&, ByteSink& file) {
    write_pixels(image, pnm_header('6', image.form(), "255\n"), 3, file, put_rgb);
    return {Colors::rgb};
}

FilePixels encode_pam(const PixelSource& image, const EncodeOptions&, ByteSink& file) {
    const ImageForm& form = image.form();
    const bool alpha = has_alpha(form);
    if (is_bilevel(form)) {
        write_pixels(image, pam_header(form, 1, 1, "BLACKANDWHITE"), 1, file,
                     [](const Rgba& color, std::uint8_t* out) { out[0] = color == kWhite; });
        return {Colors::black_and_white, 1};
    }
    if (is_grey(form)) {
        if (alpha)
            write_pixels(image, pam_header(form, 2, 255, "GRAYSCALE_ALPHA"), 2, file, put_grey_alpha);
        else
            write_pixels(image, pam_header(form, 1, 255, "GRAYSCALE"), 1, file, put_grey);
        return {Colors::grey};
    }
    if (alpha)
        write_pixels(image, pam_header(form, 4, 255, "RGB_ALPHA"), 4, file, put_rgba);
    else
        write_pixels(image, pam_header(form, 3, 255, "RGB"), 3, file, put_rgb);
    return {Colors::rgb};
}

}  // namespace tarvo::host
