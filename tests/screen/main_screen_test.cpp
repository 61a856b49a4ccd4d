// The main screen as programs capture it, off a real X server.

#include "main_screen.h"

#include <gtest/gtest.h>

#include <utility>

#include "canvas.h"
#include "plain_image.h"
#include "session.h"
#include "test_server.h"

namespace tarvo::test {
namespace {

class MainScreen : public ::testing::Test {
protected:
    Value capture() { return session.call(session.host.new_screen(), "TRV_ScreenCapture", nullptr); }
    void expect_capture(const PlainImage& expected) {
        const Value captured = capture();
        ASSERT_TRUE(picture_in(captured));
        EXPECT_EQ(difference(*picture_in(captured), expected, 32), "");
    }
    void expect_nil() {
        EXPECT_FALSE(object_in(capture()));
        EXPECT_EQ(session.last_error(), 0);
    }

    Session session;
};

TEST_F(MainScreen, IsCapturedPixelForPixel) {
    for (const bool shared_memory : {true, false}) {
        SCOPED_TRACE(shared_memory ? "with shared memory" : "without");
        const TestServer server(131, 77, 24, {shared_memory ? "+extension" : "-extension", "MIT-SHM"});
        Painter painter(server);
        Canvas canvas(painter, 131, 77);
        const auto screen = host::MainScreen::open(server.display());
        ASSERT_TRUE(screen);
        paint_pattern(canvas);
        expect_capture(canvas.image());
        canvas.fill(0xABCDEF, 0xABCDEF, 50, 20, 30, 30);  // each capture sees the screen as it is
        expect_capture(canvas.image());
    }
    EXPECT_EQ(PlatformLiveObjects().worlds, 0);
}

TEST_F(MainScreen, ShowsWindows) {
    const TestServer server(64, 48, 24);
    Painter painter(server);
    Canvas canvas(painter, 64, 48);
    const auto screen = host::MainScreen::open(server.display());
    ASSERT_TRUE(screen);
    painter.show_window(0x123456, 10, 5, 20, 30);
    canvas.paint(0x123456, 10, 5, 20, 30);
    expect_capture(canvas.image());
}

TEST_F(MainScreen, Of16BitsIsScaledTo8BitsAColour) {
    const TestServer server(37, 21, 16);  // rows of 74 bytes, padded to 76
    Painter painter(server);
    Canvas canvas(painter, 37, 21);
    const auto screen = host::MainScreen::open(server.display());
    ASSERT_TRUE(screen);
    canvas.fill(0x0000, 0x000000, 0, 0, 37, 21);
    canvas.fill(0xFFFF, 0xFFFFFF, 1, 1, 10, 10);
    canvas.fill(0xF800, 0xFF0000, 20, 3, 3, 5);
    canvas.fill(0x07E0, 0x00FF00, 36, 0, 1, 21);
    canvas.fill(0x0821, 0x080408, 5, 18, 10, 3);
    expect_capture(canvas.image());
}

TEST_F(MainScreen, Of30BitsIsRoundedTo8BitsAColour) {
    const TestServer server(40, 30, 30);
    Painter painter(server);
    Canvas canvas(painter, 40, 30);
    const auto screen = host::MainScreen::open(server.display());
    ASSERT_TRUE(screen);
    canvas.fill(0, 0, 0, 0, 40, 30);
    canvas.fill(1023u << 20 | 512u << 10 | 2u, 0xFF8000, 4, 4, 20, 20);
    expect_capture(canvas.image());
}

TEST_F(MainScreen, OfAColourTableIsNotUnderstood) {
    const TestServer server(40, 30, 8);
    EXPECT_FALSE(host::MainScreen::open(server.display()));
    expect_nil();
}

TEST_F(MainScreen, MayChangeItsSize) {
    const TestServer server(100, 80, 24);
    Painter painter(server);
    Canvas whole(painter, 100, 80);
    const auto screen = host::MainScreen::open(server.display());
    ASSERT_TRUE(screen);
    expect_capture(whole.image());
    painter.resize_screen(60, 40);
    Canvas smaller(painter, 60, 40);
    paint_pattern(smaller);
    expect_capture(smaller.image());
    painter.resize_screen(100, 80);
    Canvas again(painter, 100, 80);
    paint_pattern(again);
    expect_capture(again.image());
}

TEST_F(MainScreen, MayGrowInEitherDirection) {
    const TestServer server(100, 80, 24);
    Painter painter(server);
    painter.resize_screen(60, 40);
    const auto screen = host::MainScreen::open(server.display());
    ASSERT_TRUE(screen);
    for (const auto& [width, height] : {std::pair{60, 40}, {60, 80}, {100, 80}, {100, 40}}) {
        painter.resize_screen(width, height);
        Canvas canvas(painter, width, height);
        paint_pattern(canvas);
        expect_capture(canvas.image());
    }
}

TEST_F(MainScreen, OfNoDisplayIsNil) {
    EXPECT_FALSE(host::MainScreen::open(":61234"));
    EXPECT_FALSE(host::MainScreen::open("no such display"));
    expect_nil();
}

TEST_F(MainScreen, ThatIsClosedIsNil) {
    const TestServer server(40, 30, 24);
    {
        const auto screen = host::MainScreen::open(server.display());
        ASSERT_TRUE(screen);
        EXPECT_TRUE(picture_in(capture()));
    }
    expect_nil();
    EXPECT_EQ(PlatformLiveObjects().worlds, 0);
}

TEST_F(MainScreen, WhoseServerGoesIsNil) {
    TestServer server(40, 30, 24);
    const auto screen = host::MainScreen::open(server.display());
    ASSERT_TRUE(screen);
    EXPECT_TRUE(picture_in(capture()));
    server.stop();
    expect_nil();
    expect_nil();
}

}  // namespace
}  // namespace tarvo::test
