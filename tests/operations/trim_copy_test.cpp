// Trim, through the built library.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "client_pictures.h"
#include "judge.h"
#include "pictures.h"
#include "plain_pixels.h"
#include "session.h"
#include "snapshot.h"

namespace tarvo::test {
namespace {

constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();

void judge(const host::Picture& source, host::Picture& result, const Area& area, std::uint32_t frame_rows,
           std::uint32_t frame_columns, bool as_mask) {
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            const long sx = long{area.left} + x, sy = long{area.top} + y;
            std::uint32_t color = frame_rows;
            if (sy >= 0 && sy < source.height())
                color = sx >= 0 && sx < source.width() ? load(source, static_cast<int>(sx), static_cast<int>(sy),
                                                              as_mask, Addressing::whole_pixels)
                                                       : frame_columns;
            store(result, x, y, color, as_mask, Addressing::whole_pixels);
        }
    }
}

class TrimOfMasks : public ::testing::Test {
protected:
    static ObjectRef rectangle(Session& in, const Area& area) {
        return in.rectangle(area.left, area.top, area.width, area.height);
    }

    void expect_agreement(Session& in, const ObjectRef& source, const Area* area) {
        const Area whole = {0, 0, pixels(source).width(), pixels(source).height()};
        const Area& wanted = area ? *area : whole;
        SCOPED_TRACE(::testing::Message()
                     << wanted.left << ", " << wanted.top << ", " << wanted.width << " x " << wanted.height);
        const std::uint32_t frame = any_color(random);
        const Snapshot before(in, source);
        const Value value = in.call(source, "TRV_Trim", area ? rectangle(in, *area) : ObjectRef(), Color{frame});
        ASSERT_TRUE(picture_in(value)) << in.last_error();
        EXPECT_EQ(in.last_error(), 0);
        const Picture& result = *picture_in(value);
        ASSERT_EQ(result.width(), wanted.width);
        ASSERT_EQ(result.height(), wanted.height);
        ASSERT_EQ(result.depth(), std::max(pixels(source).depth(), 16));
        const auto expected = new_like(result, Picture::Paper::white);
        judge(pixels(source), *expected, wanted, frame, frame, false);
        expect_same_bytes(result, *expected);

        ASSERT_EQ(static_cast<bool>(result.mask()), static_cast<bool>(pixels(source).mask()));
        if (result.mask()) {
            const auto expected_mask = new_like(pixels(result.mask()), Picture::Paper::black);
            judge(pixels(pixels(source).mask()), *expected_mask, wanted, 0xFFFFFF, frame, true);
            expect_same_bytes(pixels(result.mask()), *expected_mask);
        }
        EXPECT_TRUE(before.unchanged());
    }

    Random random{6005};
};

class Trim : public TrimOfMasks {
protected:
    Session session;
};

TEST_F(Trim, EveryKindAgreesWithTheJudge) {
    for (const Shape& shape : source_shapes()) {
        SCOPED_TRACE(shape.name());
        const int width = any_of(random, 1, 30), height = any_of(random, 1, 10);
        const ObjectRef source = random_picture(session, random, shape, width, height);
        expect_agreement(session, source, nullptr);
        for (const Area& area :
             {any_area(random, width, height), any_area(random, width, height), Area{0, 0, 1, 1},
              Area{-2, -2, width + 4, height + 4}, Area{width, 0, 3, 3}, Area{0, height, 3, 3}, Area{-4, -4, 3, 3},
              Area{kMost - 2, 0, 3, 2}, Area{0, kMost - 1, 2, 2}, Area{kLeast, kLeast, 2, 2}})
            expect_agreement(session, source, &area);
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(TrimOfMasks, EveryDepthGoesAlong) {
    for (const int result_mask_depth : {32, 1, 2, 4, 8, 16, 24}) {
        Session other({.mask_depth = result_mask_depth});
        for (const int mask_depth : mask_depths()) {
            SCOPED_TRACE(::testing::Message() << mask_depth << " to " << result_mask_depth);
            const ObjectRef source = random_picture(other, random, {.depth = 16, .mask_depth = mask_depth}, 20, 9);
            expect_agreement(other, source, nullptr);
            for (int i = 0; i < 4; ++i) {
                const Area area = any_area(random, 20, 9);
                expect_agreement(other, source, &area);
            }
        }
    }
}

TEST_F(Trim, WideRows) {
    for (const int width : {511, 512, 513, 1025}) {
        const ObjectRef source = random_picture(session, random, {}, width, 2);
        for (const Area& area :
             {Area{0, 0, width, 2}, Area{-1, 0, width + 2, 2}, Area{-600, 0, 2000, 1}, Area{1, 1, 512, 1}})
            expect_agreement(session, source, &area);
    }
}

// Columns beside the source have the frame's colour in the mask too; rows beside it are transparent.
TEST_F(Trim, BesideTheSourceTheMaskHasTheFrameColour) {
    const ObjectRef source = session.picture(2, 2);
    pixels(source).set_mask(session.picture(2, 2));
    const Value value = session.call(source, "TRV_Trim", session.rectangle(5, 1, 2, 2), Color{0x00123456});
    const Picture& mask = pixels(picture_in(value)->mask());
    EXPECT_EQ(read_pixel(mask, 0, 0), 0x00123456u);
    EXPECT_EQ(read_pixel(mask, 1, 1), 0xFFFFFFu);
}

TEST_F(Trim, ColoursOfFrameHaveNoTopByte) {
    const ObjectRef source = session.picture(2, 2);
    const Value value =
        session.invoke("TRV_Trim(extends p", source, session.rectangle(-1, -1, 1, 1), static_cast<int>(0xFF654321));
    ASSERT_TRUE(picture_in(value));
    EXPECT_EQ(read_pixel(*picture_in(value), 0, 0), 0x654321u);
}

TEST_F(Trim, AreasThatAreNone) {
    const ObjectRef source = session.picture(3, 2);
    const Area areas[] = {{0, 0, 0, 2},       {0, 0, 3, 0},           {0, 0, -1, 2},
                          {0, 0, 3, -7},      {kMost, 0, 2, 1},       {0, kMost, 1, 2},
                          {kLeast, 0, -9, 1}, {0, 0, kLeast, kLeast}, {5, 0, kMost, 1}};
    for (const Area& area : areas) {
        EXPECT_FALSE(picture_in(session.call(source, "TRV_Trim", rectangle(session, area), Color{0})));
        EXPECT_EQ(session.last_error(), 39) << area.left << " " << area.width;
    }
}

TEST_F(Trim, ChecksComeInOrder) {
    const ObjectRef source = session.picture(3, 2), unlockable = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    const ObjectRef empty = session.rectangle(0, 0, 0, 0), fine = session.rectangle(0, 0, 2, 2);
    const auto code = [&](const ObjectRef& p, const ObjectRef& area) {
        EXPECT_FALSE(picture_in(session.invoke("TRV_Trim(extends p", p, area, Color{0})));
        return session.last_error();
    };
    EXPECT_EQ(code({}, empty), 2);
    EXPECT_EQ(code(unlockable, empty), 4);
    EXPECT_EQ(code(source, empty), 39);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code(source, fine), 6);
    EXPECT_EQ(code(source, session.rectangle(0, 0, 40000, 2)), 6);  // wider than the host makes any
}

TEST_F(Trim, AMaskThatCannotBeLockedIsLeftOut) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 8}, 4, 4);
    pixels(pixels(source).mask()).set_purged(true);
    const Value value = session.call(source, "TRV_Trim", nullptr, Color{0});
    ASSERT_TRUE(picture_in(value));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(difference(*picture_in(value), read_image(pixels(source)), 32), "");
}

TEST_F(Trim, ReferencesBalanceAndNobodyYields) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 32}, 20, 10);
    const ObjectRef area = session.rectangle(-3, -3, 30, 30);
    const host::Accounts before = session.host.accounts();
    for (int i = 0; i < 5; ++i) session.call(source, "TRV_Trim", area, Color{i * 77u});
    EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    EXPECT_EQ(session.host.yields(), 0);
    EXPECT_TRUE(session.host.complaints().empty());
}

// --- client pictures: own memory, no mask, whatever the source has ---------------------------------------------------

constexpr const char* kClientTrim = "TRV_Trim(extends cp";

TEST_F(Trim, ClientFormAgreesWithTheJudge) {
    for (const int depth : {1, 8, 16, 24, 32}) {
        for (const bool own : {false, true}) {
            if (own && depth < 16) continue;
            SCOPED_TRACE(::testing::Message() << depth << (own ? " own" : " host"));
            const ObjectRef picture = random_picture(session, random, {.depth = depth, .mask_depth = 8}, 12, 7);
            const ObjectRef client =
                own ? client_in_own_memory(session, random, 12, 7, depth, true) : client_of_picture(session, picture);
            const ObjectRef source = own ? session.picture_of(client) : picture;
            const Area area = any_area(random, 12, 7);
            const std::uint32_t frame = any_color(random);
            const auto bytes = client_bytes(client);
            const Value value = session.invoke(kClientTrim, client, rectangle(session, area), Color{frame});
            ASSERT_TRUE(is_client(value));
            EXPECT_EQ(session.last_error(), 0);
            EXPECT_EQ(own_depth(object_in(value)), std::max(depth, 16));
            EXPECT_FALSE(client_has_mask(object_in(value)));
            const ObjectRef result = session.picture_of(object_in(value));
            const auto expected = new_like(pixels(result), Picture::Paper::white);
            judge(pixels(source), *expected, area, frame, frame, false);
            expect_same_bytes(pixels(result), *expected);
            EXPECT_EQ(client_bytes(client), bytes);
        }
    }
}

TEST_F(Trim, ClientFormChecks) {
    const ObjectRef client = client_in_own_memory(session, random, 4, 4, 32, false);
    const Value none = session.invoke(kClientTrim, ObjectRef(), session.rectangle(0, 0, 0, 0), Color{0});
    EXPECT_FALSE(is_client(none));
    EXPECT_EQ(session.last_error(), 2);
    EXPECT_FALSE(is_client(session.invoke(kClientTrim, client, session.rectangle(0, 0, 0, 1), Color{0})));
    EXPECT_EQ(session.last_error(), 39);
    const ObjectRef unlockable = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    EXPECT_FALSE(is_client(session.invoke(kClientTrim, client_of_picture(session, unlockable), nullptr, Color{0})));
    EXPECT_EQ(session.last_error(), 4);
    EXPECT_FALSE(is_client(session.invoke(kClientTrim, client, session.rectangle(0, 0, kMost, 2), Color{0})));
    EXPECT_EQ(session.last_error(), 6);
}

}  // namespace
}  // namespace tarvo::test
