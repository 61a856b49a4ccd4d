// Pictures without pixels: sides of 0, and bounds that a program has turned inside out. Most operations make nothing of
// them, with the codes that the judge and the courses of the fault loop tell. Here are those that make something all
// the same (but for shears, which have it in their own tests).

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "client_pictures.h"
#include "pictures.h"
#include "plain_image.h"
#include "session.h"

namespace tarvo::test {
namespace {

PlainImage plain(Size size, std::uint32_t color) {
    PlainImage image(size.width, size.height);
    std::ranges::fill(image.colors, color);
    return image;
}

// With each way in which pixels are reached.
class EmptyPictures : public ::testing::Test {
protected:
    template <class Test>
    void for_each_empty(int mask_depth, Test test) {
        for (Shape shape : source_shapes()) {
            if (shape.backing == host::Backing::drawing_commands) continue;  // cannot be rendered
            shape.mask_depth = mask_depth;
            for (const Size& size : empty_sizes()) {
                SCOPED_TRACE(shape.name() + ", " + name_of(size));
                test(random_picture(session, random, shape, size.width, size.height), size);
            }
        }
        EXPECT_EQ(session.host.complaints(), std::vector<std::string>());
    }
    template <class Test>
    void for_each_empty(Test test) {
        for_each_empty(0, test);
    }
    // The picture, and the mask where one is expected.
    void expect_colors(const Value& value, Size size, int depth, std::uint32_t color,
                       std::optional<std::uint32_t> mask = {}) {
        ASSERT_TRUE(picture_in(value)) << session.last_error();
        const Picture& made = *picture_in(value);
        EXPECT_EQ(difference(made, plain(size, color), depth), "");
        ASSERT_EQ(static_cast<bool>(made.mask()), mask.has_value());
        if (!mask) return;
        const Picture& made_mask = pixels(made.mask());
        EXPECT_EQ(difference(made_mask, plain(size, *mask), made_mask.depth(), true), "");
    }
    std::string text_in(const Value& value) {
        return std::string(dynamic_cast<host::StringObject&>(*object_in(value).get()).bytes());
    }

    Session session;
    Random random{8205};
};

constexpr Size kAsked = {9, 8};
constexpr std::uint32_t kFrame = 0x336699;

int result_depth(const ObjectRef& source) { return std::max(pixels(source).depth(), 16); }

// By way of a picture as high as the source: where none can be, the result stays as the host made it.
TEST_F(EmptyPictures, AreStretchedToBlack) {
    for (const int mask_depth : {0, 32})
        for_each_empty(mask_depth, [&](const ObjectRef& source, Size size) {
            const int depth = pixels(source).depth();
            if (depth < 16) return;  // a result is as shallow, and most such cannot be made
            const Value value = session.call(source, "TRV_Stretch", kAsked.width, kAsked.height, 0);
            const bool painted = size.height > 0;
            EXPECT_EQ(session.last_error(), painted ? 0 : 5);
            std::optional<std::uint32_t> mask;
            if (mask_depth) mask = 0;
            expect_colors(value, kAsked, depth, painted ? 0x000000 : 0xFFFFFF, mask);
        });
}

TEST_F(EmptyPictures, AreTrimmedToTheFrame) {
    for_each_empty([&](const ObjectRef& source, Size) {
        for (const Size& corner : {Size{0, 0}, Size{-5, -6}, Size{2, -1}, Size{-40000, -40000}}) {
            const ObjectRef area = session.rectangle(corner.width, corner.height, kAsked.width, kAsked.height);
            expect_colors(session.call(source, "TRV_Trim", area, Color{kFrame}), kAsked, result_depth(source), kFrame);
            const ObjectRef client = client_of_picture(session, source);
            const Value trimmed = session.call(client, "TRV_Trim", area, Color{kFrame});
            ASSERT_TRUE(is_client(trimmed));
            expect_colors(session.picture_of(object_in(trimmed)), kAsked, result_depth(source), kFrame);
        }
        EXPECT_FALSE(object_in(session.call(source, "TRV_Trim", nullptr, Color{kFrame})));
        EXPECT_EQ(session.last_error(), 39);
    });
}

TEST_F(EmptyPictures, LeaveASourceAsItIsWhenLaidOverIt) {
    for (const int depth : {16, 24, 32}) {
        const ObjectRef source = random_picture(session, random, {.depth = depth}, kAsked.width, kAsked.height);
        for (const int mask_depth : {0, 32})
            for_each_empty(mask_depth, [&](const ObjectRef& overlay, Size) {
                for (const int place : {-3, 0, 2}) {
                    const Value value = session.call(source, "TRV_Composite", overlay, 0.5, place, place, 0);
                    ASSERT_TRUE(picture_in(value)) << session.last_error();
                    EXPECT_EQ(difference(*picture_in(value), read_image(pixels(source)), depth), "");
                }
            });
    }
}

TEST_F(EmptyPictures, LieBesideEverySource) {
    const ObjectRef source = session.picture(kAsked.width, kAsked.height);
    for_each_empty([&](const ObjectRef& overlay, Size size) {
        const ObjectRef mask = random_picture(session, random, {.depth = 8}, size.width, size.height);
        EXPECT_FALSE(object_in(session.call(source, "TRV_CompositeWithMask", overlay, mask, 0, 0, 0)));
        EXPECT_EQ(session.last_error(), 16);
    });
}

TEST_F(EmptyPictures, AreWhollyDifferentFromOthers) {
    const ObjectRef other = session.picture(kAsked.width, kAsked.height);
    for_each_empty([&](const ObjectRef& empty, Size) {
        const Size whole = {kAsked.width, kAsked.height};
        expect_colors(session.call(empty, "TRV_Difference", other), whole, 32, 0xDDDDFF);
        expect_colors(session.call(other, "TRV_Difference", empty), whole, 32, 0xDDFFDD);
        EXPECT_FALSE(std::get<bool>(session.call(other, "TRV_Compare", empty, nullptr)));
        EXPECT_EQ(session.last_error(), 0);
        const ObjectRef same = session.host.new_picture(pixels(empty).options());
        EXPECT_TRUE(std::get<bool>(session.call(empty, "TRV_Compare", same, nullptr)));
    });
}

// Together they have a width and a height.
TEST_F(EmptyPictures, OfOneSideEachHaveAMapOfDifferences) {
    const auto empty = [&](Size size) { return random_picture(session, random, {}, size.width, size.height); };
    for (const auto& [first, second] :
         {std::pair{Size{0, 4}, Size{3, 0}}, {Size{3, 0}, Size{0, 4}}, {Size{-2, 4}, Size{3, -9}}})
        expect_colors(session.call(empty(first), "TRV_Difference", empty(second)), {3, 4}, 32, 0xDDDDFF);
}

TEST_F(EmptyPictures, BecomeStringsOfTheirHeaders) {
    for (const int mask_depth : {0, 8})
        for_each_empty(mask_depth, [&](const ObjectRef& source, Size size) {
            const Value value = session.call(source, "TRV_ConvertToString");
            EXPECT_EQ(session.last_error(), 0);
            ASSERT_EQ(static_cast<bool>(object_in(value)), size.width >= 0 && size.height >= 0);
            if (!object_in(value)) return;
            const auto byte = [](int number) { return static_cast<char>(number); };
            const std::string text = {0,
                                      0,
                                      0,
                                      byte(size.width),
                                      0,
                                      0,
                                      0,
                                      byte(size.height),
                                      0,
                                      byte(pixels(source).depth()),
                                      byte(mask_depth != 0)};
            EXPECT_EQ(text_in(value), text);
            EXPECT_FALSE(object_in(session.call(object_in(value), "TRV_ConvertToPicture")));
        });
}

TEST_F(EmptyPictures, TellTheirSides) {
    for_each_empty([&](const ObjectRef& source, Size size) {
        EXPECT_EQ(text_in(session.call(source, "TRV_Info")), "OK! width: " + std::to_string(size.width) +
                                                                 ", height: " + std::to_string(size.height) +
                                                                 ", depth: " + std::to_string(pixels(source).depth()));
        session.call(source, "TRV_RowBytes");
        EXPECT_EQ(session.last_error(), 0);
    });
}

TEST_F(EmptyPictures, ClientPicturesHoldThem) {
    for_each_empty([&](const ObjectRef& source, Size size) {
        const ObjectRef client = session.client(source);
        EXPECT_EQ(std::get<int>(session.caller.get(client, "width")), size.width);
        EXPECT_EQ(std::get<int>(session.caller.get(client, "height")), size.height);
        EXPECT_EQ(session.picture_of(client), source);
    });
}

}  // namespace
}  // namespace tarvo::test
