#include "stage.h"

#include <algorithm>
#include <utility>

#include "golden.h"
#include "picture_file.h"
#include "plain_image.h"

namespace tarvo::test {
namespace {

// 0 in the middle of a picture, 255 where no edge is near.
std::uint32_t level_of_spot(int x, int y, const Picture& picture) {
    const int h = 2 * x + 1 - picture.width(), v = 2 * y + 1 - picture.height();
    return static_cast<std::uint32_t>(std::min(255, (h * h + v * v) * 255 / (picture.height() * picture.height())));
}

template <class ColorAt>
void paint(Picture& picture, ColorAt color_at) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) write_pixel(picture, x, y, color_at(x, y));
}

}  // namespace

ObjectRef Stage::photograph(const std::string& name) {
    return host::read_picture_file(session.host, (golden_folder() / "sources" / name).string());
}

ObjectRef Stage::coffee() { return photograph("coffee.ppm"); }
ObjectRef Stage::chelsea() { return photograph("chelsea.ppm"); }

ObjectRef Stage::coffee_of_depth(int depth) {
    const ObjectRef original = coffee();
    const Picture& from = pixels(original);
    ObjectRef made = session.picture(from.width(), from.height(), depth);
    paint(pixels(made), [&](int x, int y) { return read_pixel(from, x, y); });
    return made;
}

ObjectRef Stage::masked_coffee(int depth) {
    ObjectRef made = coffee_of_depth(depth);
    ObjectRef mask = session.picture(pixels(made).width(), pixels(made).height());
    paint(pixels(mask), [&](int x, int y) { return level_of_spot(x, y, pixels(made)) * 0x010101; });
    pixels(made).set_mask(mask);
    return made;
}

ObjectRef Stage::masked_chelsea() {
    ObjectRef made = chelsea();
    pixels(made).set_mask(pixels(masked_coffee()).mask());
    return made;
}

ObjectRef Stage::spot() {
    ObjectRef made = session.picture(96, 64);
    paint(pixels(made), [&](int x, int y) { return 0xFFFFFF - level_of_spot(x, y, pixels(made)) * 0x010101; });
    return made;
}

ObjectRef Stage::rectangle(int left, int top, int width, int height) {
    return session.rectangle(left, top, width, height);
}

ObjectRef Stage::convolution(std::vector<std::int32_t> coefficients) {
    ObjectRef made = session.host.new_instance("TRV_Convolution");
    session.call(made, "SetCoefficients", session.host.new_integer_array(std::move(coefficients)));
    return made;
}

ObjectRef Stage::sepia() {
    constexpr double kElements[3][3] = {{0.393, 0.349, 0.272}, {0.769, 0.686, 0.534}, {0.189, 0.168, 0.131}};
    ObjectRef made = session.host.new_instance("TRV_ColorMatrix");
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            std::array<Value, 2> place = {i, j};
            session.caller.assign(made, "Value", place, kElements[i][j]);
        }
    return made;
}

}  // namespace tarvo::test
