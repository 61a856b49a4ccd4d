// The transition, through the built library.

#include <gtest/gtest.h>

#include <algorithm>

#include "plain_blend.h"
#include "session.h"

namespace tarvo::test {
namespace {

PlainImage plain_transition(const ObjectRef& source, const ObjectRef& overlay_a, const ObjectRef& overlay_b,
                            double fraction) {
    const PlainImage image_a = read_image(pixels(overlay_a)), image_b = read_image(pixels(overlay_b));
    const int a = plain_weight(fraction), b = plain_weight(1 - fraction);
    const auto depth_of = [](const ObjectRef& picture) { return pixels(picture).depth(); };
    const bool all_16 = depth_of(source) == 16 && depth_of(overlay_a) == 16 && depth_of(overlay_b) == 16;
    return each_pixel(read_image(pixels(source)), [&](int x, int y, std::uint32_t color) {
        return each_channel([&](int shift) {
            const int s = channel(color, shift);
            const int near_a = (a * channel(image_a.at(x, y), shift) + b * s) >> 8;
            const int near_b = (b * channel(image_b.at(x, y), shift) + a * s) >> 8;
            const int sum = a * near_a + b * near_b;
            return all_16 ? (sum >> 11) * 8 : sum >> 8;
        });
    });
}

class Transition : public ::testing::Test {
protected:
    Value transition(const ObjectRef& source, const ObjectRef& overlay_a, const ObjectRef& overlay_b, double fraction) {
        return session.call(source, "TRV_Transition", overlay_a, overlay_b, fraction);
    }
    void expect_agreement(const ObjectRef& source, const ObjectRef& overlay_a, const ObjectRef& overlay_b,
                          double fraction) {
        const auto before = all_bytes(source), before_a = all_bytes(overlay_a), before_b = all_bytes(overlay_b);
        const Value result = transition(source, overlay_a, overlay_b, fraction);
        ASSERT_TRUE(picture_in(result)) << session.last_error();
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(difference(*picture_in(result), plain_transition(source, overlay_a, overlay_b, fraction),
                             std::max(pixels(source).depth(), 16)),
                  "")
            << fraction;
        EXPECT_FALSE(picture_in(result)->mask());
        EXPECT_EQ(all_bytes(source), before);
        EXPECT_EQ(all_bytes(overlay_a), before_a);
        EXPECT_EQ(all_bytes(overlay_b), before_b);
    }
    ObjectRef one(std::uint32_t color) {
        const ObjectRef made = session.picture(1, 1);
        write_pixel(pixels(made), 0, 0, color);
        return made;
    }
    std::uint32_t one(std::uint32_t source, std::uint32_t a, std::uint32_t b, double fraction) {
        return read_pixel(*picture_in(transition(one(source), one(a), one(b), fraction)), 0, 0);
    }

    Session session;
    Random random{5401};
};

TEST_F(Transition, EveryThreeKindsAgreeWithTheJudge) {
    for (const Shape& lower : source_shapes()) {
        for (const Shape& shape_a : source_shapes()) {
            for (const Shape& shape_b : source_shapes()) {
                SCOPED_TRACE(lower.name() + " under " + shape_a.name() + " and " + shape_b.name());
                const int width = any_of(random, 1, 30), height = any_of(random, 1, 4);
                const ObjectRef source = random_picture(session, random, lower, width, height);
                const ObjectRef overlay_a = random_picture(session, random, shape_a, width, height);
                const ObjectRef overlay_b = random_picture(session, random, shape_b, width, height);
                for (const double fraction : kFractions) expect_agreement(source, overlay_a, overlay_b, fraction);
            }
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Transition, WideRowsAgreeWithTheJudge) {
    for (const int depth : {16, 24, 32}) {
        for (const int width : {511, 512, 513, 1025}) {
            const ObjectRef source = random_picture(session, random, {.depth = depth}, width, 2);
            const ObjectRef overlay_a = random_picture(session, random, {.depth = depth}, width, 2);
            const ObjectRef overlay_b = random_picture(session, random, {.depth = depth}, width, 2);
            expect_agreement(source, overlay_a, overlay_b, 0.35);
        }
    }
}

TEST_F(Transition, MasksCountForNothing) {
    const Shape masked = {.mask_depth = 8};
    expect_agreement(random_picture(session, random, masked, 9, 4), random_picture(session, random, masked, 9, 4),
                     random_picture(session, random, masked, 9, 4), 0.5);
}

TEST_F(Transition, KnownValues) {
    EXPECT_EQ(one(0xFF000000, 0x11ABCDEF, 0x22123456, 1.0), 0xABCDEFu);
    EXPECT_EQ(one(0xFF000000, 0x11ABCDEF, 0x22123456, 0.0), 0x123456u);
    EXPECT_EQ(one(0x000000, 0xFFFFFF, 0xFFFFFF, 0.5), 0x7F7F7Fu);
    EXPECT_EQ(one(0xFFFFFF, 0xFFFFFF, 0xFFFFFF, kNotANumber), 0x000000u);
    // Weights of 76 and 179 together are one short of 256, at each of the two steps.
    EXPECT_EQ(one(0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0.3), 0xFDFDFDu);
}

TEST_F(Transition, APictureWithItself) {
    const ObjectRef picture = random_picture(session, random, {}, 12, 5);
    expect_agreement(picture, picture, picture, 0.5);
}

TEST_F(Transition, ChecksComeInOrder) {
    const auto code = [&](const ObjectRef& p, const ObjectRef& a, const ObjectRef& b, double fraction) {
        const Value result = session.invoke("TRV_Transition(", p, a, b, fraction);
        EXPECT_EQ(picture_in(result) == nullptr, session.last_error() != 0);
        return session.last_error();
    };
    const ObjectRef good = session.picture(5, 4), locked_out = session.picture(5, 4);
    const ObjectRef narrow = session.picture(4, 4), low = session.picture(5, 3), wide = session.picture(6, 4);
    pixels(locked_out).set_purged(true);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code({}, {}, {}, 2.0), 2);
    EXPECT_EQ(code(locked_out, {}, locked_out, 2.0), 13);
    EXPECT_EQ(code(locked_out, locked_out, {}, 2.0), 13);
    EXPECT_EQ(code(locked_out, locked_out, locked_out, 2.0), 15);
    EXPECT_EQ(code(locked_out, locked_out, locked_out, 1.0), 4);
    EXPECT_EQ(code(good, locked_out, narrow, 1.0), 14);
    EXPECT_EQ(code(good, narrow, locked_out, 1.0), 14);
    for (const ObjectRef& wrong : {narrow, low, wide}) {
        EXPECT_EQ(code(good, wrong, good, 1.0), 17);
        EXPECT_EQ(code(good, good, wrong, 1.0), 17);
    }
    EXPECT_EQ(code(good, good, good, 1.0), 6);
    for (const double wrong : {-1e-300, std::nextafter(1.0, 2.0), -HUGE_VAL, HUGE_VAL})
        EXPECT_EQ(code(good, good, good, wrong), 15);
    for (const double right : {0.0, 1.0, -0.0, kNotANumber}) EXPECT_EQ(code(good, good, good, right), 0);
    EXPECT_EQ(session.host.yields(), 0);
}

TEST_F(Transition, NothingIsLeftBehind) {
    const ObjectRef source = session.picture(9, 9), narrow = session.picture(8, 9);
    const host::Accounts before = session.host.accounts();
    transition(source, source, source, 0.5);
    transition(source, source, narrow, 0.5);
    EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    EXPECT_TRUE(session.host.complaints().empty());
}

}  // namespace
}  // namespace tarvo::test
