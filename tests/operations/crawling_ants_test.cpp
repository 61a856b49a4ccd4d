// Crawling ants, through the built library.

#include <gtest/gtest.h>

#include "judge.h"
#include "session.h"

namespace tarvo::test {
namespace {

constexpr std::uint32_t kAnt = 0xFF8800, kShadow = 0x001122;
constexpr int kMost = 2147483647, kLeast = -kMost - 1;

// The outline, run after run, in wide numbers.
PlainImage plain_outline(PlainImage image, const Area& area, std::int64_t size, std::int64_t state) {
    const int left = std::max(area.left, 0), right = std::min(area.left + area.width, image.width) - 1;
    const int top = std::max(area.top, 0), bottom = std::min(area.top + area.height, image.height) - 1;
    if (size < 1) return image;
    std::int64_t phase = 0;
    const auto draw = [&](int x, int y) {
        image.at(x, y) = phase >= size ? kShadow : kAnt;
        phase = phase <= 0 ? 2 * size - 1 : phase - 1;
    };
    phase = state % (2 * size);
    for (int x = left; x <= right; ++x) draw(x, top);
    for (int y = top; y <= bottom; ++y) draw(right, y);
    phase = state % (2 * size);
    for (int y = top; y <= bottom; ++y) draw(left, y);
    for (int x = left; x <= right; ++x) draw(x, bottom);
    return image;
}

class CrawlingAnts : public ::testing::Test {
protected:
    Value ants(const ObjectRef& source, const ObjectRef& rectangle, int size, int state) {
        return session.call(source, "TRV_CrawlingAnts", rectangle, Color{kAnt}, Color{kShadow}, size, state);
    }
    void expect_outline(const ObjectRef& source, const Area& area, int size, int state, int code) {
        SCOPED_TRACE(::testing::Message() << "size " << size << ", state " << state);
        const auto before = all_bytes(source);
        const Value result = ants(source, session.rectangle(area.left, area.top, area.width, area.height), size, state);
        ASSERT_TRUE(picture_in(result));
        EXPECT_EQ(session.last_error(), code);
        EXPECT_EQ(difference(*picture_in(result), plain_outline(read_image(pixels(source)), area, size, state),
                             std::max(pixels(source).depth(), 16)),
                  "");
        EXPECT_FALSE(picture_in(result)->mask());
        EXPECT_EQ(all_bytes(source), before);
    }
    std::string top_row(int width, int size, int state) {
        const Value result = ants(session.picture(width, 4), {}, size, state);
        std::string row;
        for (int x = 0; x < width; ++x) row += read_pixel(*picture_in(result), x, 0) == kAnt ? 'a' : 's';
        return row;
    }

    Session session;
    Random random{7302};
};

TEST_F(CrawlingAnts, EveryKindAndMaskAgreesWithTheJudge) {
    for (Shape shape : source_shapes()) {
        for (const int mask_depth : mask_depths()) {
            if (shape.backing == host::Backing::drawing_commands && mask_depth) continue;
            shape.mask_depth = mask_depth;
            SCOPED_TRACE(shape.name());
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 30), size = any_of(random, 1, 9);
            const ObjectRef source = random_picture(session, random, shape, width, height);
            for (int i = 0; i < 3; ++i)
                expect_outline(source, any_area(random, width, height), size, any_of(random, 0, 2 * size - 1), 0);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(CrawlingAnts, WidePicturesAgreeWithTheJudge) {
    for (const int width : {511, 512, 513, 1025}) {
        const ObjectRef source = random_picture(session, random, {}, width, 6);
        expect_outline(source, {0, 0, width, 6}, 5, 3, 0);
        expect_outline(source, {1, 2, width - 2, 3}, 600, 700, 0);
    }
}

// Shifting the state by one moves every dash by one pixel.
TEST_F(CrawlingAnts, KnownRows) {
    EXPECT_EQ(top_row(7, 2, 0), "assaasa");  // phases 0 3 2 1 0 3; the corner has the right column's first, 1
    EXPECT_EQ(top_row(7, 2, 1).substr(0, 6), "aassaa");
    EXPECT_EQ(top_row(7, 2, 2).substr(0, 6), "saassa");
    EXPECT_EQ(top_row(7, 2, 3).substr(0, 6), "ssaass");
    EXPECT_EQ(top_row(7, 1, 0).substr(0, 6), "asasas");
}

// The bottom row goes on where the left column ends, and comes last.
TEST_F(CrawlingAnts, LaterRunsOverwriteTheCorners) {
    const Value result = ants(session.picture(3, 3), {}, 2, 0);
    const PlainImage image = read_image(*picture_in(result));
    // Phases along the left column 0 3 2, along the bottom row 1 0 3; on the right, after 0 3 2: 1 0 3.
    const std::uint32_t expected[] = {kAnt, kShadow, kAnt, kShadow, 0xFFFFFF, kAnt, kAnt, kAnt, kShadow};
    for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(image.colors[i], expected[i]) << i;
}

TEST_F(CrawlingAnts, RegionsOfOnePixelAndOfOneLine) {
    const ObjectRef source = random_picture(session, random, {}, 9, 9);
    for (const Area& area : {Area{4, 4, 1, 1}, Area{2, 3, 5, 1}, Area{3, 2, 1, 5}, Area{-4, -4, 5, 5}})
        for (int state = 0; state < 6; ++state) expect_outline(source, area, 3, state, 0);
}

TEST_F(CrawlingAnts, AStateOutOfRangeIsReportedAndDrawn) {
    const ObjectRef source = random_picture(session, random, {}, 20, 15);
    const Area area = {2, 3, 14, 9};
    for (const int size : {1, 2, 5})
        for (const int state : {2 * size, 2 * size + 1, 100, kMost, -1, -2, -2 * size, -100, kLeast})
            expect_outline(source, area, size, state, 47);
    EXPECT_EQ(top_row(7, 2, 4), top_row(7, 2, 0));
    // Below 0 one ant, and then a whole period from its end.
    EXPECT_EQ(top_row(8, 2, -1).substr(0, 7), "assaass");
    EXPECT_EQ(top_row(8, 2, -3).substr(0, 7), "assaass");
}

TEST_F(CrawlingAnts, SizesWhoseDoubleOverflowsAreDrawn) {
    const ObjectRef source = random_picture(session, random, {}, 20, 15);
    for (const int size : {1 << 30, (1 << 30) + 5, kMost}) {
        expect_outline(source, {2, 3, 14, 9}, size, 5, 0);
        expect_outline(source, {2, 3, 14, 9}, size, kMost, 0);
        expect_outline(source, {2, 3, 14, 9}, size, kLeast, 47);
    }
}

TEST_F(CrawlingAnts, ASizeBelowOneIsReportedAndNothingIsDrawn) {
    const ObjectRef source = random_picture(session, random, {}, 20, 15);
    for (const int size : {0, -1, -5, -(1 << 30), kLeast})
        for (const int state : {0, 3, -3, kLeast}) expect_outline(source, {2, 3, 14, 9}, size, state, 46);
}

TEST_F(CrawlingAnts, ColorsAreTheirLow24Bits) {
    const Value result = session.invoke("TRV_CrawlingAnts(extends p", session.picture(4, 4), ObjectRef(),
                                        Color{0xAB123456}, Color{0xCD654321}, 1, 0);
    ASSERT_TRUE(picture_in(result));
    EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), 0x123456u);
    EXPECT_EQ(read_pixel(*picture_in(result), 1, 0), 0x654321u);
}

// What is wrong with the ants is found after an empty region, and replaces its code.
TEST_F(CrawlingAnts, ChecksComeInOrder) {
    const ObjectRef source = session.picture(3, 2), unlockable = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    const ObjectRef outside = session.rectangle(50, 50, 5, 5);
    const auto code = [&](const ObjectRef& p, const ObjectRef& rectangle, int size, int state) {
        const Value result =
            session.invoke("TRV_CrawlingAnts(extends p", p, rectangle, Color{1}, Color{2}, size, state);
        EXPECT_FALSE(picture_in(result));
        return session.last_error();
    };
    EXPECT_EQ(code({}, outside, 0, 0), 2);
    EXPECT_EQ(code(unlockable, outside, 0, 0), 4);
    EXPECT_EQ(code(source, outside, 2, 0), 38);
    EXPECT_EQ(code(source, outside, 0, -1), 46);
    EXPECT_EQ(code(source, outside, 2, 4), 47);
    EXPECT_EQ(code(source, outside, 2, -1), 47);
    session.host.faults.fail_at("newPicture", 1, true);
    EXPECT_EQ(code(source, outside, 2, 3), 38);
    EXPECT_EQ(code(source, {}, 2, 0), 6);
    EXPECT_EQ(code(source, {}, 0, 0), 6);
    EXPECT_EQ(code(source, {}, 2, 9), 6);
}

TEST_F(CrawlingAnts, NothingIsLeftBehindAndTheHostGetsNoControl) {
    const ObjectRef source = session.picture(60, 40);
    const auto before = session.host.accounts();
    ASSERT_TRUE(picture_in(ants(source, {}, 4, 1)));
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_EQ(session.host.yields(), 0);
}

}  // namespace
}  // namespace tarvo::test
