#include "drawing.h"

#include <gtest/gtest.h>

#include "pixels.h"
#include "test_plugin.h"

namespace tarvo::host {
namespace {

class Drawing : public testing::Test {
protected:
    Picture& make(const PictureOptions& options) {
        kept_.push_back(host_.new_picture(options));
        return dynamic_cast<Picture&>(*kept_.back().get());
    }

    // Makes the picture's world the one that drawing goes to.
    void draw_into(Picture& target) {
        REALpictureDescription description{};
        plugin_.lock_description(&target, &description);
        SetGWorld(static_cast<GWorldPtr>(description.store), nullptr);
    }

    std::uint32_t color(const Picture& picture, int x, int y) {
        return color_of(load_pixel(picture.row(y), x, picture.depth()), picture.depth(), picture.colors());
    }

    // A picture of commands whose colours tell their places.
    Picture& commands(int width, int height) {
        Picture& made = make({.width = width, .height = height, .backing = Backing::drawing_commands});
        made.drawing = [](int x, int y) { return static_cast<std::uint32_t>(0x100 * y + x + 1); };
        return made;
    }

    Host host_;
    TestPlugin plugin_{host_};
    std::vector<ObjectRef> kept_;
};

TEST_F(Drawing, CommandsAreRendered) {
    Picture& target = make({.width = 4, .height = 3});
    draw_into(target);
    const Rect all{0, 0, 3, 4};
    plugin_.draw(&commands(4, 3), &all);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 4; ++x) EXPECT_EQ(color(target, x, y), static_cast<std::uint32_t>(0x100 * y + x + 1));
    }
}

TEST_F(Drawing, CommandsAreWhiteUnlessSet) {
    Picture& target = make({.width = 2, .height = 1});
    store_pixel(target.row(0), 0, 32, 0);
    draw_into(target);
    const Rect first{0, 0, 1, 1};
    plugin_.draw(&make({.width = 5, .height = 5, .backing = Backing::drawing_commands}), &first);
    EXPECT_EQ(color(target, 0, 0), 0xFFFFFFu);
}

// The table of a world may have been let go.
TEST_F(Drawing, IsBlackWithoutAColourTable) {
    Picture& target = make({.width = 2, .height = 1, .depth = 8});
    REALpictureDescription description{};
    plugin_.lock_description(&target, &description);
    PixMap& map = **GetGWorldPixMap(static_cast<GWorldPtr>(description.store));
    const CTabHandle before = map.pmTable;
    ColorTable* none = nullptr;
    const Rect all{0, 0, 1, 2};
    for (const CTabHandle table : {CTabHandle{nullptr}, CTabHandle{&none}}) {
        target.row(0)[0] = target.row(0)[1] = 77;
        map.pmTable = table;
        draw_picture(commands(2, 1), all, GetGWorldPixMap(static_cast<GWorldPtr>(description.store)));
        EXPECT_EQ(target.row(0)[0], target.row(0)[1]) << "there are no colours to choose from";
        EXPECT_NE(target.row(0)[0], 77);
    }
    map.pmTable = before;
    plugin_.unlock_description(&target);
}

TEST_F(Drawing, IsScaledToTheRectangle) {
    Picture& target = make({.width = 8, .height = 4});
    draw_into(target);
    const Rect where{1, 2, 3, 6};
    plugin_.draw(&commands(2, 1), &where);
    const std::uint32_t left = 1, right = 2, paper = 0xFFFFFF;
    const std::uint32_t expected[] = {paper, paper, left, left, right, right, paper, paper};
    for (int x = 0; x < 8; ++x) {
        EXPECT_EQ(color(target, x, 0), paper);
        EXPECT_EQ(color(target, x, 1), expected[x]);
        EXPECT_EQ(color(target, x, 2), expected[x]);
        EXPECT_EQ(color(target, x, 3), paper);
    }
}

TEST_F(Drawing, IsClippedToTheWorld) {
    Picture& target = make({.width = 2, .height = 2});
    draw_into(target);
    const Rect around{-1, -1, 3, 3};
    plugin_.draw(&commands(4, 4), &around);
    EXPECT_EQ(color(target, 0, 0), 0x102u);
    EXPECT_EQ(color(target, 1, 1), 0x203u);
    const Rect widest{-32768, -32768, 32767, 32767};
    plugin_.draw(&commands(1, 1), &widest);
    EXPECT_EQ(color(target, 1, 1), 1u);
}

TEST_F(Drawing, EmptyRectanglesDrawNothing) {
    Picture& target = make({.width = 2, .height = 2});
    draw_into(target);
    for (const Rect& empty : {Rect{0, 0, 0, 2}, Rect{2, 2, 0, 0}, Rect{5, 5, 9, 9}}) {
        plugin_.draw(&commands(2, 2), &empty);
        EXPECT_EQ(color(target, 0, 0), 0xFFFFFFu);
        EXPECT_EQ(color(target, 1, 1), 0xFFFFFFu);
    }
    plugin_.draw(&commands(2, 2), nullptr);
}

TEST_F(Drawing, PixelsOfEveryDepthAreDrawnInEveryDepth) {
    for (const int from : {1, 2, 4, 8, 16, 24, 32}) {
        Picture& source = make({.width = 2, .height = 1, .depth = from});
        store_pixel(source.row(0), 1, from, value_of(0, from, source.colors()));
        for (const int to : {1, 2, 4, 8, 16, 24, 32}) {
            Picture& target = make({.width = 2, .height = 1, .depth = to});
            store_pixel(target.row(0), 0, to, value_of(0, to, target.colors()));
            draw_into(target);
            const Rect all{0, 0, 1, 2};
            plugin_.draw(&source, &all);
            EXPECT_EQ(color(target, 0, 0), 0xFFFFFFu) << from << " to " << to;
            EXPECT_EQ(color(target, 1, 0), 0x000000u) << from << " to " << to;
        }
    }
}

TEST_F(Drawing, IsToldBeforehand) {
    Picture& target = make({.width = 1, .height = 1});
    draw_into(target);
    std::uint32_t seen = 0;
    host_.on_draw = [&] { seen = color(target, 0, 0); };
    const Rect all{0, 0, 1, 1};
    plugin_.draw(&commands(1, 1), &all);
    EXPECT_EQ(seen, 0xFFFFFFu);
    EXPECT_EQ(color(target, 0, 0), 1u);
}

TEST_F(Drawing, HoldsThePictureWhileTold) {
    Picture& target = make({.width = 1, .height = 1});
    draw_into(target);
    void* mortal = ObjectRef::share(&commands(1, 1)).hand_over();
    kept_.pop_back();
    host_.on_draw = [&] { plugin_.unlock(mortal); };
    const Rect all{0, 0, 1, 1};
    plugin_.draw(mortal, &all);
    EXPECT_EQ(color(target, 0, 0), 1u);
    EXPECT_EQ(host_.objects().find(mortal), nullptr);
}

TEST_F(Drawing, WithoutAWorldDrawsNothing) {
    SetGWorld(nullptr, nullptr);
    const Rect all{0, 0, 1, 1};
    plugin_.draw(&commands(1, 1), &all);
    Picture& target = make({.width = 1, .height = 1});
    draw_into(target);
    target.set_purged(true);
    plugin_.draw(&commands(1, 1), &all);
    EXPECT_EQ(color(target, 0, 0), 0xFFFFFFu);
}

TEST_F(Drawing, LeavesNoLocks) {
    Picture& target = make({.width = 1, .height = 1});
    draw_into(target);
    Picture& source = commands(1, 1);
    source.drawing = [](int, int) -> std::uint32_t { throw HostError("no ink"); };
    const Rect all{0, 0, 1, 1};
    EXPECT_THROW(plugin_.draw(&source, &all), HostError);
    EXPECT_EQ(PlatformLiveObjects().pixelLocks, 0);
}

}  // namespace
}  // namespace tarvo::host
