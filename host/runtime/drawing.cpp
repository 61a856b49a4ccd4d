#include "drawing.h"

#include <algorithm>

#include "pixels.h"

namespace tarvo::host {
namespace {

// Keeps the pixels of a map locked for as long as it lives.
class LockedPixels {
public:
    explicit LockedPixels(PixMapHandle pixels) : pixels_(LockPixels(pixels) ? pixels : nullptr) {}
    ~LockedPixels() {
        if (pixels_) UnlockPixels(pixels_);
    }
    LockedPixels(const LockedPixels&) = delete;
    LockedPixels& operator=(const LockedPixels&) = delete;
    explicit operator bool() const { return pixels_ != nullptr; }

private:
    PixMapHandle pixels_;
};

std::vector<RGBColor> colors_of(const PixMap& map) {
    std::vector<RGBColor> colors;
    if (!map.pmTable || !*map.pmTable) return colors;
    const ColorTable& table = **map.pmTable;
    for (int i = 0; i <= table.ctSize; ++i) colors.push_back(table.ctTable[i].rgb);
    return colors;
}

Rect intersection(const Rect& a, const Rect& b) {
    return {std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom), std::min(a.right, b.right)};
}

std::uint32_t color_at(const Picture& picture, int x, int y) {
    if (const std::uint8_t* row = picture.row(y)) {
        return color_of(load_pixel(row, x, picture.depth()), picture.depth(), picture.colors());
    }
    return picture.drawing ? picture.drawing(x, y) : 0xFFFFFF;
}

// Returns which of `size` pixels is shown at place `at`, when they are drawn over `length` places.
int nearest(int at, int length, int size) { return static_cast<int>(static_cast<std::int64_t>(at) * size / length); }

}  // namespace

void draw_picture(const Picture& picture, const Rect& where, PixMapHandle target) {
    const LockedPixels locked(target);
    if (!locked) return;
    const PixMap& map = **target;
    const std::vector<RGBColor> colors = colors_of(map);
    const Rect visible = intersection(where, map.bounds);
    const int width = where.right - where.left;
    const int height = where.bottom - where.top;
    for (int y = visible.top; y < visible.bottom; ++y) {
        std::uint8_t* row = map.baseAddr + static_cast<std::ptrdiff_t>(y - map.bounds.top) * map.rowBytes;
        const int source_y = nearest(y - where.top, height, picture.height());
        for (int x = visible.left; x < visible.right; ++x) {
            const std::uint32_t color = color_at(picture, nearest(x - where.left, width, picture.width()), source_y);
            store_pixel(row, x - map.bounds.left, map.pixelSize, value_of(color, map.pixelSize, colors));
        }
    }
}

}  // namespace tarvo::host
