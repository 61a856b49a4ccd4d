#include "image.h"

#include <algorithm>
#include <span>

namespace tarvo::host {

namespace {

std::span<const Rgba> reachable(const ImageForm& form) {
    return std::span(form.palette).first(static_cast<std::size_t>(form.palette_size()));
}

bool is_grey_color(const Rgba& color) { return color.red == color.green && color.green == color.blue; }

const char* name_of(FilePixels::Colors colors) {
    switch (colors) {
        case FilePixels::Colors::black_and_white: return "black and white";
        case FilePixels::Colors::grey: return "grey";
        case FilePixels::Colors::palette: return "palette";
        case FilePixels::Colors::rgb: return "RGB";
        case FilePixels::Colors::inks: return "CMYK";
    }
    return "";
}

}  // namespace

std::string in_words(const FilePixels& pixels) {
    std::string text = name_of(pixels.colors);
    if (pixels.colors != FilePixels::Colors::black_and_white)
        text += ", " + std::to_string(pixels.bits) + (pixels.bits == 1 ? " bit" : " bits") +
                (pixels.colors == FilePixels::Colors::palette ? " a pixel" : " a channel");
    return text + (pixels.alpha ? ", mask" : "");
}

Palette grey_palette(int index_bits) {
    Palette palette = {};
    const int last = (1 << index_bits) - 1;
    for (int i = 0; i <= last; ++i) {
        const auto grey = static_cast<std::uint8_t>(i * 255 / last);
        palette[static_cast<std::size_t>(i)] = {grey, grey, grey};
    }
    return palette;
}

void read_colors(const ImageForm& form, const std::uint8_t* row, Rgba* out) {
    switch (form.layout) {
        case Layout::indexed:
            for (int x = 0; x < form.width; ++x) out[x] = form.palette[row[x]];
            break;
        case Layout::grey_alpha:
            for (int x = 0; x < form.width; ++x, row += 2) out[x] = {row[0], row[0], row[0], row[1]};
            break;
        case Layout::rgb:
            for (int x = 0; x < form.width; ++x, row += 3) out[x] = {row[0], row[1], row[2]};
            break;
        case Layout::rgba:
            for (int x = 0; x < form.width; ++x, row += 4) out[x] = {row[0], row[1], row[2], row[3]};
            break;
    }
}

std::uint8_t luma(const Rgba& color) {
    // The weights sum to 256.
    return static_cast<std::uint8_t>((77 * color.red + 151 * color.green + 28 * color.blue + 128) >> 8);
}

bool has_alpha(const ImageForm& form) {
    if (form.layout != Layout::indexed) return form.layout == Layout::rgba || form.layout == Layout::grey_alpha;
    return std::ranges::any_of(reachable(form), [](const Rgba& color) { return color.alpha != 255; });
}

bool is_grey(const ImageForm& form) {
    if (form.layout != Layout::indexed) return form.layout == Layout::grey_alpha;
    return std::ranges::all_of(reachable(form), is_grey_color);
}

bool is_inverted(const ImageForm& form) {
    return form.layout == Layout::indexed && form.index_bits == 1 && form.palette[0] == kWhite &&
           form.palette[1] == kBlack;
}

bool is_scale_of_greys(const ImageForm& form) {
    if (form.layout != Layout::indexed) return form.layout == Layout::grey_alpha;
    const Palette greys = grey_palette(form.index_bits);
    return is_inverted(form) || std::ranges::equal(reachable(form), std::span(greys).first(reachable(form).size()));
}

bool is_bilevel(const ImageForm& form) {
    return form.layout == Layout::indexed && form.index_bits == 1 &&
           std::ranges::all_of(reachable(form), [](const Rgba& c) { return c == kBlack || c == kWhite; });
}

}  // namespace tarvo::host
