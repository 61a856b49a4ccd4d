#include "plain_image.h"

#include <sstream>

namespace tarvo::test {

namespace {

std::uint32_t from_555(std::uint32_t word) {
    const std::uint32_t red = word >> 10 & 31, green = word >> 5 & 31, blue = word & 31;
    return (red * 8) << 16 | (green * 8) << 8 | blue * 8;
}

}  // namespace

std::uint32_t read_pixel(const host::Picture& picture, int x, int y, bool as_mask) {
    if (picture.backing() == host::Backing::drawing_commands) return picture.drawing ? picture.drawing(x, y) : 0xFFFFFF;
    const std::uint8_t* const row = picture.row(y);
    switch (picture.depth()) {
        case 32: {
            const std::uint8_t* const at = row + 4 * x;
            return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
        }
        case 24: {
            const std::uint8_t* const at = row + 3 * x;
            return std::uint32_t{at[0]} << 16 | std::uint32_t{at[1]} << 8 | at[2];
        }
        case 16: return from_555(std::uint32_t{row[2 * x]} << 8 | row[2 * x + 1]);
        case 8: {
            const std::uint32_t value = row[x];
            if (as_mask) return value << 16 | value << 8 | value;
            if (picture.colors().empty()) return 0;
            const RGBColor& entry = picture.colors().at(value);
            return std::uint32_t{entry.red} / 256 << 16 | std::uint32_t{entry.green} / 256 << 8 | entry.blue / 256u;
        }
        default: {
            if (!as_mask) return 0;
            const std::uint32_t value = row[0];
            return value << 16 | value << 8 | value;
        }
    }
}

void write_pixel(host::Picture& picture, int x, int y, std::uint32_t color, bool as_mask) {
    std::uint8_t* const row = picture.row(y);
    const auto byte = [color](int shift) { return static_cast<std::uint8_t>(color >> shift & 255); };
    switch (picture.depth()) {
        case 32:
            for (int i = 0; i < 4; ++i) row[4 * x + i] = byte(24 - 8 * i);
            return;
        case 24:
            for (int i = 0; i < 3; ++i) row[3 * x + i] = byte(16 - 8 * i);
            return;
        case 16: {
            const std::uint32_t word = (color >> 19 & 31) << 10 | (color >> 11 & 31) << 5 | (color >> 3 & 31);
            row[2 * x] = static_cast<std::uint8_t>(word >> 8);
            row[2 * x + 1] = static_cast<std::uint8_t>(word & 255);
            return;
        }
        case 8:
            if (as_mask) row[x] = byte(0);
            return;
        default:
            if (as_mask) row[0] = byte(0);
            return;
    }
}

bool bit_at(const host::Picture& picture, int x, int y) { return picture.row(y)[x / 8] >> (7 - x % 8) & 1; }

PlainImage read_image(const host::Picture& picture, bool as_mask) {
    PlainImage image(picture.width(), picture.height());
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) image.at(x, y) = read_pixel(picture, x, y, as_mask);
    return image;
}

std::string difference(const host::Picture& actual, const PlainImage& expected, int depth, bool as_mask) {
    std::ostringstream text;
    if (actual.width() != expected.width || actual.height() != expected.height || actual.depth() != depth) {
        text << "the picture is " << actual.width() << " x " << actual.height() << " at " << actual.depth()
             << " bits, expected " << expected.width << " x " << expected.height << " at " << depth;
        return text.str();
    }
    // What the expected colours are once they have been stored and read again at this depth.
    const auto stored = host::Picture::make({.width = expected.width, .height = 1, .depth = depth});
    for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) {
            write_pixel(*stored, x, 0, expected.at(x, y), as_mask);
            const std::uint32_t wanted = read_pixel(*stored, x, 0, as_mask);
            const std::uint32_t found = read_pixel(actual, x, y, as_mask);
            if (found == wanted) continue;
            text << std::hex << "pixel (" << std::dec << x << ", " << y << ") is " << std::hex << found << ", expected "
                 << wanted;
            return text.str();
        }
    }
    return {};
}

}  // namespace tarvo::test
