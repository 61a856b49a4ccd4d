// Free rotation by shears and the direct one, through the built library. What goes through sine and cosine is judged by
// the sine and cosine of the same process.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>

#include "pictures.h"
#include "plain_pixels.h"
#include "plain_rotation.h"
#include "plain_shear.h"
#include "plain_turn.h"
#include "session.h"
#include "snapshot.h"

namespace tarvo::test {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

const std::vector<double>& awkward_rotations() {
    static const std::vector<double> all = {
        0.0,   1e-9,  0.01,  1.0,   10.0,  30.0,  44.999, 45.0,  45.001, 60.0,
        80.0,  89.99, 90.0,  90.5,  134.9, 135.0, 179.0,  180.0, 190.0,  225.0,
        269.0, 270.0, 275.0, 300.0, 314.9, 315.0, 330.0,  359.0, 359.9,  std::nextafter(360.0, 0.0)};
    return all;
}

// --- by shears: the plain turn and three plain shears ----------------------------------------------------------------

using OwnPicture = std::unique_ptr<Picture>;

OwnPicture blank(int width, int height, int depth) {
    return Picture::make({.width = width, .height = height, .depth = depth});
}

// The steps of a rotation; `step(shear, width, height, last)` does a shear into a picture of that size.
template <class TurnStep, class ShearStep>
void plain_steps(double rotation, int source_width, int source_height, TurnStep turn, ShearStep shear) {
    const int quarters = static_cast<int>(std::floor((rotation + 45.0) / 90.0));
    const double rest = rotation - 90.0 * quarters, angle = rest * 3.14159 / 180.0;
    const int w = quarters % 2 ? source_height : source_width, h = quarters % 2 ? source_width : source_height;
    turn(quarters % 4, w, h);

    const auto widened = [](long length, long lines, double by) {
        const long step = std::labs(static_cast<long>(by * 65536.0));
        return static_cast<int>((length * 65536 + lines * step + 65535) / 65536);
    };
    const double by_rows = std::tan(angle / 2.0), by_columns = std::sin(-angle);
    const int w2 = widened(w, h, by_rows), h2 = widened(h, w2, by_columns);

    const double radius = std::sqrt((double{1} * w * w + double{1} * h * h) * 0.25);
    const double diagonal = std::atan(static_cast<double>(h) / w);
    const double a1 = in_circle(angle + diagonal), a2 = in_circle(angle - diagonal);
    const double a3 = in_circle(angle + (3.14159 - diagonal));
    int last_width = w, last_height = h;
    if (rest > 0.0) {
        last_width = static_cast<int>(std::ceil(2.0 * radius * std::cos(a2)));
        last_height = static_cast<int>(std::ceil(2.0 * radius * std::sin(a1)));
    } else if (rest < 0.0) {
        last_width = static_cast<int>(std::ceil(2.0 * radius * std::cos(a1)));
        last_height = static_cast<int>(std::ceil(2.0 * radius * std::sin(a3)));
    }
    shear(PlainShear{true, by_rows}, w2, h, false);
    shear(PlainShear{false, by_columns}, w2, h2, false);
    shear(PlainShear{true, by_rows}, last_width, last_height, true);
}

OwnPicture plain_framed(const Picture& source, double rotation, std::uint32_t frame) {
    const int depth = std::max(source.depth(), 16);
    OwnPicture now;
    plain_steps(
        rotation, source.width(), source.height(),
        [&](int quarters, int width, int height) {
            now = blank(width, height, depth);
            plain_turn({quarters, false, false}, source, false, *now, false);
        },
        [&](PlainShear shear, int width, int height, bool) {
            shear.frame = frame;
            OwnPicture next = blank(width, height, depth);
            plain_shear(shear, *now, nullptr, *next, nullptr);
            now = std::move(next);
        });
    return now;
}

struct ImageAndMask {
    OwnPicture image, mask;
};

ImageAndMask plain_masked(const Picture& source, const Picture& mask, double rotation, int result_mask_depth) {
    const int depth = std::max(source.depth(), 16);
    ImageAndMask now;
    plain_steps(
        rotation, source.width(), source.height(),
        [&](int quarters, int width, int height) {
            now = {blank(width, height, depth), blank(width, height, mask.depth())};
            plain_turn({quarters, false, false}, source, false, *now.image, false);
            plain_turn({quarters, false, false}, mask, true, *now.mask, false);
        },
        [&](PlainShear shear, int width, int height, bool last) {
            shear.source_mask_is_mask = false;
            shear.result_mask_is_mask = last;
            ImageAndMask next = {blank(width, height, depth),
                                 last ? Picture::make({.width = width, .height = height, .depth = result_mask_depth},
                                                      Picture::Paper::black)
                                      : blank(width, height, mask.depth())};
            plain_shear(shear, *now.image, now.mask.get(), *next.image, next.mask.get());
            now = std::move(next);
        });
    return now;
}

class FreeRotateOfMasks : public ::testing::Test {
protected:
    void expect_masked(Session& in, const ObjectRef& source, double rotation) {
        SCOPED_TRACE(::testing::Message() << pixels(source).describe() << " by " << rotation);
        const Snapshot before(in, source);
        const Value value = in.call(source, "TRV_FreeRotateByShear", rotation, 0);
        ASSERT_TRUE(picture_in(value));
        EXPECT_EQ(in.last_error(), 0);
        EXPECT_TRUE(before.unchanged());
        const Picture& result = *picture_in(value);
        ASSERT_TRUE(result.mask());
        const auto expected =
            plain_masked(pixels(source), pixels(pixels(source).mask()), rotation, in.host.mask_depth());
        expect_same_bytes(result, *expected.image);
        expect_same_bytes(pixels(result.mask()), *expected.mask);
    }

    void expect_framed(Session& in, const ObjectRef& source, double rotation) {
        SCOPED_TRACE(::testing::Message() << pixels(source).describe() << " framed, by " << rotation);
        const std::uint32_t frame = any_color(random);
        const Snapshot before(in, source);
        const Value value = in.call(source, "TRV_FreeRotateByShear", rotation, Color{frame}, 0);
        ASSERT_TRUE(picture_in(value));
        EXPECT_EQ(in.last_error(), 0);
        EXPECT_TRUE(before.unchanged());
        EXPECT_FALSE(picture_in(value)->mask());
        expect_same_bytes(*picture_in(value), *plain_framed(pixels(source), rotation, frame));
    }

    Random random{6003};
};

class FreeRotate : public FreeRotateOfMasks {
protected:
    void expect_direct(const ObjectRef& source, double rotation) {
        SCOPED_TRACE(::testing::Message() << pixels(source).describe() << " directly, by " << rotation);
        const std::uint32_t frame = any_color(random);
        const Snapshot before(session, source);
        const Value value = session.call(source, "TRV_FreeRotateDirect", rotation, Color{frame});
        ASSERT_TRUE(picture_in(value));
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_TRUE(before.unchanged());

        const int quarters = static_cast<int>(rotation / 90.0);
        const double rest = rotation - 90.0 * quarters;
        const Value turned = session.call(source, "TRV_FlipRotate", false, false, quarters, 0);
        if (rest == 0.0)
            expect_same_bytes(*picture_in(value), *picture_in(turned));
        else
            expect_same_bytes(*picture_in(value), *plain_rotation(*picture_in(turned), {rest, frame, 16}));
    }

    const host::Callable& member(std::string_view name) {
        const auto& all = session.caller.callables();
        return *std::ranges::find_if(all, [&](const host::Callable& each) { return each.declaration.name == name; });
    }

    Session session;
};

TEST_F(FreeRotate, ByShearsAgreesWithTheJudge) {
    for (const Shape& shape : source_shapes()) {
        for (const double rotation : awkward_rotations()) {
            const ObjectRef source =
                random_picture(session, random, shape, any_of(random, 1, 24), any_of(random, 1, 24));
            expect_framed(session, source, rotation);
            if (shape.backing != host::Backing::drawing_commands) expect_masked(session, source, rotation);
        }
    }
    for (int i = 0; i < 60; ++i) {
        const double rotation = std::uniform_real_distribution(0.0, 359.99)(random);
        const ObjectRef source =
            random_picture(session, random, {.mask_depth = 32}, any_of(random, 1, 60), any_of(random, 1, 60));
        expect_framed(session, source, rotation);
        expect_masked(session, source, rotation);
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(FreeRotateOfMasks, MasksKeepTheirDepthOnTheWay) {
    for (const int result_mask_depth : {32, 1, 2, 4, 8, 16, 24}) {
        Session in({.mask_depth = result_mask_depth});
        for (const int mask_depth : {1, 16, 24, 32}) {
            for (const double rotation : {20.0, 100.0, 200.0, 250.0}) {
                SCOPED_TRACE(::testing::Message() << mask_depth << " to " << result_mask_depth);
                expect_masked(in, random_picture(in, random, {.mask_depth = mask_depth}, 23, 14), rotation);
            }
        }
        EXPECT_TRUE(in.host.complaints().empty());
    }
}

// Pictures on the way are made of the mask's depth, and the plugin makes none of 2, 4 or 8 bits.
TEST_F(FreeRotate, MasksOfFewBitsGiveNilAndNoCode) {
    for (const int mask_depth : {2, 4, 8}) {
        const ObjectRef source = random_picture(session, random, {.mask_depth = mask_depth}, 5, 5);
        EXPECT_FALSE(picture_in(session.call(source, "TRV_FreeRotateByShear", 10.0, 0)));
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_TRUE(picture_in(session.call(source, "TRV_FreeRotateByShear", 10.0, Color{0}, 0)));
    }
}

TEST_F(FreeRotate, WholeQuartersByShearAreTheTurnedPicture) {
    const ObjectRef source = random_picture(session, random, {.depth = 24, .mask_depth = 32}, 31, 17);
    for (const int quarters : {0, 1, 2, 3}) {
        const Value rotated = session.call(source, "TRV_FreeRotateByShear", 90.0 * quarters, 0);
        const Value turned = session.call(source, "TRV_FlipRotate", false, false, quarters, 0);
        expect_same_bytes(*picture_in(rotated), *picture_in(turned));
        PlainImage mask = read_image(pixels(picture_in(turned)->mask()));
        for (std::uint32_t& color : mask.colors) color = (color & 255) * 0x010101;
        EXPECT_EQ(difference(pixels(picture_in(rotated)->mask()), mask, 32), "");
    }
}

TEST_F(FreeRotate, ASourceWithoutMaskLooksTheSameAfterwards) {
    const ObjectRef source = random_picture(session, random, {}, 9, 7);
    const Snapshot before(session, source);
    ASSERT_TRUE(picture_in(session.call(source, "TRV_FreeRotateByShear", 33.0, 0)));
    EXPECT_TRUE(before.unchanged());
    EXPECT_TRUE(pixels(source).mask());
}

TEST_F(FreeRotate, DirectAgreesWithTheJudge) {
    for (const Shape& shape : source_shapes())
        for (const double rotation : awkward_rotations())
            expect_direct(random_picture(session, random, shape, any_of(random, 1, 30), any_of(random, 1, 30)),
                          rotation);
    for (int i = 0; i < 60; ++i)
        expect_direct(random_picture(session, random, {.mask_depth = 32}, any_of(random, 1, 60), any_of(random, 1, 60)),
                      std::uniform_real_distribution(0.0, 359.99)(random));
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(FreeRotate, DirectOfLargerPictures) {
    for (const double rotation : {0.05, 12.0, 45.0, 89.95}) {
        expect_direct(random_picture(session, random, {}, 700, 300), rotation);
        expect_direct(random_picture(session, random, {}, 3, 900), rotation);
        expect_direct(random_picture(session, random, {}, 900, 2), rotation);
    }
}

// One colour all over, and a frame of it: every weight and every division shows.
TEST_F(FreeRotate, OneColourStaysThatColour) {
    const ObjectRef source = session.picture(120, 80);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 120; ++x) write_pixel(pixels(source), x, y, 0xFF7F01);
    for (const double rotation : awkward_rotations()) {
        const Value direct = session.call(source, "TRV_FreeRotateDirect", rotation, Color{0xFF7F01});
        for (const std::uint32_t color : read_image(*picture_in(direct)).colors)
            ASSERT_EQ(color, 0xFF7F01u) << rotation;
        // The trailing pixel of a line divides by a little more than its weights, once for each shear.
        const Value by_shear = session.call(source, "TRV_FreeRotateByShear", rotation, Color{0xFF7F01}, 0);
        for (const std::uint32_t color : read_image(*picture_in(by_shear)).colors)
            for (const int shift : {0, 8, 16})
                ASSERT_NEAR(channel(color, shift), channel(0xFF7F01, shift), 3) << rotation;
    }
}

// Nothing is lost at the edges: the middle of each side and the corners are where a turned rectangle has them.
TEST_F(FreeRotate, TheSourceLiesInTheMiddle) {
    const int width = 200, height = 120;
    const ObjectRef source = session.picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) write_pixel(pixels(source), x, y, 0x0000FF);
    for (const double rotation : {10.0, 30.0, 45.0, 80.0, 190.0, 275.0, 359.0}) {
        const double angle = rotation * std::acos(-1.0) / 180.0;
        for (const Value& value : {session.call(source, "TRV_FreeRotateDirect", rotation, Color{0}),
                                   session.call(source, "TRV_FreeRotateByShear", rotation, Color{0}, 0)}) {
            const Picture& result = *picture_in(value);
            const double expected_width = std::fabs(width * std::cos(angle)) + std::fabs(height * std::sin(angle));
            const double expected_height = std::fabs(width * std::sin(angle)) + std::fabs(height * std::cos(angle));
            EXPECT_NEAR(result.width(), expected_width, 2.0) << rotation;
            EXPECT_NEAR(result.height(), expected_height, 2.0) << rotation;
            for (int y = 0; y < result.height(); ++y) {
                for (int x = 0; x < result.width(); ++x) {
                    const double dx = x + 0.5 - result.width() / 2.0, dy = y + 0.5 - result.height() / 2.0;
                    const double sx = dx * std::cos(angle) + dy * std::sin(angle);
                    const double sy = -dx * std::sin(angle) + dy * std::cos(angle);
                    const double inside = std::min(width / 2.0 - std::fabs(sx), height / 2.0 - std::fabs(sy));
                    const std::uint32_t color = read_pixel(result, x, y);
                    if (inside > 3.0) {
                        ASSERT_EQ(color, 0x0000FFu) << x << ", " << y << " by " << rotation;
                    } else if (inside < -3.0) {
                        ASSERT_EQ(color, 0u) << x << ", " << y << " by " << rotation;
                    }
                }
            }
        }
    }
}

TEST_F(FreeRotate, BothArgumentsAreCheckedAndTheRotationCounts) {
    const ObjectRef source = session.picture(4, 4);
    const auto expect_code = [&](const ObjectRef& p, double rotation, int code) {
        const auto expect = [&](const Value& value) {
            EXPECT_EQ(picture_in(value) != nullptr, code == 0) << rotation;
            EXPECT_EQ(session.last_error(), code) << rotation;
        };
        expect(session.invoke("TRV_FreeRotateByShear(extends p as picture, rotation as double, yield", p, rotation, 0));
        expect(session.invoke("TRV_FreeRotateByShear(extends p as picture, rotation as double, frame_color", p,
                              rotation, Color{0}, 0));
        std::array<Value, 3> arguments = {value(p), rotation, Color{0}};
        expect(session.caller.invoke(member("TRV_FreeRotateDirect"), arguments));
    };
    for (const double rotation : {0.0, -0.0, 359.9, std::nextafter(360.0, 0.0)}) {
        expect_code(source, rotation, 0);
        expect_code({}, rotation, 2);
    }
    for (const double rotation : {360.0, -0.5, std::nextafter(0.0, -1.0), 1e300, -1e300}) {
        expect_code(source, rotation, 31);
        expect_code({}, rotation, 31);
    }
    expect_code({}, kNotANumber, 2);
}

// It passes the check, and then is no angle.
TEST_F(FreeRotate, ARotationThatIsNotANumberIsNil) {
    const ObjectRef source = session.picture(4, 4);
    EXPECT_FALSE(picture_in(session.call(source, "TRV_FreeRotateByShear", kNotANumber, 0)));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_FALSE(picture_in(session.call(source, "TRV_FreeRotateByShear", kNotANumber, Color{0}, 0)));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_FALSE(picture_in(session.call(source, "TRV_FreeRotateDirect", kNotANumber, Color{0})));
    EXPECT_EQ(session.last_error(), 31);  // from the quarter turns
}

TEST_F(FreeRotate, WhatCannotBeMadeOrLockedByShear) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 32}, 8, 6),
                    unlockable = session.picture(4, 4);
    pixels(unlockable).set_purged(true);
    const auto expect_nil = [&](const Value& value) {
        EXPECT_FALSE(picture_in(value));
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(session.host.accounts().picture_locks, 0);
    };
    expect_nil(session.call(unlockable, "TRV_FreeRotateByShear", 10.0, 0));
    expect_nil(session.call(unlockable, "TRV_FreeRotateByShear", 10.0, Color{0}, 0));
    for (int n = 1; n <= 4; ++n) {
        session.host.faults.fail_at("newPicture", n);
        expect_nil(session.call(source, "TRV_FreeRotateByShear", 10.0, Color{0}, 0));
        EXPECT_TRUE(session.host.faults.happened());
    }
    for (int n = 1; n <= 7; ++n) {
        session.host.faults.fail_at("newPicture", n);
        expect_nil(session.call(source, "TRV_FreeRotateByShear", 10.0, 0));
        EXPECT_TRUE(session.host.faults.happened());
    }
    session.host.faults.clear();
    pixels(pixels(source).mask()).set_purged(true);
    expect_nil(session.call(source, "TRV_FreeRotateByShear", 10.0, 0));
    const ObjectRef widest = session.picture(32767, 1);  // a pixel more, and the host makes none
    expect_nil(session.call(widest, "TRV_FreeRotateByShear", 10.0, Color{0}, 0));
}

TEST_F(FreeRotate, WhatCannotBeMadeOrLockedDirectly) {
    const ObjectRef source = session.picture(8, 6), unlockable = session.picture(4, 4);
    pixels(unlockable).set_purged(true);
    const auto code = [&](const ObjectRef& p) {
        EXPECT_FALSE(picture_in(session.call(p, "TRV_FreeRotateDirect", 100.0, Color{0})));
        EXPECT_EQ(session.host.accounts().picture_locks, 0);
        return session.last_error();
    };
    EXPECT_EQ(code(unlockable), 4);
    session.host.faults.fail_at("newPicture", 1);  // of the quarter turn
    EXPECT_EQ(code(source), 6);
    session.host.faults.fail_at("newPicture", 2);
    EXPECT_EQ(code(source), 6);
    // Of the two descriptions that are locked before the result's, the second is the turned picture's own result; the
    // third is that picture as a source.
    session.host.faults.fail_at("lockPictureDescription", 3);
    EXPECT_EQ(code(source), 5);
}

TEST_F(FreeRotate, ReferencesBalance) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 32}, 20, 10);
    const host::Accounts before = session.host.accounts();
    for (const double rotation : awkward_rotations()) {
        session.call(source, "TRV_FreeRotateByShear", rotation, 0);
        session.call(source, "TRV_FreeRotateByShear", rotation, Color{0}, 0);
        session.call(source, "TRV_FreeRotateDirect", rotation, Color{0});
    }
    EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    EXPECT_TRUE(session.host.complaints().empty());
}

// Each kernel run counts its own lines: the quarter turn (of image and mask), then three shears. The direct form never
// yields.
TEST_F(FreeRotate, Yields) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 32}, 100, 50);
    const auto yields = [&](auto call) {
        const int before = session.host.yields();
        EXPECT_TRUE(picture_in(call()));
        return session.host.yields() - before;
    };
    int turn_lines = 0, shear_lines = 0;
    plain_steps(
        100.0, 100, 50, [&](int, int, int height) { turn_lines = height - 1; },
        [&](const PlainShear& shear, int width, int height, bool) {
            shear_lines += (shear.horizontal ? height : width) - 1;
        });
    ASSERT_EQ(turn_lines, 99);
    EXPECT_EQ(yields([&] { return session.call(source, "TRV_FreeRotateByShear", 100.0, 1); }),
              2 * turn_lines + shear_lines);
    EXPECT_EQ(yields([&] { return session.call(source, "TRV_FreeRotateByShear", 100.0, Color{0}, 1); }),
              turn_lines + shear_lines);
    EXPECT_EQ(yields([&] { return session.call(source, "TRV_FreeRotateByShear", 100.0, 0); }), 0);
    EXPECT_EQ(yields([&] { return session.call(source, "TRV_FreeRotateByShear", 100.0, Color{0}, -1); }), 0);
    EXPECT_EQ(yields([&] { return session.call(source, "TRV_FreeRotateDirect", 100.0, Color{0}); }), 0);
}

}  // namespace
}  // namespace tarvo::test
