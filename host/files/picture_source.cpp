#include "picture_source.h"

#include <algorithm>
#include <string>

#include "file_error.h"
#include "pixels.h"
#include "stored_rows.h"

namespace tarvo::host {

namespace {

Rgba rgba(std::uint32_t color) {
    return {static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color)};
}

// Returns the grey of a mask's pixel. An index is a level, not a colour of the table.
std::uint8_t level_at(const Picture& mask, const std::uint8_t* row, int x) {
    return static_cast<std::uint8_t>(color_of(load_pixel(row, x, mask.depth()), mask.depth(), {}));
}

void check_readable(const Picture& picture) {
    if (picture.width() <= 0 || picture.height() <= 0 || !picture.row(0))
        throw FileError("a picture without pixels cannot be written");
    constexpr int kDepths[] = {1, 2, 4, 8, 16, 24, 32};
    if (std::ranges::find(kDepths, picture.depth()) == std::end(kDepths))
        throw FileError("a picture of depth " + std::to_string(picture.depth()) + " cannot be written");
}

// Returns the fewest bits that tell so many colours apart, of those that an index may have.
int index_bits_for(std::size_t colors) {
    int bits = 1;
    while (std::size_t{1} << bits < colors) bits *= 2;
    return bits;
}

}  // namespace

PictureSource::PictureSource(const Picture& picture, const FilePixels* like) : picture_(picture) {
    using Colors = FilePixels::Colors;
    check_readable(picture);
    form_.width = picture.width();
    form_.height = picture.height();
    if (picture.mask()) {
        mask_ = &dynamic_cast<const Picture&>(*picture.mask().get());
        check_readable(*mask_);
        form_.layout = Layout::rgba;
    }
    if (!mask_ && picture.depth() <= 8)
        take_stored_indices();
    else if (like && (like->colors == Colors::grey || like->colors == Colors::black_and_white))
        become_grey(like->bits);
    else if (like && like->colors == Colors::palette)
        become_palette();
}

void PictureSource::take_stored_indices() {
    form_.layout = Layout::indexed;
    form_.index_bits = picture_.depth();
    for (int i = 0; i < form_.palette_size(); ++i) {
        const auto index = static_cast<std::uint32_t>(i);
        form_.palette[index] = rgba(color_of(index, picture_.depth(), picture_.colors()));
    }
}

void PictureSource::become_grey(int bits) {
    if (bits != 1 && bits != 2 && bits != 4) bits = 8;
    const Palette few = grey_palette(bits);
    bool are_few = true;
    const bool are_greys = take_all([&](const Rgba& color) {
        are_few = are_few && color.red == few[static_cast<std::size_t>(color.red >> (8 - bits))].red;
        return color.red == color.green && color.green == color.blue;
    });
    if (!are_greys) return;
    form_.layout = mask_ ? Layout::grey_alpha : Layout::indexed;
    if (mask_) return;
    indices_ = Indices::greys;
    form_.index_bits = are_few ? bits : 8;
    form_.palette = grey_palette(form_.index_bits);
}

void PictureSource::become_palette() {
    if (!take_all([&](const Rgba& color) { return colors_.add(color); })) return;
    form_.layout = Layout::indexed;
    indices_ = Indices::palette;
    form_.index_bits = index_bits_for(colors_.size());
    form_.palette = colors_.palette();
}

// Calls `take(color)` for each pixel of a row, as long as it returns true; returns what it returned last.
template <class Take>
bool PictureSource::take_row(int y, Take take) const {
    const std::uint8_t* in = picture_.row(y);
    const int depth = picture_.depth();
    const int masked = mask_ && y < mask_->height() ? std::min(form_.width, mask_->width()) : 0;
    const std::uint8_t* levels = masked > 0 ? mask_->row(y) : nullptr;
    for (int x = 0; x < form_.width; ++x) {
        Rgba color = depth == 32 ? Rgba{in[4 * x + 1], in[4 * x + 2], in[4 * x + 3]}
                                 : rgba(color_of(load_pixel(in, x, depth), depth, picture_.colors()));
        if (x < masked) color.alpha = static_cast<std::uint8_t>(255 - level_at(*mask_, levels, x));
        if (!take(color)) return false;
    }
    return true;
}

template <class Take>
bool PictureSource::take_all(Take take) const {
    for (int y = 0; y < form_.height; ++y)
        if (!take_row(y, take)) return false;
    return true;
}

// Writes a pixel as the form has it, and returns the place behind it.
std::uint8_t* PictureSource::put(const Rgba& color, std::uint8_t* out) const noexcept {
    switch (form_.layout) {
        case Layout::indexed:
            *out = indices_ == Indices::palette ? colors_[color]
                                                : static_cast<std::uint8_t>(color.red >> (8 - form_.index_bits));
            break;
        case Layout::grey_alpha:
            out[0] = color.red;
            out[1] = color.alpha;
            break;
        case Layout::rgba: out[3] = color.alpha; [[fallthrough]];
        case Layout::rgb:
            out[0] = color.red;
            out[1] = color.green;
            out[2] = color.blue;
            break;
    }
    return out + form_.pixel_bytes();
}

void PictureSource::read(int y, std::uint8_t* row) const noexcept {
    if (form_.layout == Layout::indexed && indices_ == Indices::stored) {
        const std::uint8_t* in = picture_.row(y);
        for (int x = 0; x < form_.width; ++x) row[x] = static_cast<std::uint8_t>(load_pixel(in, x, picture_.depth()));
        return;
    }
    if (form_.layout == Layout::rgb && picture_.depth() == 32)
        return load_rgb_row(picture_.row(y), static_cast<std::size_t>(form_.width), row);
    take_row(y, [&](const Rgba& color) {
        row = put(color, row);
        return true;
    });
}

}  // namespace tarvo::host
