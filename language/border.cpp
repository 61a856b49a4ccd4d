#include "border.h"

#include <algorithm>
#include <cstdlib>

#include "pixels.h"

namespace tarvo::language {
namespace {

class Border {
public:
    Border(const host::Picture& picture, std::int32_t levels)
        : picture_(picture), levels_(levels), corner_(color(picture.row(0), 0)) {}

    bool is_row(int y) const { return first_inside(y, picture_.width()) == picture_.width(); }

    // Returns the first place before `end` with another colour than the border's; `end` if there is none.
    int first_inside(int y, int end) const {
        const std::uint8_t* row = picture_.row(y);
        int x = 0;
        while (x < end && is_border(row, x)) ++x;
        return x;
    }

    // Returns the place behind the last one, not before `begin`, with another colour; `begin` if there is none.
    int end_of_inside(int y, int begin) const {
        const std::uint8_t* row = picture_.row(y);
        int x = picture_.width();
        while (x > begin && is_border(row, x - 1)) --x;
        return x;
    }

private:
    std::uint32_t color(const std::uint8_t* row, int x) const {
        return host::color_of(host::load_pixel(row, x, picture_.depth()), picture_.depth(), picture_.colors());
    }

    bool is_border(const std::uint8_t* row, int x) const {
        const std::uint32_t here = color(row, x);
        const auto far = [&](int shift) {
            const auto level = [&](std::uint32_t c) { return static_cast<std::int32_t>(c >> shift & 255); };
            return std::abs(level(here) - level(corner_)) > levels_;
        };
        return !far(16) && !far(8) && !far(0);
    }

    const host::Picture& picture_;
    const std::int32_t levels_;
    const std::uint32_t corner_;
};

}  // namespace

std::optional<Area> inside_border(const host::Picture& picture, std::int32_t levels) {
    if (picture.width() < 1 || picture.height() < 1 || !picture.row(0)) return std::nullopt;
    const Border border(picture, levels);
    int top = 0, bottom = picture.height();
    while (top < bottom && border.is_row(top)) ++top;
    if (top == bottom) return std::nullopt;
    while (border.is_row(bottom - 1)) --bottom;
    int left = picture.width(), right = 0;
    for (int y = top; y < bottom; ++y) {
        left = border.first_inside(y, left);
        right = border.end_of_inside(y, right);
    }
    return Area{left, top, right - left, bottom - top};
}

}  // namespace tarvo::language
