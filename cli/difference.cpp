#include "difference.h"

#include <algorithm>
#include <cstdlib>

namespace tarvo::cli {
namespace {

Rgba8 distance(const Rgba8& a, const Rgba8& b) {
    Rgba8 apart;
    for (std::size_t i = 0; i < apart.size(); ++i) apart[i] = static_cast<std::uint8_t>(std::abs(a[i] - b[i]));
    return apart;
}

template <class Visit>
void for_each_pixel(const Pixels& expected, const Pixels& found, Visit visit) {
    for (int y = 0; y < expected.height(); ++y)
        for (int x = 0; x < expected.width(); ++x) visit(x, y, distance(expected.at(x, y), found.at(x, y)));
}

}  // namespace

Pixels::Pixels(const Picture& picture)
    : width_(picture.width()),
      height_(picture.height()),
      bytes_(std::size_t{4} * static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)) {
    picture.to_rows(bytes_.data(), std::ptrdiff_t{4} * width_, TARVO_RGBA32);
}

Rgba8 Pixels::at(int x, int y) const {
    const auto place =
        4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x));
    return {bytes_[place], bytes_[place + 1], bytes_[place + 2], bytes_[place + 3]};
}

int Difference::largest_of_all() const { return *std::max_element(largest.begin(), largest.end()); }

Difference difference(const Pixels& expected, const Pixels& found) {
    Difference all;
    for_each_pixel(expected, found, [&](int x, int y, const Rgba8& apart) {
        if (apart == Rgba8{}) return;
        for (std::size_t i = 0; i < apart.size(); ++i) all.largest[i] = std::max(all.largest[i], apart[i]);
        if (all.pixels++ == 0) {
            all.x = all.left = all.right = x;
            all.y = all.top = y;
            all.expected = expected.at(x, y);
            all.found = found.at(x, y);
        }
        all.left = std::min(all.left, x);
        all.right = std::max(all.right, x);
        all.bottom = y;
    });
    return all;
}

Picture amplified(const Pixels& expected, const Pixels& found, int largest) {
    std::vector<std::uint8_t> rows;
    for_each_pixel(expected, found, [&](int, int, const Rgba8& apart) {
        // A difference of the mask shows in all three.
        for (std::size_t i = 0; i < 3; ++i)
            rows.push_back(static_cast<std::uint8_t>(std::max(apart[i], apart[3]) * 255 / std::max(largest, 1)));
    });
    return Picture::from_rows(rows.data(), std::ptrdiff_t{3} * expected.width(), expected.width(), expected.height(),
                              TARVO_RGB24);
}

}  // namespace tarvo::cli
