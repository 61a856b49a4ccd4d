// One picture over another by a mask argument, through the built library.

#include <gtest/gtest.h>

#include <algorithm>

#include "plain_blend.h"
#include "session.h"

namespace tarvo::test {
namespace {

std::uint32_t plain_by_mask(std::uint32_t source, std::uint32_t overlay, std::uint32_t mask) {
    const int level = channel(mask, 0), weight = level > 127 ? level + 1 : level;
    return weight == 0 ? source : plain_blend(source, overlay, 256 - weight, weight);
}

PlainImage plain_composite(const ObjectRef& source, const ObjectRef& overlay, const ObjectRef& mask, Place place) {
    const PlainImage upper = read_image(pixels(overlay)), weights = read_image(pixels(mask));
    return each_pixel(read_image(pixels(source)), [&](int x, int y, std::uint32_t color) {
        if (!place.covers(upper, x, y)) return color;
        return plain_by_mask(color, place.above(upper, x, y), place.above(weights, x, y));
    });
}

bool meet(const ObjectRef& source, const ObjectRef& overlay, Place place) {
    const PlainImage upper = read_image(pixels(overlay));
    for (int y = 0; y < pixels(source).height(); ++y)
        for (int x = 0; x < pixels(source).width(); ++x)
            if (place.covers(upper, x, y)) return true;
    return false;
}

class CompositeWithMask : public ::testing::Test {
protected:
    Value composite(const ObjectRef& source, const ObjectRef& overlay, const ObjectRef& mask, Place place,
                    int yield = 0) {
        return session.call(source, "TRV_CompositeWithMask", overlay, mask, place.left, place.top, yield);
    }
    void expect_agreement(const ObjectRef& source, const ObjectRef& overlay, const ObjectRef& mask, Place place) {
        SCOPED_TRACE(::testing::Message() << place.left << ", " << place.top);
        const auto before = all_bytes(source), overlay_before = all_bytes(overlay), mask_before = all_bytes(mask);
        const Value result = composite(source, overlay, mask, place);
        if (!meet(source, overlay, place)) {
            EXPECT_FALSE(picture_in(result));
            EXPECT_EQ(session.last_error(), 16);
            return;
        }
        ASSERT_TRUE(picture_in(result)) << session.last_error();
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(difference(*picture_in(result), plain_composite(source, overlay, mask, place),
                             std::max(pixels(source).depth(), 16)),
                  "");
        EXPECT_FALSE(picture_in(result)->mask());
        EXPECT_EQ(all_bytes(source), before);
        EXPECT_EQ(all_bytes(overlay), overlay_before);
        EXPECT_EQ(all_bytes(mask), mask_before);
        ++composed;
    }

    Session session;
    Random random{5302};
    int composed = 0;
};

TEST_F(CompositeWithMask, EveryThreeKindsAgreeWithTheJudge) {
    for (const Shape& lower : source_shapes()) {
        for (const Shape& upper : source_shapes()) {
            for (const Shape& weights : source_shapes()) {
                SCOPED_TRACE(upper.name() + " over " + lower.name() + " by " + weights.name());
                const int width = any_of(random, 1, 30), height = any_of(random, 1, 6);
                const int overlay_width = any_of(random, 1, 30), overlay_height = any_of(random, 1, 6);
                expect_agreement(random_picture(session, random, lower, width, height),
                                 random_picture(session, random, upper, overlay_width, overlay_height),
                                 random_picture(session, random, weights, overlay_width, overlay_height),
                                 any_place(random, width, height, overlay_width, overlay_height));
            }
        }
    }
    EXPECT_GT(composed, 500);
    EXPECT_TRUE(session.host.complaints().empty());
}

// The source's and the overlay's own masks count for nothing.
TEST_F(CompositeWithMask, OwnMasksAreLeftAlone) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 8}, 20, 4);
    const ObjectRef overlay = random_picture(session, random, {.mask_depth = 32}, 20, 4);
    expect_agreement(source, overlay, random_picture(session, random, {}, 20, 4), {1, 1});
    EXPECT_EQ(composed, 1);
}

TEST_F(CompositeWithMask, WideRowsAgreeWithTheJudge) {
    for (const int width : {511, 512, 513, 1025})
        for (const int left : {0, 1, -1, 500, -513})
            expect_agreement(random_picture(session, random, {}, width, 2),
                             random_picture(session, random, {}, 1025, 3), random_picture(session, random, {}, 1025, 3),
                             {left, -1});
    EXPECT_EQ(composed, 20);
}

TEST_F(CompositeWithMask, PlacesOnEverySide) {
    const ObjectRef source = random_picture(session, random, {}, 20, 4);
    const ObjectRef overlay = random_picture(session, random, {}, 30, 5),
                    mask = random_picture(session, random, {}, 30, 5);
    for (const int left : {kLeast, kLeast + 29, -30, -29, 0, 19, 20, kMost - 29, kMost})
        for (const int top : {kLeast, kLeast + 4, -5, -4, 0, 3, 4, kMost - 4, kMost})
            expect_agreement(source, overlay, mask, {left, top});
    EXPECT_EQ(composed, 9);
}

TEST_F(CompositeWithMask, LevelsAbove127WeighOneMore) {
    const ObjectRef source = session.picture(4, 1), overlay = session.picture(4, 1), mask = session.picture(4, 1);
    const std::uint32_t levels[] = {0, 127, 128, 255};
    for (int x = 0; x < 4; ++x) {
        write_pixel(pixels(source), x, 0, 0xAA000000);
        write_pixel(pixels(overlay), x, 0, 0xBBFFFFFF);
        write_pixel(pixels(mask), x, 0, 0xFFFF00 | levels[x]);  // the blue channel alone counts
    }
    const Value result = composite(source, overlay, mask, {0, 0});
    const std::uint32_t expected[] = {0xAA000000, 0x7E7E7E, 0x808080, 0xFFFFFF};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(read_pixel(*picture_in(result), x, 0), expected[x]);
}

TEST_F(CompositeWithMask, NeverYields) {
    const ObjectRef source = session.picture(30, 13), overlay = session.picture(30, 13), mask = session.picture(30, 13);
    ASSERT_TRUE(picture_in(composite(source, overlay, mask, {0, 0}, 1)));
    EXPECT_EQ(session.host.yields(), 0);
}

TEST_F(CompositeWithMask, ChecksComeInOrder) {
    const auto code = [&](const ObjectRef& p, const ObjectRef& overlay, const ObjectRef& mask, Place place = {0, 0}) {
        const Value result = session.invoke("TRV_CompositeWithMask(", p, overlay, mask, place.left, place.top, 0);
        EXPECT_FALSE(picture_in(result));
        return session.last_error();
    };
    const ObjectRef source = session.picture(9, 9), overlay = session.picture(3, 2), mask = session.picture(3, 2);
    const ObjectRef locked_out = session.picture(3, 2), odd = session.picture(3, 2, 12);
    const ObjectRef small = session.picture(2, 2), small_and_odd = session.picture(2, 2, 12);
    pixels(locked_out).set_purged(true);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code({}, {}, {}), 2);
    EXPECT_EQ(code(locked_out, {}, {}), 13);
    EXPECT_EQ(code(locked_out, locked_out, {}), 8);
    EXPECT_EQ(code(locked_out, locked_out, locked_out), 4);
    EXPECT_EQ(code(source, locked_out, locked_out), 14);
    const Place outside = {9, 9};
    EXPECT_EQ(code(source, overlay, mask, outside), 16);
    EXPECT_EQ(code(source, overlay, locked_out, outside), 9);  // each later code replaces the placement's
    EXPECT_EQ(code(source, overlay, small, outside), 10);
    EXPECT_EQ(code(source, overlay, odd, outside), 11);
    EXPECT_EQ(code(source, overlay, small_and_odd, outside), 11);
    EXPECT_EQ(code(source, overlay, locked_out), 9);
    EXPECT_EQ(code(source, overlay, small), 10);
    EXPECT_EQ(code(source, overlay, source), 10);  // of the source's size, not the overlay's
    EXPECT_EQ(code(source, overlay, odd), 11);
    EXPECT_EQ(code(source, overlay, mask), 6);
}

TEST_F(CompositeWithMask, PlacesJustInsideAndJustOutside) {
    const ObjectRef source = session.picture(9, 7), overlay = session.picture(3, 2);
    const auto code = [&](int left, int top) {
        composite(source, overlay, overlay, {left, top});
        return session.last_error();
    };
    for (const auto& [left, top] : {std::pair{8, 0}, std::pair{0, 6}, std::pair{-2, 0}, std::pair{0, -1}})
        EXPECT_EQ(code(left, top), 0) << left << " " << top;
    for (const auto& [left, top] : {std::pair{9, 0}, std::pair{0, 7}, std::pair{-3, 0}, std::pair{0, -2}})
        EXPECT_EQ(code(left, top), 16) << left << " " << top;
}

TEST_F(CompositeWithMask, NothingIsLeftBehind) {
    const ObjectRef source = session.picture(9, 9), overlay = session.picture(3, 2);
    const host::Accounts before = session.host.accounts();
    for (const int left : {0, 9}) composite(source, overlay, overlay, {left, 0});
    EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    EXPECT_TRUE(session.host.complaints().empty());
}

}  // namespace
}  // namespace tarvo::test
