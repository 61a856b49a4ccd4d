// Both gradients, through the built library.

#include <gtest/gtest.h>

#include <cmath>

#include "pictures.h"
#include "plain_image.h"
#include "session.h"

namespace tarvo::test {
namespace {

std::uint32_t plain_color(int j, int d, std::uint32_t p, std::uint32_t q) {
    if (d == 0) return 0;
    const double first = static_cast<double>(d - j) / d, second = static_cast<double>(j) / d;
    return each_channel([&](int shift) {
        return static_cast<int>(std::trunc(channel(p, shift) * first + channel(q, shift) * second));
    });
}

class Gradient : public ::testing::Test {
protected:
    Value call(std::string_view name, std::vector<Value> arguments) { return session.caller.call(name, arguments); }
    Value gradient(int width, int height, std::uint32_t a, std::uint32_t b, int yield = 0) {
        return call("TRV_MakeGradient", {width, height, Color{a}, Color{b}, yield});
    }
    Value gradient(int width, int height, std::uint32_t a, std::uint32_t b, std::uint32_t c, int yield) {
        return call("TRV_MakeDoubleGradient", {width, height, Color{a}, Color{b}, Color{c}, yield});
    }
    std::vector<std::uint32_t> rows_of(const Value& result) {
        std::vector<std::uint32_t> rows;
        const PlainImage image = read_image(*picture_in(result));
        for (int y = 0; y < image.height; ++y) rows.push_back(image.at(0, y));
        return rows;
    }

    Session session;
    Random random{7401};
};

TEST_F(Gradient, AgreesWithTheJudge) {
    for (const int height : {1, 2, 3, 4, 5, 7, 100, 255, 256, 257, 1000}) {
        const int width = std::array{1, 30, 511, 512, 513, 1025}[random() % 6];
        const std::uint32_t a = any_color(random), b = any_color(random);
        const Value result = gradient(width, height, a, b);
        ASSERT_TRUE(picture_in(result)) << session.last_error();
        EXPECT_EQ(session.last_error(), 0);
        PlainImage expected(width, height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) expected.at(x, y) = plain_color(y, height - 1, a, b);
        EXPECT_EQ(difference(*picture_in(result), expected, 32), "") << width << " x " << height;
    }
}

TEST_F(Gradient, TheDoubleOneAgreesWithTheJudge) {
    for (const int height : {1, 2, 3, 4, 5, 7, 100, 255, 256, 257, 1000}) {
        const int width = std::array{1, 30, 511, 512, 513, 1025}[random() % 6];
        const std::uint32_t a = any_color(random), b = any_color(random), c = any_color(random);
        const Value result = gradient(width, height, a, b, c, 0);
        ASSERT_TRUE(picture_in(result)) << session.last_error();
        EXPECT_EQ(session.last_error(), 0);
        PlainImage expected(width, height);
        const int half = height / 2;
        for (int y = 0; y < height; ++y) {
            const std::uint32_t color =
                y < half ? plain_color(y, half - 1, a, b) : plain_color(y - half, height - 1 - half, b, c);
            for (int x = 0; x < width; ++x) expected.at(x, y) = color;
        }
        EXPECT_EQ(difference(*picture_in(result), expected, 32), "") << width << " x " << height;
    }
}

// Sums of two rounded products do not always reach what the exact ones do: here they must come to just that.
TEST_F(Gradient, FlatGradientsAreComputedLikeAnyOther) {
    for (const std::uint32_t level : {1u, 77u, 128u, 255u}) {
        const std::uint32_t color = level * 0x010101;
        const auto rows = rows_of(gradient(1, 1000, color, color));
        for (int y = 0; y < 1000; ++y) {
            ASSERT_EQ(rows[static_cast<std::size_t>(y)], plain_color(y, 999, color, color));
            ASSERT_LE(rows[static_cast<std::size_t>(y)], color);
        }
    }
}

TEST_F(Gradient, KnownRows) {
    using Rows = std::vector<std::uint32_t>;
    EXPECT_EQ(rows_of(gradient(1, 3, 0x000000, 0xFFFFFF)), (Rows{0x000000, 0x7F7F7F, 0xFFFFFF}));
    EXPECT_EQ(rows_of(gradient(2, 2, 0x123456, 0x654321)), (Rows{0x123456, 0x654321}));
    EXPECT_EQ(rows_of(gradient(2, 4, 0xFF0000, 0x00FF00, 0x0000FF, 0)), (Rows{0xFF0000, 0x00FF00, 0x00FF00, 0x0000FF}));
}

TEST_F(Gradient, ASectionOfASingleRowIsBlack) {
    using Rows = std::vector<std::uint32_t>;
    EXPECT_EQ(rows_of(gradient(3, 1, 0xFFFFFF, 0xFFFFFF)), (Rows{0}));
    EXPECT_EQ(rows_of(gradient(3, 1, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0)), (Rows{0}));
    EXPECT_EQ(rows_of(gradient(3, 2, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0)), (Rows{0, 0}));
    EXPECT_EQ(rows_of(gradient(3, 3, 0xFFFFFF, 0x123456, 0x654321, 0)), (Rows{0, 0x123456, 0x654321}));
}

TEST_F(Gradient, TheTopByteOfColorsIsIgnored) {
    const Value result = session.invoke("TRV_MakeGradient(", 1, 2, Color{0xAB123456}, Color{0xCD654321}, 0);
    EXPECT_EQ(rows_of(result), (std::vector<std::uint32_t>{0x123456, 0x654321}));
}

// Both sizes are tested, and the later code stays.
TEST_F(Gradient, ChecksComeInOrder) {
    for (const bool twice : {false, true}) {
        const auto code = [&](int width, int height) {
            const Value result = twice ? gradient(width, height, 1, 2, 3, 0) : gradient(width, height, 1, 2);
            EXPECT_EQ(picture_in(result) == nullptr, session.last_error() != 0);
            return session.last_error();
        };
        for (const int wrong : {0, -1, -2147483647 - 1}) {
            EXPECT_EQ(code(wrong, 1), 34);
            EXPECT_EQ(code(1, wrong), 35);
            EXPECT_EQ(code(wrong, wrong), 35);
        }
        EXPECT_EQ(code(1, 1), 0);
        EXPECT_EQ(code(2147483647, 2147483647), 6);
        EXPECT_EQ(code(40000, 1), 6);
        session.host.faults.fail_at("newPicture", 1);
        EXPECT_EQ(code(2, 2), 6);
    }
}

TEST_F(Gradient, NothingIsLeftBehindAndTheHostGetsNoControl) {
    const auto before = session.host.accounts();
    ASSERT_TRUE(picture_in(gradient(60, 40, 1, 2, 1)));
    ASSERT_TRUE(picture_in(gradient(60, 40, 1, 2, 3, 1)));
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_EQ(session.host.yields(), 0);
}

}  // namespace
}  // namespace tarvo::test
