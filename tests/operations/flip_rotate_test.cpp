// Flips and quarter turns, through the built library.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "pictures.h"
#include "plain_pixels.h"
#include "plain_turn.h"
#include "session.h"
#include "snapshot.h"

namespace tarvo::test {
namespace {

std::vector<Turn> all_turns() {
    std::vector<Turn> turns;
    for (int rotation = 0; rotation < 4; ++rotation)
        for (const bool h : {false, true})
            for (const bool v : {false, true}) turns.push_back({rotation, h, v});
    return turns;
}

int expected_depth(const host::Picture& source) {
    return source.depth() == 1 && !source.mask() ? 1 : std::max(source.depth(), 16);
}

class FlipRotate : public ::testing::Test {
protected:
    static Value flip_rotate(Session& session, const ObjectRef& source, const Turn& turn, int yield = 0) {
        return session.call(source, "TRV_FlipRotate", turn.flip_h, turn.flip_v, turn.rotation, yield);
    }

    void expect_agreement(Session& session, const ObjectRef& source, const Turn& turn) {
        SCOPED_TRACE(turn.name());
        const Snapshot before(session, source);
        const Value value = flip_rotate(session, source, turn);
        ASSERT_TRUE(picture_in(value)) << session.last_error();
        EXPECT_EQ(session.last_error(), 0);
        const Picture& result = *picture_in(value);
        const bool swapped = turn.rotation % 2;
        ASSERT_EQ(result.width(), swapped ? pixels(source).height() : pixels(source).width());
        ASSERT_EQ(result.height(), swapped ? pixels(source).width() : pixels(source).height());
        ASSERT_EQ(result.depth(), expected_depth(pixels(source)));

        const auto expected = new_like(result, Picture::Paper::white);
        plain_turn(turn, pixels(source), false, *expected, false);
        expect_same_bytes(result, *expected);

        ASSERT_EQ(static_cast<bool>(result.mask()), static_cast<bool>(pixels(source).mask()));
        if (result.mask()) {
            const auto expected_mask = new_like(pixels(result.mask()), Picture::Paper::black);
            plain_turn(turn, pixels(pixels(source).mask()), true, *expected_mask, true);
            expect_same_bytes(pixels(result.mask()), *expected_mask);
        }
        EXPECT_TRUE(before.unchanged());
    }

    Random random{6001};
};

TEST_F(FlipRotate, EveryTurnOfEveryKindAgreesWithTheJudge) {
    Session session;
    for (const Shape& shape : source_shapes()) {
        SCOPED_TRACE(shape.name());
        const ObjectRef source = random_picture(session, random, shape, any_of(random, 1, 40), any_of(random, 1, 40));
        for (const Turn& turn : all_turns()) expect_agreement(session, source, turn);
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(FlipRotate, MasksGoThroughTheSameKernel) {
    for (const int result_mask_depth : {32, 1, 2, 4, 8, 16, 24}) {
        Session session({.mask_depth = result_mask_depth});
        for (Shape shape : {Shape{.depth = 1}, Shape{.depth = 8}, Shape{.depth = 24}, Shape{.depth = 32}}) {
            for (const int mask_depth : mask_depths()) {
                if (mask_depth == 0) continue;
                shape.mask_depth = mask_depth;
                SCOPED_TRACE(shape.name() + ", result masks of " + std::to_string(result_mask_depth));
                const ObjectRef source =
                    random_picture(session, random, shape, any_of(random, 1, 30), any_of(random, 1, 12));
                for (const Turn& turn : all_turns()) expect_agreement(session, source, turn);
            }
        }
        EXPECT_TRUE(session.host.complaints().empty());
    }
}

TEST_F(FlipRotate, SizesAroundTilesAndChunks) {
    Session session;
    for (const auto& [width, height] :
         {std::pair{1, 1}, std::pair{1, 200}, std::pair{511, 3}, std::pair{512, 2}, std::pair{513, 1},
          std::pair{1025, 5}, std::pair{63, 65}, std::pair{64, 64}, std::pair{129, 127}}) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
        for (const int depth : {1, 16, 24, 32}) {
            const ObjectRef source = random_picture(session, random, {.depth = depth}, width, height);
            for (const Turn& turn : all_turns()) expect_agreement(session, source, turn);
        }
    }
}

TEST_F(FlipRotate, KnownPlaces) {
    Session session;
    const ObjectRef source = session.picture(3, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) write_pixel(pixels(source), x, y, static_cast<std::uint32_t>(10 * y + x));
    const auto colors = [&](const Turn& turn) {
        const Value value = flip_rotate(session, source, turn);
        return read_image(*picture_in(value)).colors;
    };
    using Colors = std::vector<std::uint32_t>;
    EXPECT_EQ(colors({1, false, false}), (Colors{10, 0, 11, 1, 12, 2}));
    EXPECT_EQ(colors({2, false, false}), (Colors{12, 11, 10, 2, 1, 0}));
    EXPECT_EQ(colors({3, false, false}), (Colors{2, 12, 1, 11, 0, 10}));
    EXPECT_EQ(colors({1, true, false}), (Colors{12, 2, 11, 1, 10, 0}));
    EXPECT_EQ(colors({3, true, false}), (Colors{0, 10, 1, 11, 2, 12}));  // transposed
    EXPECT_EQ(colors({2, true, true}), (Colors{0, 1, 2, 10, 11, 12}));   // as it was
}

TEST_F(FlipRotate, RoundTripsRestoreThePicture) {
    Session session;
    for (const int depth : {16, 24, 32}) {
        Shape shape{.depth = depth, .mask_depth = 32};
        const ObjectRef source = random_picture(session, random, shape, 37, 23);
        for (const Turn& turn :
             {Turn{1, false, false}, Turn{3, false, false}, Turn{2, false, false}, Turn{0, true, false},
              Turn{0, false, true}, Turn{0, true, true}, Turn{1, true, false}, Turn{3, false, true}}) {
            ObjectRef turned = source;
            for (int i = 0; i < 4; ++i) turned = object_in(flip_rotate(session, turned, turn));
            ASSERT_TRUE(turned);
            // 16-bit pixels lose their unused bit, and that alone.
            EXPECT_EQ(difference(pixels(turned), read_image(pixels(source)), depth), "");
            EXPECT_EQ(
                difference(pixels(pixels(turned).mask()), read_image(pixels(pixels(source).mask()), true), 32, true),
                "");
        }
    }
}

TEST_F(FlipRotate, BothArgumentsAreCheckedAndTheRotationCounts) {
    Session session;
    const ObjectRef source = session.picture(3, 2);
    const auto code = [&](const ObjectRef& p, int rotation) {
        const Value result = session.invoke("TRV_FlipRotate(", p, false, false, rotation, 0);
        EXPECT_EQ(picture_in(result) != nullptr, session.last_error() == 0);
        return session.last_error();
    };
    for (const int rotation : {4, -1, 7, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(code(source, rotation), 31);
        EXPECT_EQ(code({}, rotation), 31);
    }
    for (const int rotation : {0, 1, 2, 3}) {
        EXPECT_EQ(code(source, rotation), 0);
        EXPECT_EQ(code({}, rotation), 2);
    }
}

TEST_F(FlipRotate, LocksThatFail) {
    Session session;
    const ObjectRef unlockable = session.picture(3, 2), masked = session.picture(3, 2), plain = session.picture(3, 2);
    pixels(masked).set_mask(session.picture(3, 2, 8));
    const auto code = [&](const ObjectRef& p) {
        EXPECT_FALSE(picture_in(flip_rotate(session, p, {1, false, false})));
        EXPECT_EQ(session.host.accounts().picture_locks, 0);
        return session.last_error();
    };
    pixels(unlockable).set_purged(true);
    EXPECT_EQ(code(unlockable), 4);
    for (const ObjectRef& p : {plain, masked}) {
        session.host.faults.fail_at("newPicture", 1);
        EXPECT_EQ(code(p), 6);
    }
    session.host.faults.fail_at("REALGetPictureMask", 3);  // the source has one, its mask, the result's mask
    EXPECT_EQ(code(masked), 6);
    session.host.faults.clear();
    pixels(pixels(masked).mask()).set_purged(true);
    EXPECT_EQ(code(masked), 9);
}

TEST_F(FlipRotate, ReferencesBalance) {
    Session session;
    for (const int mask_depth : {0, 8, 32}) {
        const ObjectRef source = random_picture(session, random, {.mask_depth = mask_depth}, 20, 10);
        const host::Accounts before = session.host.accounts();
        for (const Turn& turn : all_turns()) flip_rotate(session, source, turn);
        EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

// The rows of the result count, for the image and again for the mask.
TEST_F(FlipRotate, YieldsByTheResultsRows) {
    Session session;
    const ObjectRef source = session.picture(30, 100), masked = session.picture(30, 100);
    pixels(masked).set_mask(session.picture(30, 100));
    const auto yields = [&](const ObjectRef& p, const Turn& turn, int budget) {
        const int before = session.host.yields();
        EXPECT_TRUE(picture_in(flip_rotate(session, p, turn, budget)));
        return session.host.yields() - before;
    };
    for (const Turn& turn : all_turns()) {
        SCOPED_TRACE(turn.name());
        const bool swapped = turn.rotation % 2;  // 30 rows of 100, or 100 rows of 30
        EXPECT_EQ(yields(source, turn, 0), 0);
        EXPECT_EQ(yields(source, turn, -5), 0);
        EXPECT_EQ(yields(source, turn, 1), swapped ? 29 : 99);
        EXPECT_EQ(yields(source, turn, 100), swapped ? 29 : 24);
        EXPECT_EQ(yields(source, turn, 101), swapped ? 14 : 24);
        EXPECT_EQ(yields(masked, turn, 101), swapped ? 28 : 48);
    }
}

}  // namespace
}  // namespace tarvo::test
