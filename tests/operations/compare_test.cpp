// Compare and difference, through the built library.

#include <gtest/gtest.h>

#include <algorithm>

#include "judge.h"
#include "session.h"

namespace tarvo::test {
namespace {

// The region's last row and column are left out.
bool plain_compare(const PlainImage& a, const PlainImage& b, const Area& area) {
    const int right = std::min(area.left + area.width, a.width) - 1;
    const int bottom = std::min(area.top + area.height, a.height) - 1;
    for (int y = std::max(area.top, 0); y < bottom; ++y)
        for (int x = std::max(area.left, 0); x < right; ++x)
            if ((a.at(x, y) & 0xFFFFFF) != (b.at(x, y) & 0xFFFFFF)) return false;
    return true;
}

PlainImage plain_difference(const PlainImage& a, const PlainImage& b) {
    PlainImage map(std::max(a.width, b.width), std::max(a.height, b.height));
    for (int y = 0; y < map.height; ++y) {
        for (int x = 0; x < map.width; ++x) {
            if (x >= a.width || y >= a.height)
                map.at(x, y) = 0xDDDDFF;
            else if (x >= b.width || y >= b.height)
                map.at(x, y) = 0xDDFFDD;
            else
                map.at(x, y) = a.at(x, y) == b.at(x, y) ? 0xFFFFFF : 0xFF0000;
        }
    }
    return map;
}

class Compare : public ::testing::Test {
protected:
    bool compare(const ObjectRef& a, const ObjectRef& b, const ObjectRef& rectangle = {}) {
        return std::get<bool>(session.call(a, "TRV_Compare", b, rectangle));
    }
    Value map(const ObjectRef& a, const ObjectRef& b) { return session.call(a, "TRV_Difference", b); }
    // A member of the picture class, also for pictures that are nil.
    template <class... Arguments>
    Value call_member(std::string_view name, Arguments&&... arguments) {
        for (const host::Callable& callable : session.caller.callables()) {
            if (callable.owner != "picture" || callable.declaration.name != name) continue;
            std::array<Value, sizeof...(Arguments)> values = {value(std::forward<Arguments>(arguments))...};
            return session.caller.invoke(callable, values);
        }
        throw std::runtime_error("pictures have no such member");
    }
    ObjectRef copy_of(const ObjectRef& picture) {
        const ObjectRef made = session.host.new_picture(pixels(picture).options());
        pixels(made).drawing = pixels(picture).drawing;
        if (!pixels(made).row(0)) return made;  // a drawing
        for (int y = 0; y < pixels(made).height(); ++y)
            std::copy_n(pixels(picture).row(y), pixels(picture).packed_row_bytes(), pixels(made).row(y));
        return made;
    }
    void change_pixel(const ObjectRef& picture, int x, int y) {
        const int depth = pixels(picture).depth();
        pixels(picture).row(y)[x * depth / 8 + (depth == 32)] ^= 0x55;  // not the unused top byte
    }
    ObjectRef unlockable(int width = 5, int height = 4) {
        const ObjectRef made = session.picture(width, height);
        pixels(made).set_purged(true);
        return made;
    }

    Session session;
    Random random{5201};
};

TEST_F(Compare, EveryKindAgreesWithTheJudge) {
    int equal = 0, unequal = 0;
    for (const Shape& shape : source_shapes()) {
        for (int round = 0; round < 60; ++round) {
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 6);
            const ObjectRef a = random_picture(session, random, shape, width, height), b = copy_of(a);
            const bool drawing = shape.backing == host::Backing::drawing_commands;
            for (int i = 0; !drawing && i < round % 13; ++i)
                change_pixel(b, any_of(random, 0, width - 1), any_of(random, 0, height - 1));
            const Area area = any_area(random, width, height);
            SCOPED_TRACE(shape.name());
            const PlainImage image_a = read_image(pixels(a)), image_b = read_image(pixels(b));
            const bool expected = plain_compare(image_a, image_b, area);
            EXPECT_EQ(compare(a, b, session.rectangle(area.left, area.top, area.width, area.height)), expected);
            EXPECT_EQ(session.last_error(), 0);
            EXPECT_EQ(compare(b, a), plain_compare(image_b, image_a, {0, 0, width, height}));
            ++(expected ? equal : unequal);
        }
    }
    EXPECT_GT(equal, 100);
    EXPECT_GT(unequal, 100);
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Compare, OneWrongPixelIsFoundInWideRows) {
    for (const Shape& shape : {Shape{}, Shape{.depth = 24}, Shape{.depth = 16}, Shape{.depth = 8},
                               Shape{.backing = host::Backing::pixel_buffer}}) {
        SCOPED_TRACE(shape.name());
        for (const int x : {0, 1, 7, 8, 510, 511, 512, 513, 1023, 1024, 1037, 1038}) {
            const ObjectRef a = random_picture(session, random, shape, 1040, 3), b = copy_of(a);
            EXPECT_TRUE(compare(a, b));
            change_pixel(b, x, 1);
            ASSERT_NE(read_pixel(pixels(a), x, 1), read_pixel(pixels(b), x, 1));
            EXPECT_FALSE(compare(a, b)) << x;
        }
    }
}

TEST_F(Compare, TheLastRowAndColumnAreLeftOut) {
    const ObjectRef a = random_picture(session, random, {}, 9, 7);
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 9; ++x) {
            const ObjectRef b = copy_of(a);
            change_pixel(b, x, y);
            EXPECT_EQ(compare(a, b), x == 8 || y == 6) << x << " " << y;
            EXPECT_EQ(compare(a, b, session.rectangle(2, 1, 4, 3)), x < 2 || x >= 5 || y < 1 || y >= 3)
                << x << " " << y;
        }
    }
    for (const auto& [width, height] : {std::pair{1, 5}, std::pair{5, 1}, std::pair{1, 1}})
        EXPECT_TRUE(compare(random_picture(session, random, {}, width, height),
                            random_picture(session, random, {}, width, height)));
}

TEST_F(Compare, BitsThatAreNoColorDoNotCount) {
    for (const int depth : {16, 32}) {
        const ObjectRef a = random_picture(session, random, {.depth = depth}, 700, 3), b = copy_of(a);
        for (int x = 0; x < 700; ++x) pixels(b).row(1)[x * depth / 8] ^= depth == 16 ? 0x80 : 0xFF;
        EXPECT_TRUE(compare(a, b)) << depth;
    }
}

TEST_F(Compare, SizeAndDepthCount) {
    const ObjectRef a = session.picture(5, 4);
    for (const ObjectRef& other : {session.picture(6, 4), session.picture(5, 5), session.picture(5, 4, 24)}) {
        EXPECT_FALSE(compare(a, other));
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_FALSE(compare(a, other, session.rectangle(90, 90, 1, 1)));
    }
    const ObjectRef buffer =
        session.host.new_picture({.width = 5, .height = 4, .backing = host::Backing::pixel_buffer});
    EXPECT_TRUE(compare(a, buffer));
}

TEST_F(Compare, AnEmptyRegionIsEqual) {
    const ObjectRef a = random_picture(session, random, {}, 9, 7), b = random_picture(session, random, {}, 9, 7);
    ASSERT_FALSE(compare(a, b));
    for (const Area& area :
         {Area{9, 0, 5, 5}, Area{0, 7, 5, 5}, Area{-5, 0, 5, 5}, Area{0, 0, 0, 0}, Area{0, 0, -9, -9},
          Area{INT32_MIN, 0, 1, 5}, Area{INT32_MAX, 0, INT32_MAX, 5}, Area{INT32_MIN, INT32_MIN, INT32_MIN, 1}}) {
        EXPECT_TRUE(compare(a, b, session.rectangle(area.left, area.top, area.width, area.height)));
        EXPECT_EQ(session.last_error(), 0);
    }
}

TEST_F(Compare, APictureEqualsItselfEvenWhenItCannotBeLocked) {
    const ObjectRef locked_out = unlockable();
    EXPECT_TRUE(compare(locked_out, locked_out));
    EXPECT_EQ(session.last_error(), 0);
}

TEST_F(Compare, ChecksComeInOrder) {
    const auto code = [&](const ObjectRef& p, const ObjectRef& other) {
        EXPECT_FALSE(std::get<bool>(call_member("TRV_Compare", p, other, nullptr)));
        return session.last_error();
    };
    const ObjectRef good = session.picture(5, 4);
    EXPECT_EQ(code({}, {}), 49);
    EXPECT_EQ(code(good, {}), 49);
    EXPECT_EQ(code({}, good), 2);
    EXPECT_EQ(code(unlockable(), unlockable()), 4);
    EXPECT_EQ(code(good, unlockable(9, 9)), 50);
    EXPECT_EQ(code(good, session.picture(9, 9)), 0);
}

TEST_F(Compare, NothingIsLeftBehind) {
    const ObjectRef a = random_picture(session, random, {.mask_depth = 8}, 9, 7), b = copy_of(a),
                    other = session.picture(3, 3);
    const ObjectRef locked_out = unlockable();
    const host::Accounts before = session.host.accounts();
    for (const ObjectRef& second : {a, b, other, locked_out}) {
        compare(a, second);
        map(a, second);
    }
    EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    EXPECT_TRUE(session.host.complaints().empty());
}

// --- difference ------------------------------------------------------------------------------------------------------

using Difference = Compare;

TEST_F(Difference, EveryPairOfKindsAgreesWithTheJudge) {
    for (const Shape& first : source_shapes()) {
        for (const Shape& second : source_shapes()) {
            SCOPED_TRACE(first.name() + " and " + second.name());
            const ObjectRef a = random_picture(session, random, first, any_of(random, 1, 30), any_of(random, 1, 6));
            const ObjectRef b = random_picture(session, random, second, any_of(random, 1, 30), any_of(random, 1, 6));
            const auto before_a = all_bytes(a), before_b = all_bytes(b);
            const Value result = map(a, b);
            ASSERT_TRUE(picture_in(result));
            EXPECT_EQ(
                difference(*picture_in(result), plain_difference(read_image(pixels(a)), read_image(pixels(b))), 32),
                "");
            EXPECT_FALSE(picture_in(result)->mask());
            EXPECT_EQ(all_bytes(a), before_a);
            EXPECT_EQ(all_bytes(b), before_b);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Difference, MostlyEqualPicturesOfAwkwardSizes) {
    for (const Shape& shape : source_shapes()) {
        if (shape.backing == host::Backing::drawing_commands) continue;
        for (const int width : {511, 512, 513, 1025}) {
            SCOPED_TRACE(shape.name() + ", " + std::to_string(width));
            const ObjectRef a = random_picture(session, random, shape, width, 3), b = copy_of(a);
            for (int i = 0; i < 5; ++i) change_pixel(b, any_of(random, 0, width - 1), any_of(random, 0, 2));
            EXPECT_EQ(
                difference(*picture_in(map(a, b)), plain_difference(read_image(pixels(a)), read_image(pixels(b))), 32),
                "");
            const ObjectRef narrow = random_picture(session, random, shape, 3, 5);
            EXPECT_EQ(difference(*picture_in(map(a, narrow)),
                                 plain_difference(read_image(pixels(a)), read_image(pixels(narrow))), 32),
                      "");
            EXPECT_EQ(difference(*picture_in(map(narrow, a)),
                                 plain_difference(read_image(pixels(narrow)), read_image(pixels(a))), 32),
                      "");
        }
    }
}

TEST_F(Difference, TheMapOfTwoSizes) {
    const Value result = map(session.picture(10, 10), session.picture(12, 8));
    ASSERT_TRUE(picture_in(result));
    ASSERT_EQ(picture_in(result)->width(), 12);
    ASSERT_EQ(picture_in(result)->height(), 10);
    EXPECT_EQ(read_pixel(*picture_in(result), 9, 7), 0xFFFFFFu);
    EXPECT_EQ(read_pixel(*picture_in(result), 10, 7), 0xDDDDFFu);
    EXPECT_EQ(read_pixel(*picture_in(result), 9, 8), 0xDDFFDDu);
    EXPECT_EQ(read_pixel(*picture_in(result), 11, 9), 0xDDDDFFu);
}

TEST_F(Difference, TopBytesCount) {
    const ObjectRef a = session.picture(3, 3), b = session.picture(3, 3);
    write_pixel(pixels(a), 0, 0, 0x00FFFFFF);
    write_pixel(pixels(b), 0, 0, 0x80FFFFFF);
    EXPECT_TRUE(compare(a, b));
    EXPECT_EQ(read_pixel(*picture_in(map(a, b)), 0, 0), 0xFF0000u);
}

TEST_F(Difference, LeavesTheErrorCodeAsItWas) {
    const ObjectRef a = session.picture(5, 4);
    for (const bool failed_before : {false, true}) {
        const int code = failed_before ? 49 : 0;
        const auto expect_map = [&](const ObjectRef& first, const ObjectRef& second, bool made) {
            call_member("TRV_Compare", a, failed_before ? ObjectRef() : a, nullptr);
            EXPECT_EQ(picture_in(call_member("TRV_Difference", first, second)) != nullptr, made);
            EXPECT_EQ(session.last_error(), code);
        };
        expect_map(a, a, true);
        expect_map({}, {}, false);
        expect_map({}, a, false);
        expect_map(a, {}, false);
        expect_map(unlockable(), a, false);
        expect_map(a, unlockable(), false);
        session.host.faults.fail_at("newPicture", 1);
        expect_map(a, session.picture(7, 2), false);
    }
}

TEST_F(Difference, APictureFromItselfIsWhite) {
    const ObjectRef a = random_picture(session, random, {}, 600, 2);
    const PlainImage image = read_image(pixels(a));
    EXPECT_EQ(difference(*picture_in(map(a, a)), plain_difference(image, image), 32), "");
}

}  // namespace
}  // namespace tarvo::test
