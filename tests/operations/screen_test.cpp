// The capture of a main device that the test hands in, through the built library.

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "fake_screen.h"
#include "pictures.h"
#include "plain_image.h"
#include "session.h"

namespace tarvo::test {
namespace {

class ScreenCapture : public ::testing::Test {
protected:
    Value capture(const ObjectRef& rectangle = {}) {
        return session.call(session.host.new_screen(), "TRV_ScreenCapture", rectangle);
    }
    void expect_nil() {
        const auto before = session.host.accounts();
        session.invoke("TRV_Info(extends", nullptr);  // leaves a code
        EXPECT_EQ(session.last_error(), 2);
        EXPECT_FALSE(object_in(capture()));
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(session.host.accounts(), before);
        EXPECT_EQ(PlatformLiveObjects().pixelLocks, 0);
        EXPECT_EQ(PlatformLiveObjects().handleLocks, 0);
    }

    Session session;
};

TEST_F(ScreenCapture, IsTheWholeScreenWhateverTheRectangle) {
    FakeScreen screen(31, 17, 32, 12);
    for (const ObjectRef& rectangle : {ObjectRef(), session.rectangle(3, 3, 10, 10), session.rectangle(0, 0, 0, 0)}) {
        const Value captured = capture(rectangle);
        ASSERT_TRUE(picture_in(captured));
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(difference(*picture_in(captured), screen.image(), 32), "");
        EXPECT_FALSE(picture_in(captured)->mask());
    }
    EXPECT_EQ(PlatformLiveObjects().pixelLocks, 0);
    EXPECT_EQ(PlatformLiveObjects().handleLocks, 0);
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(ScreenCapture, OfALargeScreenHasItsSize) {
    FakeScreen screen(1024, 768);
    const Value captured = capture();
    EXPECT_EQ(difference(*picture_in(captured), screen.image(), 32), "");
}

TEST_F(ScreenCapture, DoesNotMatterWhereTheDeviceIs) {
    FakeScreen screen(20, 10);
    screen.move_to(-300, 40);
    const Value captured = capture();
    EXPECT_EQ(difference(*picture_in(captured), screen.image(), 32), "");
}

TEST_F(ScreenCapture, NeedsNoScreenObject) {
    FakeScreen screen(4, 3);
    EXPECT_TRUE(picture_in(session.invoke("TRV_ScreenCapture(", nullptr, nullptr)));
}

TEST_F(ScreenCapture, IsACopy) {
    FakeScreen screen(4, 3);
    const PlainImage then = screen.image();
    const Value captured = capture();
    screen.row(0)[1] ^= 0xFF;
    EXPECT_EQ(difference(*picture_in(captured), then, 32), "");
}

TEST_F(ScreenCapture, OfNoScreenIsNilWithoutACode) { expect_nil(); }

TEST_F(ScreenCapture, OfADeviceThatIsGoneIsNilWithoutACode) {
    FakeScreen screen(4, 3);
    const GDHandle device = GetMainDevice();
    GDevice* const record = std::exchange(*device, nullptr);
    expect_nil();
    *device = record;
    EXPECT_TRUE(picture_in(capture()));
}

TEST_F(ScreenCapture, OfLostPixelsIsNilWithoutACode) {
    FakeScreen screen(4, 3);
    screen.set_purged(true);
    expect_nil();
}

TEST_F(ScreenCapture, ThatTheHostDoesNotMakeIsNilWithoutACode) {
    FakeScreen screen(4, 3);
    session.host.faults.fail_at("REALBuildPictureFromBuffer", 1);
    expect_nil();
    EXPECT_TRUE(session.host.faults.happened());
}

// Pixels of four bytes are read off the map: all of them must be there.
TEST_F(ScreenCapture, OfAMapThatDoesNotHoldTheScreenIsNil) {
    {
        FakeScreen shallow(4, 3, 16, 8);
        expect_nil();
    }
    FakeScreen screen(4, 3);
    screen.map().bounds.bottom = 2;
    expect_nil();
    screen.map().bounds.bottom = 3;
    screen.map().bounds.right = 3;
    expect_nil();
    screen.map().bounds.right = 4;
    EXPECT_TRUE(picture_in(capture()));
}

TEST_F(ScreenCapture, OfAScreenWithoutPixelsIsNil) {
    FakeScreen screen(4, 3);
    for (const Rect& bounds : {Rect{0, 0, 3, 0}, {0, 0, 0, 4}, {0, 0, 3, -4}, {3, 0, 0, 4}, {5, 5, -5, -5}}) {
        screen.map().bounds = bounds;
        expect_nil();  // the device still has its size
        screen.move_to(0, 0);
        expect_nil();
    }
    screen.map().bounds = {0, 0, 3, 4};
    screen.move_to(0, 0);
    EXPECT_TRUE(picture_in(capture()));
}

TEST_F(ScreenCapture, BringsTheScreenUpToDate) {
    FakeScreen screen(4, 3);
    static int calls;
    calls = 0;
    PlatformSetScreenRefresh(
        [](void* context) {
            ++calls;
            static_cast<FakeScreen*>(context)->row(2)[5] = 0x5A;
        },
        &screen);
    const Value captured = capture();
    PlatformSetScreenRefresh(nullptr, nullptr);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(picture_in(captured)->row(2)[5], 0x5A);
    capture();
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace tarvo::test
