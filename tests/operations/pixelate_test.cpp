// Pixelate, through the built library.

#include <gtest/gtest.h>

#include "judge.h"
#include "session.h"

namespace tarvo::test {
namespace {

// Blocks as they come, each from the picture as it is by then.
PlainImage plain_mosaic(const PlainImage& source, const Area& area, std::int64_t n, int depth) {
    PlainImage result = source;
    for (std::uint32_t& color : result.colors) color = once_stored(color, depth);
    const std::int64_t left = std::max(area.left, 0), right = std::min(area.left + area.width, source.width) - 1;
    const std::int64_t top = std::max(area.top, 0), bottom = std::min(area.top + area.height, source.height) - 1;
    for (std::int64_t y = top; y < bottom; y += n) {
        for (std::int64_t x = left; x < right; x += n) {
            const auto for_each_pixel = [&](auto visit) {
                for (std::int64_t row = y; row < std::min<std::int64_t>(y + n, source.height); ++row)
                    for (std::int64_t column = x; column < std::min<std::int64_t>(x + n, source.width); ++column)
                        visit(result.at(static_cast<int>(column), static_cast<int>(row)));
            };
            std::int64_t sums[3] = {}, count = 0;
            for_each_pixel([&](std::uint32_t color) {
                for (int i = 0; i < 3; ++i) sums[i] += channel(color, 8 * i);
                ++count;
            });
            const std::uint32_t mean = each_channel([&](int shift) { return sums[shift / 8] / count; });
            for_each_pixel([&](std::uint32_t& color) { color = once_stored(mean, depth); });
        }
    }
    return result;
}

class Pixelate : public ::testing::Test {
protected:
    Value pixelate(const ObjectRef& source, const ObjectRef& rectangle, int pixelation) {
        return session.call(source, "TRV_Pixelate", rectangle, pixelation);
    }
    void expect_mosaic(const ObjectRef& source, const Area& area, int pixelation) {
        const auto before = all_bytes(source);
        const Value result =
            pixelate(source, session.rectangle(area.left, area.top, area.width, area.height), pixelation);
        ASSERT_TRUE(picture_in(result)) << session.last_error();
        EXPECT_EQ(session.last_error(), 0);
        const int depth = std::max(pixels(source).depth(), 16);
        EXPECT_EQ(
            difference(*picture_in(result), plain_mosaic(read_image(pixels(source)), area, pixelation, depth), depth),
            "")
            << "by " << pixelation;
        EXPECT_FALSE(picture_in(result)->mask());
        EXPECT_EQ(all_bytes(source), before);
    }

    Session session;
    Random random{7301};
};

TEST_F(Pixelate, EveryKindAndMaskAgreesWithTheJudge) {
    for (Shape shape : source_shapes()) {
        for (const int mask_depth : mask_depths()) {
            if (shape.backing == host::Backing::drawing_commands && mask_depth) continue;
            shape.mask_depth = mask_depth;
            const int width = any_of(random, 1, 60), height = any_of(random, 1, 40);
            SCOPED_TRACE(shape.name() + ", " + std::to_string(width) + " x " + std::to_string(height));
            const ObjectRef source = random_picture(session, random, shape, width, height);
            for (const int pixelation : {1, 2, any_of(random, 3, 20), 100})
                expect_mosaic(source, any_area(random, width, height), pixelation);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

// Around what fits in a chunk of a row, and in the sums of a column.
TEST_F(Pixelate, WidePicturesAndLargeBlocksAgreeWithTheJudge) {
    const ObjectRef wide = random_picture(session, random, {}, 1600, 20);
    for (const int pixelation : {1, 7, 8, 9, 255, 256, 257, 511, 512, 513, 700, 1600, 5000})
        expect_mosaic(wide, {3, 1, 1590, 18}, pixelation);
    const ObjectRef high = random_picture(session, random, {}, 9, 1100);
    for (const int pixelation : {255, 256, 257, 513, 1025, 3000}) expect_mosaic(high, {0, 2, 9, 1090}, pixelation);
}

// Around the longest run that is summed up at once.
TEST_F(Pixelate, VeryWidePicturesAgreeWithTheJudge) {
    const ObjectRef source = random_picture(session, random, {}, 9000, 3);
    for (const int pixelation : {1, 3, 8, 1000, 4095, 4096, 4097, 8192, 20000})
        expect_mosaic(source, {1, 0, 8999, 3}, pixelation);
}

TEST_F(Pixelate, TheLargestBlocksDoNotOverflow) {
    const ObjectRef source = random_picture(session, random, {}, 40, 30);
    for (const int pixelation : {2147483647, 2147483640, 1 << 30}) expect_mosaic(source, {5, 4, 30, 20}, pixelation);
}

TEST_F(Pixelate, BlocksOfALargeWhitePictureStayWhite) {
    const ObjectRef source = session.host.new_picture({.width = 5000, .height = 4000, .depth = 24});  // 2^32 in all
    const Value result = pixelate(source, {}, 100000);
    for (const auto& [x, y] : {std::pair{0, 0}, {4999, 3999}, {2500, 17}})
        EXPECT_EQ(read_pixel(*picture_in(result), x, y), 0xFFFFFFu);
}

// No block begins on the last row or column of the region, so that a region one pixel wide or high stays.
TEST_F(Pixelate, ALineIsLeftAsItIs) {
    const ObjectRef source = random_picture(session, random, {}, 20, 20);
    const PlainImage image = read_image(pixels(source));
    for (const Area& area : {Area{3, 0, 1, 20}, Area{0, 3, 20, 1}, Area{19, 19, 5, 5}}) {
        const Value result = pixelate(source, session.rectangle(area.left, area.top, area.width, area.height), 4);
        EXPECT_EQ(difference(*picture_in(result), image, 32), "");
    }
}

// Blocks end where the picture does, not where the region does.
TEST_F(Pixelate, BlocksRunOnBeyondTheRegion) {
    const ObjectRef source = session.picture(12, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 12; ++x) write_pixel(pixels(source), x, y, static_cast<std::uint32_t>(x * 8) * 0x010101);
    const auto row_of = [&](int width) {
        const Value result = pixelate(source, session.rectangle(0, 0, width, 4), 4);
        std::vector<int> levels;
        for (int x = 0; x < 12; ++x) levels.push_back(channel(read_pixel(*picture_in(result), x, 1), 0));
        return levels;
    };
    EXPECT_EQ(row_of(6), (std::vector<int>{12, 12, 12, 12, 44, 44, 44, 44, 64, 72, 80, 88}));
    EXPECT_EQ(row_of(5), (std::vector<int>{12, 12, 12, 12, 32, 40, 48, 56, 64, 72, 80, 88}));
    EXPECT_EQ(row_of(12), (std::vector<int>{12, 12, 12, 12, 44, 44, 44, 44, 76, 76, 76, 76}));
    EXPECT_EQ(row_of(10), row_of(12));
}

TEST_F(Pixelate, ByOneNothingChangesButTheUnusedByte) {
    const ObjectRef source = session.picture(4, 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) write_pixel(pixels(source), x, y, 0xAB123400u + static_cast<std::uint32_t>(x));
    const Value result = pixelate(source, {}, 1);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(read_pixel(*picture_in(result), x, y),
                      (x < 3 && y < 2 ? 0x00123400u : 0xAB123400u) + static_cast<std::uint32_t>(x));
}

TEST_F(Pixelate, ChecksComeInOrder) {
    const ObjectRef source = session.picture(3, 2), unlockable = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    const ObjectRef outside = session.rectangle(50, 50, 5, 5);
    const auto code = [&](const ObjectRef& p, const ObjectRef& rectangle, int pixelation) {
        const Value result = session.invoke("TRV_Pixelate(extends p", p, rectangle, pixelation);
        EXPECT_FALSE(picture_in(result));
        return session.last_error();
    };
    EXPECT_EQ(code({}, outside, 0), 2);
    EXPECT_EQ(code(unlockable, outside, 0), 4);
    EXPECT_EQ(code(source, outside, 0), 38);
    for (const int wrong : {0, -1, -2147483647 - 1}) EXPECT_EQ(code(source, {}, wrong), 30);
}

TEST_F(Pixelate, AResultThatCannotBeMadeLeavesNoCode) {
    session.call(session.picture(1, 1), "TRV_Downsample", 0);
    ASSERT_EQ(session.last_error(), 48);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_FALSE(picture_in(pixelate(session.picture(3, 2), {}, 4)));
    EXPECT_TRUE(session.host.faults.happened());
    EXPECT_EQ(session.last_error(), 0);
}

TEST_F(Pixelate, NothingIsLeftBehindAndTheHostGetsNoControl) {
    const ObjectRef source = session.picture(60, 40);
    const auto before = session.host.accounts();
    ASSERT_TRUE(picture_in(pixelate(source, {}, 7)));
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_EQ(session.host.yields(), 0);
}

}  // namespace
}  // namespace tarvo::test
