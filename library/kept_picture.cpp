#include "kept_picture.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "pixels.h"
#include "sha256.h"

namespace tarvo::library {
namespace {

using host::PictureValue;
using host::Rgba;
using host::SharedPixels;

std::size_t pixel_bytes(tarvo_layout layout) {
    switch (layout) {
        case TARVO_GREY8: return 1;
        case TARVO_RGB24: return 3;
        case TARVO_RGBA32:
        case TARVO_XRGB32: return 4;
    }
    throw wrong_use("there is no layout " + std::to_string(layout));
}

std::string size_text(std::int64_t width, std::int64_t height) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

void check_sides(std::int32_t width, std::int32_t height) {
    if (width < 1 || height < 1) throw wrong_use("a picture cannot have " + size_text(width, height));
    if (width > TARVO_LONGEST_SIDE || height > TARVO_LONGEST_SIDE)
        throw Failure(TARVO_LIMIT, "a picture of " + size_text(width, height) + ": a side may have " +
                                       std::to_string(TARVO_LONGEST_SIDE));
}

void check_possible(const host::PictureOptions& options) {
    if (!host::Picture::is_possible(options))
        throw Failure(TARVO_LIMIT, "a picture of " + size_text(options.width, options.height) +
                                       " would take more than 2147483647 bytes");
}

void check_stride(std::ptrdiff_t stride, std::size_t row_bytes) {
    const std::size_t distance =
        stride < 0 ? std::size_t{0} - static_cast<std::size_t>(stride) : static_cast<std::size_t>(stride);
    if (distance < row_bytes)
        throw wrong_use("the stride is " + std::to_string(stride) + ", a row takes " + std::to_string(row_bytes) +
                        " bytes");
}

// Rows as a program has them: the top one first, with a stride of either sign.
template <class Byte>
Byte* row_at(Byte* pixels, std::ptrdiff_t stride, std::int32_t y) {
    return pixels + stride * y;
}

PictureValue new_value(std::int32_t width, std::int32_t height) {
    const host::PictureOptions options{.width = width, .height = height};
    check_possible(options);
    return {options, SharedPixels::of_size(static_cast<std::size_t>(host::Picture::bytes_of(options))), nullptr};
}

std::size_t row_bytes_of(const host::PictureOptions& options) {
    return (static_cast<std::size_t>(options.width) * static_cast<std::size_t>(options.depth) + 7) / 8 +
           static_cast<std::size_t>(options.row_padding);
}

const std::uint8_t* stored_row(const PictureValue& picture, int y) {
    return picture.pixels.bytes.get() + row_bytes_of(picture.options) * static_cast<std::size_t>(y);
}

std::uint8_t* new_row(PictureValue& picture, int y) {
    return picture.pixels.bytes.get() + row_bytes_of(picture.options) * static_cast<std::size_t>(y);
}

void store(std::uint8_t* pixel, std::uint8_t x, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    pixel[0] = x;
    pixel[1] = red;
    pixel[2] = green;
    pixel[3] = blue;
}

void store_row(const std::uint8_t* from, tarvo_layout layout, std::int32_t width, std::uint8_t* to) {
    const std::size_t step = pixel_bytes(layout);
    if (layout == TARVO_XRGB32) {
        std::memcpy(to, from, step * static_cast<std::size_t>(width));
        return;
    }
    for (std::int32_t x = 0; x < width; ++x, from += step, to += 4) {
        if (layout == TARVO_GREY8)
            store(to, 0, from[0], from[0], from[0]);
        else
            store(to, 0, from[0], from[1], from[2]);
    }
}

// A mask is 0 where the picture is opaque.
void store_mask_row(const std::uint8_t* rgba, std::int32_t width, std::uint8_t* to) {
    for (std::int32_t x = 0; x < width; ++x, rgba += 4, to += 4) {
        const auto level = static_cast<std::uint8_t>(255 - rgba[3]);
        store(to, 0, level, level, level);
    }
}

PictureValue copied_rows(const std::uint8_t* pixels, std::ptrdiff_t stride, std::int32_t width, std::int32_t height,
                         tarvo_layout layout) {
    PictureValue made = new_value(width, height);
    for (std::int32_t y = 0; y < height; ++y) store_row(row_at(pixels, stride, y), layout, width, new_row(made, y));
    if (layout != TARVO_RGBA32) return made;
    PictureValue mask = new_value(width, height);
    for (std::int32_t y = 0; y < height; ++y) store_mask_row(row_at(pixels, stride, y), width, new_row(mask, y));
    made.mask = std::make_shared<const PictureValue>(std::move(mask));
    return made;
}

std::uint32_t color_at(const PictureValue& picture, const std::uint8_t* row, int x) {
    const host::PictureOptions& options = picture.options;
    return host::color_of(host::load_pixel(row, x, options.depth), options.depth, options.colors);
}

void write_row(const Rgba* colors, tarvo_layout layout, const std::uint8_t* stored, std::int32_t width,
               std::uint8_t* to) {
    const std::size_t step = pixel_bytes(layout);
    for (std::int32_t x = 0; x < width; ++x, ++colors, to += step) {
        switch (layout) {
            case TARVO_GREY8: to[0] = host::luma(*colors); break;
            case TARVO_RGBA32: to[3] = colors->alpha; [[fallthrough]];
            case TARVO_RGB24:
                to[0] = colors->red;
                to[1] = colors->green;
                to[2] = colors->blue;
                break;
            case TARVO_XRGB32:
                store(to, stored ? stored[4 * x] : std::uint8_t{0}, colors->red, colors->green, colors->blue);
        }
    }
}

}  // namespace

tarvo_picture* new_picture(const host::Picture& picture, SharedCarried carried) {
    PictureValue value = PictureValue::of(picture);
    if (!value.pixels.bytes) throw Failure(TARVO_OPERATION, "the picture has no pixels");
    return new tarvo_picture(std::move(value), std::move(carried));
}

int channels_of(const PictureValue& picture) { return picture.mask ? 4 : 3; }

void read_row(const PictureValue& picture, int y, Rgba* out) {
    const host::PictureOptions& options = picture.options;
    const std::uint8_t* row = stored_row(picture, y);
    if (options.depth == 32) {
        for (int x = 0; x < options.width; ++x) out[x] = {row[4 * x + 1], row[4 * x + 2], row[4 * x + 3]};
    } else {
        for (int x = 0; x < options.width; ++x) {
            const std::uint32_t color = color_at(picture, row, x);
            out[x] = {static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
                      static_cast<std::uint8_t>(color)};
        }
    }
    if (!picture.mask || y >= picture.mask->options.height) return;
    // A mask's index is a level, not a colour of its table.
    const host::PictureOptions& mask = picture.mask->options;
    const std::uint8_t* levels = stored_row(*picture.mask, y);
    for (int x = 0; x < std::min(options.width, mask.width); ++x)
        out[x].alpha = static_cast<std::uint8_t>(
            255 - (host::color_of(host::load_pixel(levels, x, mask.depth), mask.depth, {}) & 0xFF));
}

}  // namespace tarvo::library

using namespace tarvo::library;

tarvo_status tarvo_picture_from_rows(const void* pixels, ptrdiff_t stride, int32_t width, int32_t height,
                                     tarvo_layout layout, tarvo_picture** picture, tarvo_error** error) {
    if (picture) *picture = nullptr;
    return guarded(error, [&] {
        require(pixels, "pixels");
        require(picture, "picture");
        const std::size_t step = pixel_bytes(layout);
        check_sides(width, height);
        check_stride(stride, step * static_cast<std::size_t>(width));
        *picture =
            new tarvo_picture(copied_rows(static_cast<const std::uint8_t*>(pixels), stride, width, height, layout));
    });
}

tarvo_status tarvo_picture_wrap(const void* xrgb, ptrdiff_t stride, int32_t width, int32_t height,
                                void (*release)(void* context), void* context, tarvo_picture** picture,
                                tarvo_error** error) {
    if (picture) *picture = nullptr;
    return guarded(error, [&] {
        // It calls `release` however this ends: also when there is no memory for it. Nobody writes through it.
        std::shared_ptr<std::uint8_t> memory(const_cast<std::uint8_t*>(static_cast<const std::uint8_t*>(xrgb)),
                                             [release, context](std::uint8_t*) {
                                                 if (release) release(context);
                                             });
        require(xrgb, "xrgb");
        require(picture, "picture");
        check_sides(width, height);
        const std::size_t row_bytes = 4 * static_cast<std::size_t>(width);
        if (stride < 0) throw wrong_use("the stride is " + std::to_string(stride) + ": wrapped rows run downwards");
        check_stride(stride, row_bytes);
        if (stride > std::numeric_limits<std::int32_t>::max()) throw Failure(TARVO_LIMIT, "the stride is too long");
        const tarvo::host::PictureOptions options{
            .width = width,
            .height = height,
            .row_padding = static_cast<int>(static_cast<std::size_t>(stride) - row_bytes)};
        check_possible(options);
        const std::size_t size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(height - 1) + row_bytes;
        *picture = new tarvo_picture(PictureValue{options, {std::move(memory), size}, nullptr});
    });
}

int32_t tarvo_picture_width(const tarvo_picture* picture) { return picture ? picture->value.options.width : 0; }
int32_t tarvo_picture_height(const tarvo_picture* picture) { return picture ? picture->value.options.height : 0; }
int32_t tarvo_picture_depth(const tarvo_picture* picture) { return picture ? picture->value.options.depth : 0; }
int tarvo_picture_has_mask(const tarvo_picture* picture) { return picture && picture->value.mask ? 1 : 0; }

tarvo_status tarvo_picture_to_rows(const tarvo_picture* picture, void* pixels, ptrdiff_t stride, tarvo_layout layout,
                                   tarvo_error** error) {
    return guarded(error, [&] {
        require(picture, "picture");
        require(pixels, "pixels");
        const PictureValue& value = picture->value;
        const int width = value.options.width;
        check_stride(stride, pixel_bytes(layout) * static_cast<std::size_t>(width));
        std::vector<Rgba> colors(static_cast<std::size_t>(width));
        for (int y = 0; y < value.options.height; ++y) {
            read_row(value, y, colors.data());
            write_row(colors.data(), layout, value.options.depth == 32 ? stored_row(value, y) : nullptr, width,
                      row_at(static_cast<std::uint8_t*>(pixels), stride, y));
        }
    });
}

const uint8_t* tarvo_picture_pixels(const tarvo_picture* picture, ptrdiff_t* stride) {
    const bool has_words = picture && picture->value.options.depth == 32;
    if (stride) *stride = has_words ? static_cast<std::ptrdiff_t>(row_bytes_of(picture->value.options)) : 0;
    return has_words ? picture->value.pixels.bytes.get() : nullptr;
}

tarvo_status tarvo_picture_sha256(const tarvo_picture* picture, char hex[65]) {
    return guarded(nullptr, [&] {
        require(hex, "hex");
        hex[0] = '\0';
        require(picture, "picture");
        const PictureValue& value = picture->value;
        const int width = value.options.width, height = value.options.height, channels = channels_of(value);
        const std::string head = "tarvo-pixels 1 " + std::to_string(width) + " " + std::to_string(height) + " " +
                                 std::to_string(channels) + "\n";
        Sha256 sum;
        sum.add({reinterpret_cast<const std::uint8_t*>(head.data()), head.size()});
        std::vector<Rgba> colors(static_cast<std::size_t>(width));
        std::vector<std::uint8_t> bytes(colors.size() * static_cast<std::size_t>(channels));
        for (int y = 0; y < height; ++y) {
            read_row(value, y, colors.data());
            write_row(colors.data(), channels == 4 ? TARVO_RGBA32 : TARVO_RGB24, nullptr, width, bytes.data());
            sum.add(bytes);
        }
        std::memcpy(hex, sum.finish().c_str(), 65);
    });
}

tarvo_picture* tarvo_picture_retain(tarvo_picture* picture) { return retained(picture); }
void tarvo_picture_release(tarvo_picture* picture) { released(picture); }
