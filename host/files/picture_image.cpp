#include "picture_image.h"

#include <algorithm>
#include <string>
#include <vector>

#include "file_error.h"
#include "pixels.h"

namespace tarvo::host {

namespace {

Picture& picture_in(const ObjectRef& reference) { return dynamic_cast<Picture&>(*reference.get()); }

bool is_black_or_white(Rgba color) {
    color.alpha = 255;
    return color == kBlack || color == kWhite;
}

int kept_depth(const Image& image) {
    if (image.layout != Layout::indexed) return 32;
    const bool black_and_white =
        image.index_bits == 1 && is_black_or_white(image.palette[0]) && is_black_or_white(image.palette[1]);
    return black_and_white ? 1 : 8;
}

std::vector<RGBColor> color_table(const Palette& palette) {
    const auto wide = [](std::uint8_t v) { return static_cast<std::uint16_t>(v * 0x101); };
    std::vector<RGBColor> colors;
    for (const Rgba& color : palette) colors.push_back({wide(color.red), wide(color.green), wide(color.blue)});
    return colors;
}

void store_bits(const Image& image, Picture& picture) {
    for (int y = 0; y < image.height; ++y) {
        const std::uint8_t* in = image.row(y);
        std::uint8_t* out = picture.row(y);
        std::fill_n(out, picture.packed_row_bytes(), std::uint8_t{0});
        for (std::size_t x = 0; x < static_cast<std::size_t>(image.width); ++x)
            if (image.palette[in[x]].red == 0) out[x / 8] = static_cast<std::uint8_t>(out[x / 8] | 0x80 >> x % 8);
    }
}

void store_indices(const Image& image, Picture& picture) {
    for (int y = 0; y < image.height; ++y) std::copy_n(image.row(y), image.row_bytes(), picture.row(y));
}

// `word(color)` makes the stored 0x00RRGGBB.
template <class Word>
void store_words(const Image& image, Picture& picture, Word word) {
    std::vector<Rgba> colors(static_cast<std::size_t>(image.width));
    for (int y = 0; y < image.height; ++y) {
        read_row(image, y, colors.data());
        std::uint8_t* out = picture.row(y);
        for (const Rgba& color : colors) {
            const Rgba stored = word(color);
            *out++ = 0;
            *out++ = stored.red;
            *out++ = stored.green;
            *out++ = stored.blue;
        }
    }
}

void store_colors(const Image& image, Picture& picture) {
    store_words(image, picture, [](const Rgba& color) { return color; });
}

ObjectRef mask_of(Host& host, const Image& image) {
    ObjectRef mask = host.new_picture({.width = image.width, .height = image.height});
    store_words(image, picture_in(mask), [](const Rgba& color) {
        const auto grey = static_cast<std::uint8_t>(255 - color.alpha);
        return Rgba{grey, grey, grey};
    });
    return mask;
}

bool is_indexed(const Picture& picture) { return picture.depth() <= 8; }

Rgba rgba(std::uint32_t color) {
    return {static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color)};
}

std::uint8_t index_at(const Picture& picture, const std::uint8_t* row, int x) {
    return static_cast<std::uint8_t>(load_pixel(row, x, picture.depth()));
}

Rgba color_at(const Picture& picture, const std::uint8_t* row, int x) {
    return rgba(color_of(load_pixel(row, x, picture.depth()), picture.depth(), picture.colors()));
}

// The grey of a mask's pixel: an index is a level, not a colour of the table.
std::uint8_t level_at(const Picture& mask, const std::uint8_t* row, int x) {
    return static_cast<std::uint8_t>(color_of(load_pixel(row, x, mask.depth()), mask.depth(), {}));
}

void check_readable(const Picture& picture) {
    if (!picture.row(0)) throw FileError("a picture without pixels cannot be written");
    constexpr int kDepths[] = {1, 2, 4, 8, 16, 24, 32};
    if (std::ranges::find(kDepths, picture.depth()) == std::end(kDepths))
        throw FileError("a picture of depth " + std::to_string(picture.depth()) + " cannot be written");
}

Image indexed_image(const Picture& picture) {
    Image image(picture.width(), picture.height(), Layout::indexed);
    image.index_bits = picture.depth();
    for (int i = 0; i < image.palette_size(); ++i) {
        const auto index = static_cast<std::uint32_t>(i);
        image.palette[index] = rgba(color_of(index, picture.depth(), picture.colors()));
    }
    for (int y = 0; y < image.height; ++y) {
        const std::uint8_t* in = picture.row(y);
        std::uint8_t* out = image.row(y);
        for (int x = 0; x < image.width; ++x) *out++ = index_at(picture, in, x);
    }
    return image;
}

Image color_image(const Picture& picture, Layout layout) {
    Image image(picture.width(), picture.height(), layout);
    for (int y = 0; y < image.height; ++y) {
        const std::uint8_t* in = picture.row(y);
        std::uint8_t* out = image.row(y);
        for (int x = 0; x < image.width; ++x, out += image.pixel_bytes()) {
            const Rgba color = color_at(picture, in, x);
            out[0] = color.red;
            out[1] = color.green;
            out[2] = color.blue;
        }
    }
    return image;
}

void set_alpha(Image& image, const Picture& mask) {
    for (int y = 0; y < image.height; ++y) {
        const int masked = y < mask.height() ? std::min(image.width, mask.width()) : 0;
        const std::uint8_t* in = masked > 0 ? mask.row(y) : nullptr;
        std::uint8_t* alpha = image.row(y) + 3;
        for (int x = 0; x < image.width; ++x, alpha += 4)
            *alpha = x < masked ? static_cast<std::uint8_t>(255 - level_at(mask, in, x)) : std::uint8_t{255};
    }
}

}  // namespace

ObjectRef picture_of(Host& host, const Image& image, bool keep_depth) {
    PictureOptions options{.width = image.width, .height = image.height, .depth = keep_depth ? kept_depth(image) : 32};
    if (options.depth == 8) options.colors = color_table(image.palette);
    ObjectRef made = host.new_picture(options);
    Picture& picture = picture_in(made);
    switch (options.depth) {
        case 1: store_bits(image, picture); break;
        case 8: store_indices(image, picture); break;
        default: store_colors(image, picture); break;
    }
    if (has_alpha(image)) picture.set_mask(mask_of(host, image));
    return made;
}

Image image_of(const Picture& picture) {
    check_readable(picture);
    if (picture.mask()) {
        const Picture& mask = picture_in(picture.mask());
        check_readable(mask);
        Image image = color_image(picture, Layout::rgba);
        set_alpha(image, mask);
        return image;
    }
    return is_indexed(picture) ? indexed_image(picture) : color_image(picture, Layout::rgb);
}

}  // namespace tarvo::host
