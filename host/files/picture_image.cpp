#include "picture_image.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "file_error.h"
#include "pixels.h"
#include "stored_rows.h"

namespace tarvo::host {

namespace {

Picture& picture_in(const ObjectRef& reference) { return dynamic_cast<Picture&>(*reference.get()); }

bool is_black_or_white(Rgba color) {
    color.alpha = 255;
    return color == kBlack || color == kWhite;
}

int kept_depth(const ImageForm& form) {
    if (form.layout != Layout::indexed) return 32;
    const bool black_and_white =
        form.index_bits == 1 && is_black_or_white(form.palette[0]) && is_black_or_white(form.palette[1]);
    return black_and_white ? 1 : 8;
}

std::vector<RGBColor> color_table(const Palette& palette) {
    const auto wide = [](std::uint8_t v) { return static_cast<std::uint16_t>(v * 0x101); };
    std::vector<RGBColor> colors;
    for (const Rgba& color : palette) colors.push_back({wide(color.red), wide(color.green), wide(color.blue)});
    return colors;
}

// A place in a picture.
struct Point {
    int x, y;
};

// Returns where a stored pixel of an image of that size is seen.
Point seen_at(Point stored, int width, int height, const Turn& turn) {
    const int x = turn.flip_x ? width - 1 - stored.x : stored.x;
    const int y = turn.flip_y ? height - 1 - stored.y : stored.y;
    return turn.transposed ? Point{y, x} : Point{x, y};
}

// Calls `visit(place, i)` for the pixels of a run, of which the seen picture has `pixel_bytes` bytes each.
template <class Visit>
void for_each_pixel(const PixelRun& run, const ImageForm& form, const Turn& turn, Picture& seen,
                    std::ptrdiff_t pixel_bytes, Visit visit) {
    const Point first = seen_at({run.x, run.y}, form.width, form.height, turn);
    const std::ptrdiff_t along = turn.transposed ? static_cast<std::ptrdiff_t>(seen.packed_row_bytes()) : pixel_bytes;
    const std::ptrdiff_t step = (turn.flip_x ? -along : along) * run.step;
    std::uint8_t* place = seen.row(first.y) + first.x * pixel_bytes;
    if (step == pixel_bytes) {  // a constant makes the usual loop fast
        for (int i = 0; i < run.count; ++i) visit(place + i * pixel_bytes, i);
        return;
    }
    for (int i = 0; i < run.count; ++i) visit(place + i * step, i);
}

template <Layout layout>
Rgba pixel(const std::uint8_t* pixels, const Palette& palette, int i) {
    const std::uint8_t* p = pixels + i * static_cast<int>(layout);
    if constexpr (layout == Layout::indexed) return palette[*p];
    if constexpr (layout == Layout::grey_alpha) return {p[0], p[0], p[0], p[1]};
    return {p[0], p[1], p[2], layout == Layout::rgba ? p[3] : std::uint8_t{255}};
}

}  // namespace

PictureOptions PictureBuilder::options(int depth) const {
    PictureOptions made{.width = form_.width, .height = form_.height, .depth = depth};
    if (turn_.transposed) std::swap(made.width, made.height);
    if (depth == 8) made.colors = color_table(form_.palette);
    return made;
}

// Memory is not touched before pixels arrive, so what a file only claims costs nothing. Bits are set one by one, in a
// picture that begins white.
void PictureBuilder::begin(const ImageForm& form, std::uint64_t working_bytes) {
    form_ = form;
    begun_ = true;
    const PictureOptions picture = options(keep_depth_ ? kept_depth(form) : 32), mask = options(32);
    const bool masked = has_alpha(form);
    if (working_bytes != 0)
        host_.check_memory(Picture::bytes_of(picture) + (masked ? Picture::bytes_of(mask) : 0) + working_bytes,
                           "a picture of " + std::to_string(picture.width) + " x " + std::to_string(picture.height) +
                               " pixels and what decoding it takes");
    picture_ = host_.new_picture(picture, picture.depth == 1 ? Picture::Paper::white : Picture::Paper::unset);
    shown_ = &picture_in(picture_);
    if (!masked) return;
    shown_->set_mask(host_.new_picture(mask, Picture::Paper::unset));
    mask_ = &picture_in(shown_->mask());
}

void PictureBuilder::put(const PixelRun& run) noexcept {
    switch (shown_->depth()) {
        case 1: put_bits(run); break;
        case 8: put_indices(run); break;
        default: put_words(run); break;
    }
    if (mask_) put_alpha(run);
}

std::uint8_t* PictureBuilder::stored_row(int y) noexcept {
    return form_.layout == Layout::rgb && !turn_.turns() ? shown_->row(y) : nullptr;
}

// `word(color)` makes the stored 0x00RRGGBB.
template <Layout layout, class Word>
void PictureBuilder::put_as(const PixelRun& run, Picture& seen, Word word) noexcept {
    for_each_pixel(run, form_, turn_, seen, 4, [&](std::uint8_t* place, int i) {
        const Rgba stored = word(pixel<layout>(run.pixels, form_.palette, i));
        place[0] = 0;
        place[1] = stored.red;
        place[2] = stored.green;
        place[3] = stored.blue;
    });
}

template <class Word>
void PictureBuilder::put_each(const PixelRun& run, Picture& seen, Word word) noexcept {
    switch (form_.layout) {
        case Layout::indexed: return put_as<Layout::indexed>(run, seen, word);
        case Layout::grey_alpha: return put_as<Layout::grey_alpha>(run, seen, word);
        case Layout::rgb: return put_as<Layout::rgb>(run, seen, word);
        case Layout::rgba: return put_as<Layout::rgba>(run, seen, word);
    }
}

void PictureBuilder::put_words(const PixelRun& run) noexcept {
    const auto count = static_cast<std::size_t>(run.count);
    const bool as_stored = run.step == 1 && !turn_.turns();
    if (as_stored && form_.layout == Layout::rgb)
        return store_row<3>(run.pixels, count, shown_->row(run.y) + 4 * run.x);
    if (as_stored && form_.layout == Layout::rgba)
        return store_row<4>(run.pixels, count, shown_->row(run.y) + 4 * run.x);
    put_each(run, *shown_, [](const Rgba& color) { return color; });
}

void PictureBuilder::put_alpha(const PixelRun& run) noexcept {
    put_each(run, *mask_, [](const Rgba& color) {
        const auto grey = static_cast<std::uint8_t>(255 - color.alpha);
        return Rgba{grey, grey, grey};
    });
}

void PictureBuilder::put_indices(const PixelRun& run) noexcept {
    for_each_pixel(run, form_, turn_, *shown_, 1, [&](std::uint8_t* place, int i) { *place = run.pixels[i]; });
}

void PictureBuilder::put_bits(const PixelRun& run) noexcept {
    for (int i = 0; i < run.count; ++i) {
        if (form_.palette[run.pixels[i]].red != 0) continue;
        const Point at = seen_at({run.x + i * run.step, run.y}, form_.width, form_.height, turn_);
        store_pixel(shown_->row(at.y), at.x, 1, 1);
    }
}

Carried PictureBuilder::carried() {
    carried_.pixels = form_.file;
    carried_.pixels.alpha = has_alpha(form_);
    if (!carried_.metadata.resolution) carried_.metadata.resolution = resolution_of_exif(carried_.metadata.exif);
    make_true(carried_.metadata, shown_->width(), shown_->height());
    if (turn_.transposed) {
        if (auto& resolution = carried_.metadata.resolution) std::swap(resolution->x, resolution->y);
        if (auto& jpeg = carried_.jpeg) std::swap(jpeg->across, jpeg->down);
    }
    return std::move(carried_);
}

void PictureBuilder::turn(int orientation) {
    const Turn turn = turn_of(orientation);
    if (begun_ && turn.turns()) {
        ObjectRef seen = turned(*shown_, turn);
        if (mask_) picture_in(seen).set_mask(turned(*mask_, turn));
        picture_ = std::move(seen);
    }
    turn_ = turn;
}

// Turns a picture that is there already, for the rare file whose orientation stands behind its pixels.
ObjectRef PictureBuilder::turned(const Picture& stored, const Turn& turn) const {
    PictureOptions options = stored.options();
    if (turn.transposed) std::swap(options.width, options.height);
    ObjectRef made = host_.new_picture(options);
    Picture& seen = picture_in(made);
    for (int y = 0; y < stored.height(); ++y)
        for (int x = 0; x < stored.width(); ++x) {
            const Point at = seen_at({x, y}, stored.width(), stored.height(), turn);
            store_pixel(seen.row(at.y), at.x, stored.depth(), load_pixel(stored.row(y), x, stored.depth()));
        }
    return made;
}

}  // namespace tarvo::host
