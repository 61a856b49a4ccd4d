// A colour over a region, through the built library.

#include <gtest/gtest.h>

#include "judge.h"
#include "plain_blend.h"
#include "session.h"

namespace tarvo::test {
namespace {

class CompositeColor : public ::testing::Test {
protected:
    Value composite(const ObjectRef& source, const ObjectRef& rectangle, std::uint32_t color, double fraction,
                    int yield = 0) {
        return session.invoke("TRV_Composite(extends p as picture, rect", source, rectangle, Color{color}, fraction,
                              yield);
    }
    // Of a source of one pixel.
    std::uint32_t one(std::uint32_t color, std::uint32_t overlay, double fraction, int depth = 32) {
        const ObjectRef source = session.picture(1, 1, depth);
        write_pixel(pixels(source), 0, 0, color);
        return read_pixel(*picture_in(composite(source, {}, overlay, fraction)), 0, 0);
    }

    Session session;
    Random random{5303};
};

TEST_F(CompositeColor, AgreesWithTheJudge) {
    for (const double fraction : kFractions) {
        const std::uint32_t color = any_color(random);
        const int a = plain_weight(fraction), b = plain_weight(1 - fraction);
        SCOPED_TRACE(fraction);
        expect_region_agreement(session, random, {{"TRV_Composite", "overlay_color"}, false, true},
                                {Color{color}, fraction},
                                [&](std::uint32_t source) { return plain_blend(source, color, b, a); });
    }
}

// All five bits of a source's channel, all eight of the colour's.
TEST_F(CompositeColor, SixteenBitsBlendTheWholeColor) {
    const ObjectRef ramp = session.picture(32, 1, 16);
    for (int x = 0; x < 32; ++x) write_pixel(pixels(ramp), x, 0, static_cast<std::uint32_t>(x) * 0x080808);
    for (const double fraction : {0.1, 0.3, 0.5, 0.77, 1.0}) {
        for (std::uint32_t level = 0; level < 256; ++level) {
            const Value result = composite(ramp, {}, level * 0x010101, fraction);
            for (int x = 0; x < 32; ++x)
                ASSERT_EQ(read_pixel(*picture_in(result), x, 0),
                          plain_blend_555(read_pixel(pixels(ramp), x, 0), level * 0x010101, plain_weight(1 - fraction),
                                          plain_weight(fraction)));
        }
    }
}

TEST_F(CompositeColor, KnownValues) {
    EXPECT_EQ(one(0xFF123456, 0xABCDEF, 1.0), 0xABCDEFu);
    EXPECT_EQ(one(0xFF123456, 0xABCDEF, 0.0), 0x123456u);
    EXPECT_EQ(one(0x000000, 0xFFFFFF, 0.5), 0x7F7F7Fu);
    // Weights of 76 and 179, cut off on their own, make white on white darker.
    EXPECT_EQ(one(0xFFFFFF, 0xFFFFFF, 0.3), 0xFEFEFEu);
    EXPECT_EQ(one(0xFFFFFF, 0x000000, 0.3), 0xB2B2B2u);
    EXPECT_EQ(one(0xFFFFFF, 0xFFFFFF, kNotANumber), 0x000000u);
}

TEST_F(CompositeColor, YieldsAt32BitsOnly) {
    for (const int depth : {8, 16, 24, 32}) {
        const ObjectRef source = session.picture(30, 13, depth);
        const auto yields = [&](int yield) {
            const int before = session.host.yields();
            EXPECT_TRUE(picture_in(composite(source, session.rectangle(0, 0, 2, 2), 0, 0.5, yield)));
            return session.host.yields() - before;
        };
        EXPECT_EQ(yields(100), depth == 32 ? 3 : 0);
        EXPECT_EQ(yields(1), depth == 32 ? 12 : 0);
        EXPECT_EQ(yields(0), 0);
        EXPECT_EQ(yields(-1), 0);
    }
}

TEST_F(CompositeColor, ChecksComeInOrder) {
    const auto code = [&](const ObjectRef& p, const ObjectRef& rectangle, double fraction) {
        const Value result = composite(p, rectangle, 0x123456, fraction);
        EXPECT_EQ(picture_in(result) == nullptr, session.last_error() != 0);
        return session.last_error();
    };
    const ObjectRef good = session.picture(100, 80), locked_out = session.picture(100, 80);
    const ObjectRef outside = session.rectangle(100, 0, 5, 5);
    pixels(locked_out).set_purged(true);
    EXPECT_EQ(code({}, outside, 2.0), 2);
    EXPECT_EQ(code(locked_out, outside, 2.0), 15);
    EXPECT_EQ(code(locked_out, outside, 1.0), 4);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code(good, outside, 1.0), 38);
    EXPECT_EQ(code(good, {}, 1.0), 6);
    for (const double wrong : {-1e-300, std::nextafter(1.0, 2.0), -HUGE_VAL, HUGE_VAL})
        EXPECT_EQ(code(good, {}, wrong), 15);
    for (const double right : {0.0, 1.0, -0.0, kNotANumber}) EXPECT_EQ(code(good, {}, right), 0);
    for (const Area& area : {Area{0, 80, 5, 5}, Area{-5, 0, 5, 5}, Area{0, 0, 0, 5}, Area{kMost, 0, kMost, 1}})
        EXPECT_EQ(code(good, session.rectangle(area.left, area.top, area.width, area.height), 1.0), 38);
}

TEST_F(CompositeColor, NothingIsLeftBehind) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 8}, 12, 5);
    const host::Accounts before = session.host.accounts();
    for (const double fraction : {0.5, 2.0}) composite(source, {}, 0, fraction);
    EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
}

}  // namespace
}  // namespace tarvo::test
