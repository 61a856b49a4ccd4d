// Shears, through the built library.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>

#include "pictures.h"
#include "plain_pixels.h"
#include "plain_shear.h"
#include "session.h"
#include "snapshot.h"

namespace tarvo::test {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

struct Direction {
    const char* name;
    bool horizontal;
};
constexpr Direction kDirections[] = {{"TRV_ShearHorizontal", true}, {"TRV_ShearVertical", false}};

const std::vector<double>& awkward_shears() {
    static const std::vector<double> all = {0.0,     -0.0, 1.0,   -1.0,        0.25,         -0.25,   0.5,     0.3333,
                                            -0.7071, 1e-6, -1e-6, 1.0 / 65536, -1.0 / 65536, 0.99999, -0.99999};
    return all;
}

class ShearOfMasks : public ::testing::TestWithParam<Direction> {
protected:
    static Value shear(Session& in, const ObjectRef& p, int width, int height, double by, int yield = 0) {
        return in.call(p, GetParam().name, width, height, by, yield);
    }
    static Value shear_framed(Session& in, const ObjectRef& p, int width, int height, double by, std::uint32_t frame,
                              int yield = 0) {
        return in.call(p, GetParam().name, width, height, by, Color{frame}, yield);
    }

    void expect_plain_form(Session& in, const ObjectRef& source, int width, int height, double by) {
        SCOPED_TRACE(::testing::Message() << "to " << width << " x " << height << " by " << by);
        const bool is_drawing = pixels(source).backing() == host::Backing::drawing_commands;
        const Snapshot before(in, source);
        const Value value = shear(in, source, width, height, by);
        ASSERT_TRUE(picture_in(value));
        EXPECT_EQ(in.last_error(), 0);
        EXPECT_TRUE(before.unchanged());
        const Picture& result = *picture_in(value);
        ASSERT_EQ(result.depth(), std::max(pixels(source).depth(), 16));
        ASSERT_TRUE(result.mask());
        // Where there was no mask, the host has made one.
        ASSERT_TRUE(is_drawing || pixels(source).mask());
        const auto expected = new_like(result, Picture::Paper::white);
        const auto expected_mask = new_like(pixels(result.mask()), Picture::Paper::black);
        plain_shear(PlainShear{GetParam().horizontal, by}, pixels(source), &pixels(pixels(source).mask()), *expected,
                    expected_mask.get());
        expect_same_bytes(result, *expected);
        expect_same_bytes(pixels(result.mask()), *expected_mask);
    }

    void expect_frame_form(Session& in, const ObjectRef& source, int width, int height, double by) {
        SCOPED_TRACE(::testing::Message() << "framed, to " << width << " x " << height << " by " << by);
        const std::uint32_t frame = any_color(random);
        const Snapshot before(in, source);
        const bool had_mask = static_cast<bool>(pixels(source).mask());
        const Value value = shear_framed(in, source, width, height, by, frame);
        ASSERT_TRUE(picture_in(value));
        EXPECT_EQ(in.last_error(), 0);
        EXPECT_TRUE(before.unchanged());
        EXPECT_EQ(static_cast<bool>(pixels(source).mask()), had_mask);
        const Picture& result = *picture_in(value);
        EXPECT_FALSE(result.mask());
        ASSERT_EQ(result.depth(), std::max(pixels(source).depth(), 16));
        const auto expected = new_like(result, Picture::Paper::white);
        plain_shear(PlainShear{GetParam().horizontal, by, frame}, pixels(source), nullptr, *expected, nullptr);
        expect_same_bytes(result, *expected);
    }

    void expect_both(Session& in, const ObjectRef& source, int width, int height, double by) {
        expect_frame_form(in, source, width, height, by);
        expect_plain_form(in, source, width, height, by);
    }

    Random random{6002};
};

class Shear : public ShearOfMasks {
protected:
    Session session;
};

const auto name_of_direction = [](const auto& test) { return std::string(test.param.name); };
INSTANTIATE_TEST_SUITE_P(Both, Shear, ::testing::ValuesIn(kDirections), name_of_direction);
INSTANTIATE_TEST_SUITE_P(Both, ShearOfMasks, ::testing::ValuesIn(kDirections), name_of_direction);

TEST_P(Shear, EveryKindAgreesWithTheJudge) {
    for (const Shape& shape : source_shapes()) {
        SCOPED_TRACE(shape.name());
        for (const double by : awkward_shears()) {
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 40);
            const ObjectRef source = random_picture(session, random, shape, width, height);
            expect_both(session, source, any_of(random, 1, 90), any_of(random, 1, 90), by);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_P(Shear, ManySizesAndShears) {
    for (int i = 0; i < 400; ++i) {
        const double by = any_of(random, 0, 3) ? std::uniform_real_distribution(-1.0, 1.0)(random)
                                               : awkward_shears()[static_cast<std::size_t>(any_of(random, 0, 14))];
        const ObjectRef source =
            random_picture(session, random, {.mask_depth = 32}, any_of(random, 1, 25), any_of(random, 1, 25));
        expect_both(session, source, any_of(random, 1, 60), any_of(random, 1, 60), by);
    }
}

// Lines that lie beyond the result on either side, or touch it with their last pixel alone.
TEST_P(Shear, SteepShearsIntoNarrowResults) {
    for (const auto& [width, height] :
         {std::pair{1, 300}, std::pair{300, 1}, std::pair{2, 200}, std::pair{200, 3}, std::pair{64, 64}}) {
        const ObjectRef source = random_picture(session, random, {.mask_depth = 8}, width, height);
        for (const double by : {1.0, -1.0, 0.9, -0.9, 0.5})
            for (const auto& [new_width, new_height] :
                 {std::pair{1, 300}, std::pair{300, 1}, std::pair{1, 1}, std::pair{3, 70}, std::pair{70, 3}})
                expect_both(session, source, new_width, new_height, by);
    }
}

TEST_P(Shear, SizesAroundBlocksAndChunks) {
    for (const auto& [width, height] :
         {std::pair{511, 33}, std::pair{33, 511}, std::pair{1030, 31}, std::pair{31, 1030}, std::pair{128, 129}}) {
        const ObjectRef source = random_picture(session, random, {.mask_depth = 32}, width, height);
        for (const double by : {0.25, -0.6}) {
            expect_both(session, source, width, height, by);
            expect_both(session, source, width + height, width + height, by);
        }
    }
}

TEST_P(Shear, PicturesAsLongAsTheyCanBe) {
    const bool horizontal = GetParam().horizontal;
    const ObjectRef along = random_picture(session, random, {}, horizontal ? 32767 : 2, horizontal ? 2 : 32767);
    const ObjectRef across = random_picture(session, random, {}, horizontal ? 2 : 32767, horizontal ? 32767 : 2);
    for (const double by : {1.0, -1.0}) {
        expect_frame_form(session, along, horizontal ? 32767 : 3, horizontal ? 3 : 32767, by);
        expect_frame_form(session, across, horizontal ? 40 : 32767, horizontal ? 32767 : 40, by);
        expect_frame_form(session, across, 20, 20, by);
    }
}

// Drawn in bands and tiles, whose ends lie anywhere in the picture.
TEST_P(Shear, HighAndWidePictures) {
    const ObjectRef high = random_picture(session, random, {.depth = 32, .mask_depth = 8}, 150, 1100);
    expect_plain_form(session, high, 203, 1301, 0.7);
    expect_plain_form(session, high, 131, 1030, -0.3);
    const ObjectRef wide = random_picture(session, random, {.depth = 24}, 1100, 150);
    expect_frame_form(session, wide, 1203, 701, -0.9);
}

// Written past the caches, where rows of this width begin anywhere in a cache line.
TEST_P(Shear, LargePictures) {
    const ObjectRef source = random_picture(session, random, {.depth = 32}, 1900, 1700);
    expect_frame_form(session, source, 2111, 2011, 0.2);
}

// Rows without columns, columns without rows, and sides below 0: nothing of such a picture shows.
TEST_P(Shear, OfAPictureWithoutPixelsOnlyTheSurroundingsShow) {
    constexpr std::uint32_t kFrame = 0x185028;  // the same at 16 bits
    const auto expect_all = [](const Picture& picture, std::uint32_t color) {
        for (const std::uint32_t pixel : read_image(picture).colors) ASSERT_EQ(pixel & 0xFFFFFF, color);
    };
    for (const Shape& shape : {Shape{.mask_depth = 8}, Shape{.depth = 16, .mask_depth = 32},
                               Shape{.backing = host::Backing::pixel_buffer, .mask_depth = 32}}) {
        for (const Size& size : empty_sizes()) {
            const ObjectRef source = random_picture(session, random, shape, size.width, size.height);
            for (const double by : {0.5, -0.5, 1.0, 0.0}) {
                for (const Size& made : {Size{9, 5}, Size{5, 9}, Size{1, 1}}) {
                    SCOPED_TRACE(::testing::Message()
                                 << shape.name() << ", " << name_of(size) << " to " << name_of(made) << " by " << by);
                    const Value framed = shear_framed(session, source, made.width, made.height, by, kFrame);
                    ASSERT_TRUE(picture_in(framed));
                    expect_all(*picture_in(framed), kFrame);
                    const Value plain = shear(session, source, made.width, made.height, by);
                    ASSERT_TRUE(picture_in(plain));
                    expect_all(*picture_in(plain), 0x888888);
                    expect_all(pixels(picture_in(plain)->mask()), 0xFFFFFF);
                }
            }
        }
    }
}

// Its first shear would be of a picture that is not made.
TEST(RotationByShears, OfAPictureWithoutPixelsIsNil) {
    Session session;
    Random random{6208};
    for (const Size& size : empty_sizes()) {
        const ObjectRef source = random_picture(session, random, {.mask_depth = 8}, size.width, size.height);
        EXPECT_FALSE(picture_in(session.call(source, "TRV_FreeRotateByShear", 30.0, 0))) << name_of(size);
        EXPECT_FALSE(picture_in(session.call(source, "TRV_FreeRotateByShear", 30.0, Color{0}, 0)));
    }
}

TEST_P(ShearOfMasks, EveryDepth) {
    for (const int result_mask_depth : {32, 1, 2, 4, 8, 16, 24}) {
        Session in({.mask_depth = result_mask_depth});
        for (const int depth : {1, 8, 24}) {
            for (const int mask_depth : mask_depths()) {
                if (mask_depth == 0) continue;
                SCOPED_TRACE(::testing::Message() << depth << ", " << mask_depth << " to " << result_mask_depth);
                const ObjectRef source = random_picture(in, random, {.depth = depth, .mask_depth = mask_depth}, 21, 18);
                expect_plain_form(in, source, 40, 30, 0.4);
                expect_plain_form(in, source, 15, 12, -0.8);
            }
        }
        EXPECT_TRUE(in.host.complaints().empty());
    }
}

// A mask smaller than its picture counts as transparent beyond its edge.
TEST_P(Shear, MasksOfAnotherSize) {
    for (const int side : {20, 200}) {
        for (const auto& [width, height] :
             {std::pair{side / 4, side}, {side, side / 4}, {1, 1}, {2 * side, 2 * side}}) {
            const ObjectRef source = random_picture(session, random, {}, side, side);
            const ObjectRef mask = random_picture(session, random, {}, width, height);
            pixels(source).set_mask(mask);
            const Value small = shear(session, source, side + 10, side + 10, 0.4);
            ASSERT_TRUE(picture_in(small));
            const ObjectRef whole = session.picture(side, side);  // white: transparent
            for (int y = 0; y < std::min(side, height); ++y)
                for (int x = 0; x < std::min(side, width); ++x)
                    write_pixel(pixels(whole), x, y, read_pixel(pixels(mask), x, y));
            pixels(source).set_mask(whole);
            const Value full = shear(session, source, side + 10, side + 10, 0.4);
            expect_same_bytes(pixels(picture_in(small)->mask()), pixels(picture_in(full)->mask()));
            expect_same_bytes(*picture_in(small), *picture_in(full));
        }
    }
}

TEST_P(Shear, NoShearIsACopy) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 32}, 20, 10);
    const Value value = shear(session, source, 20, 10, 0.0);
    PlainImage expected = read_image(pixels(source)), mask = read_image(pixels(pixels(source).mask()));
    for (std::uint32_t& color : expected.colors) color &= 0xFFFFFF;
    for (std::uint32_t& color : mask.colors) color = (color & 255) * 0x010101;
    EXPECT_EQ(difference(*picture_in(value), expected, 32), "");
    // The first mask pixel of a line is blended with nothing of what lies before it.
    EXPECT_EQ(difference(pixels(picture_in(value)->mask()), mask, 32), "");
}

// All around a white pixel: where nothing is drawn, and where the pixel's edges are blended.
TEST_P(Shear, ColoursOfFrameHaveNoTopByte) {
    const ObjectRef source = session.picture(1, 1);
    const Value value = shear_framed(session, source, 5, 5, 0.5, 0xAB123456);
    ASSERT_TRUE(picture_in(value));
    int framed = 0;
    for (const std::uint32_t color : read_image(*picture_in(value)).colors) {
        EXPECT_EQ(color >> 24, 0u);
        framed += color == 0x00123456;
    }
    EXPECT_EQ(framed, 23);  // all but the pixel's own place and the next
}

TEST_P(Shear, ASourceWithoutMaskLooksTheSameAfterwards) {
    const ObjectRef source = random_picture(session, random, {.depth = 16}, 9, 7);
    const auto bytes = all_bytes(source);
    ASSERT_TRUE(picture_in(shear(session, source, 9, 7, 0.3)));
    const auto after = all_bytes(source);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), after.begin()));
    EXPECT_TRUE(std::all_of(after.begin() + static_cast<std::ptrdiff_t>(bytes.size()), after.end(),
                            [](std::uint8_t byte) { return byte == 0; }));  // black: opaque
}

TEST_P(Shear, BothArgumentsAreCheckedAndTheShearCounts) {
    const ObjectRef source = session.picture(4, 4);
    const std::string plain = std::string(GetParam().name) +
                              "(extends p as picture, width as integer, height as "
                              "integer, shear as double, yield";
    const std::string framed = std::string(GetParam().name) +
                               "(extends p as picture, width as integer, height as "
                               "integer, shear as double, frame_color";
    const auto expect_code = [&](const ObjectRef& p, double by, int code) {
        EXPECT_EQ(picture_in(session.invoke(plain, p, 4, 4, by, 0)) != nullptr, code == 0);
        EXPECT_EQ(session.last_error(), code) << by;
        EXPECT_EQ(picture_in(session.invoke(framed, p, 4, 4, by, Color{0}, 0)) != nullptr, code == 0);
        EXPECT_EQ(session.last_error(), code) << by;
    };
    for (const double by : {1.0, -1.0, 0.0, std::nextafter(1.0, 0.0)}) {
        expect_code(source, by, 0);
        expect_code({}, by, 2);
    }
    for (const double by :
         {std::nextafter(1.0, 2.0), 1.0000001, -1.5, std::nextafter(-1.0, -2.0), 1e300, kNotANumber}) {
        expect_code(source, by, 33);
        expect_code({}, by, 33);
    }
}

TEST_P(Shear, WhatCannotBeMadeOrLockedGivesNilAndNoCode) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 8}, 4, 4);
    const ObjectRef unlockable = session.picture(4, 4);
    pixels(unlockable).set_purged(true);
    const auto expect_nil = [&](const Value& value) {
        EXPECT_FALSE(picture_in(value));
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(session.host.accounts().picture_locks, 0);
    };
    expect_nil(shear(session, unlockable, 4, 4, 0.5));
    expect_nil(shear_framed(session, unlockable, 4, 4, 0.5, 0));
    for (const auto& [width, height] : {std::pair{0, 4}, std::pair{4, 0}, std::pair{-1, -1}, std::pair{40000, 1}}) {
        expect_nil(shear(session, source, width, height, 0.5));
        expect_nil(shear_framed(session, source, width, height, 0.5, 0));
    }
    session.host.faults.fail_at("newPicture", 1);
    expect_nil(shear(session, source, 4, 4, 0.5));
    session.host.faults.fail_at("REALGetPictureMask", 1);
    expect_nil(shear(session, source, 4, 4, 0.5));
    session.host.faults.fail_at("REALGetPictureMask", 2);  // the result's: returned as it was made
    const Value value = shear(session, source, 4, 4, 0.5);
    ASSERT_TRUE(picture_in(value));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(read_pixel(*picture_in(value), 1, 1) & 0xFFFFFF, 0xFFFFFFu);
    session.host.faults.clear();
    pixels(pixels(source).mask()).set_purged(true);
    expect_nil(shear(session, source, 4, 4, 0.5));
}

TEST_P(Shear, ReferencesBalance) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 32}, 20, 10);
    const host::Accounts before = session.host.accounts();
    for (int i = 0; i < 5; ++i) {
        shear(session, source, 30, 30, 0.1 * i);
        shear_framed(session, source, 30, 30, 0.1 * i, 0);
    }
    EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    EXPECT_TRUE(session.host.complaints().empty());
}

// Before rows, or columns, of the result: blank ones too.
TEST_P(Shear, YieldsByTheResultsLines) {
    const ObjectRef source = session.picture(10, 10);
    const bool horizontal = GetParam().horizontal;
    const auto expect_yields = [&](int budget, int expected) {
        const int width = horizontal ? 30 : 100, height = horizontal ? 100 : 30;  // 100 lines of 30
        int before = session.host.yields();
        EXPECT_TRUE(picture_in(shear(session, source, width, height, 0.5, budget)));
        EXPECT_EQ(session.host.yields() - before, expected) << budget;
        before = session.host.yields();
        EXPECT_TRUE(picture_in(shear_framed(session, source, width, height, 0.5, 0, budget)));
        EXPECT_EQ(session.host.yields() - before, expected) << budget;
    };
    expect_yields(0, 0);
    expect_yields(-1, 0);
    expect_yields(1, 99);
    expect_yields(30, 99);
    expect_yields(31, 49);
    expect_yields(100, 24);
}

}  // namespace
}  // namespace tarvo::test
