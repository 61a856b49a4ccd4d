#include "pictures.h"

namespace tarvo::test {

namespace {

const char* name_of(host::Backing backing) {
    switch (backing) {
        case host::Backing::graphics_world: return "world";
        case host::Backing::bitmap_context: return "context";
        case host::Backing::pixel_buffer: return "buffer";
        case host::Backing::drawing_commands: return "drawing";
        case host::Backing::refused: return "refused";
    }
    return "";
}

std::vector<RGBColor> random_colors(Random& random, int depth) {
    std::vector<RGBColor> colors(std::size_t{1} << depth);
    for (RGBColor& color : colors) {
        color.red = static_cast<std::uint16_t>(random());
        color.green = static_cast<std::uint16_t>(random());
        color.blue = static_cast<std::uint16_t>(random());
    }
    return colors;
}

}  // namespace

std::string Shape::name() const {
    std::string text = std::to_string(depth) + "-bit " + name_of(backing);
    if (row_padding) text += ", rows padded by " + std::to_string(row_padding);
    if (without_color_table) text += ", no colour table";
    if (mask_depth) text += ", mask of " + std::to_string(mask_depth) + " bits";
    return text;
}

const std::vector<Shape>& source_shapes() {
    static const std::vector<Shape> shapes = {
        {.depth = 1},
        {.depth = 2},
        {.depth = 4},
        {.depth = 8},
        {.depth = 8, .without_color_table = true},
        {.depth = 16},
        {.depth = 16, .row_padding = 3},
        {.depth = 24},
        {.depth = 24, .row_padding = 5},
        {.depth = 32},
        {.depth = 32, .row_padding = 6},
        {.depth = 32, .backing = host::Backing::pixel_buffer},
        {.depth = 32, .backing = host::Backing::drawing_commands},
    };
    return shapes;
}

const std::vector<int>& mask_depths() {
    static const std::vector<int> depths = {0, 1, 2, 4, 8, 16, 24, 32};
    return depths;
}

std::string name_of(const Size& size) { return std::to_string(size.width) + " x " + std::to_string(size.height); }

const std::vector<Size>& empty_sizes() {
    static const std::vector<Size> sizes = {{0, 5}, {5, 0}, {0, 0}, {-3, 4}, {4, -3}, {-3, -4}, {-32767, 2}};
    return sizes;
}

// The standard's own distributions differ from library to library; a seed stands for the same numbers everywhere.
int any_of(Random& random, int low, int high) {
    const auto range = static_cast<std::uint32_t>(high) - static_cast<std::uint32_t>(low) + 1;
    if (range == 0) return static_cast<int>(static_cast<std::uint32_t>(low) + static_cast<std::uint32_t>(random()));
    const auto draw = [&] { return std::uint64_t{static_cast<std::uint32_t>(random())} * range; };
    // Of 2^32 numbers so many are left over when all of the range are to be equally likely.
    const std::uint32_t left_over = (0u - range) % range;
    std::uint64_t drawn = draw();
    while (static_cast<std::uint32_t>(drawn) < left_over) drawn = draw();
    return static_cast<int>(static_cast<std::uint32_t>(low) + static_cast<std::uint32_t>(drawn >> 32));
}

std::uint32_t any_color(Random& random) { return static_cast<std::uint32_t>(random()) & 0xFFFFFF; }

void scribble(Picture& picture, Random& random) {
    if (picture.backing() == host::Backing::drawing_commands) {
        const auto salt = static_cast<std::uint32_t>(random());
        picture.drawing = [salt](int x, int y) {
            return (static_cast<std::uint32_t>(x) * 2654435761u + static_cast<std::uint32_t>(y) * 40503u + salt) >> 8;
        };
        return;
    }
    if (!picture.row(0)) return;  // a refused kind has no pixels
    const std::size_t bytes = picture.packed_row_bytes() + static_cast<std::size_t>(picture.options().row_padding);
    for (int y = 0; y < picture.height(); ++y)
        for (std::size_t i = 0; i < bytes; ++i) picture.row(y)[i] = static_cast<std::uint8_t>(random());
    if (picture.mask()) scribble(pixels(picture.mask()), random);
}

ObjectRef random_picture(Session& session, Random& random, const Shape& shape, int width, int height) {
    host::PictureOptions options{.width = width,
                                 .height = height,
                                 .depth = shape.depth,
                                 .backing = shape.backing,
                                 .without_color_table = shape.without_color_table,
                                 .row_padding = shape.row_padding,
                                 .any_sides = true};
    if (shape.depth <= 8 && !shape.without_color_table) options.colors = random_colors(random, shape.depth);
    const ObjectRef picture = session.host.new_picture(options);
    if (shape.mask_depth)
        pixels(picture).set_mask(
            session.host.new_picture({.width = width, .height = height, .depth = shape.mask_depth, .any_sides = true}));
    scribble(pixels(picture), random);
    return picture;
}

ObjectRef random_mask(Session& session, Random& random, int depth, int width, int height) {
    return random_picture(session, random, {.depth = depth}, width, height);
}

std::vector<std::uint8_t> all_bytes(const ObjectRef& picture) {
    const Picture& whole = pixels(picture);
    std::vector<std::uint8_t> bytes;
    if (whole.row(0)) {  // drawing commands and pictures without rows have none
        const std::size_t count = whole.packed_row_bytes() + static_cast<std::size_t>(whole.options().row_padding);
        for (int y = 0; y < whole.height(); ++y) bytes.insert(bytes.end(), whole.row(y), whole.row(y) + count);
    }
    if (whole.mask()) {
        const auto mask = all_bytes(whole.mask());
        bytes.insert(bytes.end(), mask.begin(), mask.end());
    }
    return bytes;
}

}  // namespace tarvo::test
