// What is left of a picture without its border.

#include "border.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "host.h"

namespace tarvo::language {
namespace {

class BorderTest : public testing::Test {
protected:
    // A picture of one colour, but for one pixel.
    host::ObjectRef spotted(std::uint32_t border, std::uint32_t spot) {
        const host::ObjectRef made = host.new_picture({.width = 5, .height = 4});
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 5; ++x) put(made, x, y, border);
        put(made, 3, 1, spot);
        return made;
    }
    static host::Picture& picture_in(const host::ObjectRef& reference) {
        return dynamic_cast<host::Picture&>(*reference.get());
    }
    static void put(const host::ObjectRef& picture, int x, int y, std::uint32_t color) {
        std::uint8_t* const pixel = picture_in(picture).row(y) + 4 * x;
        for (int i = 1; i < 4; ++i) pixel[i] = static_cast<std::uint8_t>(color >> (24 - 8 * i));
    }

    host::Host host;
};

TEST_F(BorderTest, EveryChannelCounts) {
    for (const int shift : {16, 8, 0}) {
        const std::uint32_t gray = 0x808080, step = 1u << shift;
        for (const std::uint32_t spot : {gray + 11 * step, gray - 11 * step}) {
            const host::ObjectRef picture = spotted(gray, spot);
            const auto inside = inside_border(picture_in(picture), 10);
            ASSERT_TRUE(inside) << std::hex << spot;
            EXPECT_EQ(inside->left, 3);
            EXPECT_EQ(inside->top, 1);
            EXPECT_EQ(inside->width, 1);
            EXPECT_EQ(inside->height, 1);
            EXPECT_FALSE(inside_border(picture_in(picture), 11)) << std::hex << spot;
        }
    }
}

TEST_F(BorderTest, PicturesWithoutPixelsHaveNone) {
    for (const host::PictureOptions& options : {host::PictureOptions{.width = 0, .height = 3, .any_sides = true},
                                                {.width = 3, .height = 0, .any_sides = true},
                                                {.width = 3, .height = 3, .backing = host::Backing::refused}})
        EXPECT_FALSE(inside_border(picture_in(host.new_picture(options)), 0));
}

}  // namespace
}  // namespace tarvo::language
