// TRV_Picture: binding, locking and giving back, over every backing store.

#include <functional>
#include <stdexcept>
#include <vector>

#include "locked_picture.h"
#include "plain_image.h"

namespace tarvo::test {
namespace {

TEST_F(LockedPicture, LockFillsTheGeometryAndUnlockClearsIt) {
    struct Expected {
        int depth, bytes, bits;
    };
    for (const auto& [depth, bytes, bits] : {Expected{1, 0, 1},
                                             {2, 0, 2},
                                             {4, 0, 4},
                                             {8, 1, 0},
                                             {16, 2, 0},
                                             {24, 3, 0},
                                             {32, 4, 0},
                                             {12, 0, 0},
                                             {5, 0, 0}}) {
        SCOPED_TRACE(depth);
        const ObjectRef picture =
            make({.width = 13, .height = 3, .depth = depth, .row_padding = 5, .dots_per_inch = 300});
        TRV_Picture locked(handle(picture), false);
        EXPECT_EQ(locked.width(), 0);
        EXPECT_FALSE(locked.isLocked());
        ASSERT_TRUE(locked.Lock());
        EXPECT_TRUE(locked.isLocked());
        EXPECT_EQ(locked.width(), 13);
        EXPECT_EQ(locked.height(), 3);
        EXPECT_EQ(locked.depth(), depth);
        EXPECT_EQ(locked.bytesPerPixel(), bytes);
        EXPECT_EQ(locked.bitsPerPixel(), bits);
        EXPECT_EQ(locked.rowBytes(), (13 * depth + 7) / 8 + 5);
        EXPECT_EQ(locked.baseAddress(), of(picture).row(0));
        EXPECT_EQ(locked.row_start(2), of(picture).row(2));
        EXPECT_TRUE(locked.hasResolution());
        EXPECT_EQ(locked.hRes(), 300);
        EXPECT_EQ(locked.vRes(), 300);

        EXPECT_FALSE(locked.Lock());  // once is enough, and changes nothing
        EXPECT_EQ(locked.width(), 13);
        EXPECT_TRUE(locked.Unlock());
        EXPECT_FALSE(locked.Unlock());
        EXPECT_EQ(locked.width() + locked.height() + locked.depth() + locked.bytesPerPixel() + locked.bitsPerPixel() +
                      locked.rowBytes(),
                  0);
        EXPECT_EQ(locked.baseAddress(), nullptr);
        EXPECT_FALSE(locked.hasResolution());
        EXPECT_EQ(locked.hRes(), -1);
        ASSERT_TRUE(locked.Lock());
        EXPECT_EQ(locked.width(), 13);
    }
    EXPECT_EQ(host.accounts().picture_locks, 0);
    EXPECT_EQ(PlatformLiveObjects().pixelLocks, 0);
    EXPECT_EQ(PlatformLiveObjects().handleLocks, 0);
}

TEST_F(LockedPicture, PixelBuffersAreWalkedThroughTheirRowTable) {
    const ObjectRef picture = make({.width = 5, .height = 4, .backing = Backing::pixel_buffer});
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    EXPECT_EQ(locked.baseAddress(), nullptr);
    EXPECT_EQ(locked.depth(), 32);
    EXPECT_EQ(locked.rowBytes(), 20);
    EXPECT_FALSE(locked.hasResolution());
    for (int row = 0; row < 4; ++row) EXPECT_EQ(locked.row_start(row), of(picture).row(row));
}

TEST_F(LockedPicture, BitmapContextsAreReachedAsMasksOnly) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    const ObjectRef context = make({.width = 4, .height = 2, .depth = 8, .backing = Backing::bitmap_context});
    of(picture).set_mask(context);
    TRV_Picture mask(handle(picture), true);
    ASSERT_TRUE(mask.Lock());
    EXPECT_EQ(mask.depth(), 8);
    EXPECT_EQ(mask.hRes(), 72);
    EXPECT_EQ(mask.vRes(), 72);
    EXPECT_EQ(mask.GetPixel(1L, 3L, nullptr), read_pixel(of(context), 3, 1, true));

    TRV_Picture refused(handle(context), false);
    EXPECT_FALSE(refused.Lock());
}

TEST_F(LockedPicture, RefusedKindsDoNotLockAndAreUnlockedAgain) {
    const ObjectRef picture = host.new_picture({.width = 4, .height = 2, .backing = Backing::refused});
    {
        TRV_Picture bound(static_cast<REALpictureStruct*>(nullptr), false);
        EXPECT_FALSE(bound.SetREALPicture(handle(picture), false));
        EXPECT_EQ(host.accounts().picture_locks, 1);
        EXPECT_FALSE(bound.Lock());
    }
    EXPECT_EQ(host.accounts().picture_locks, 0);
}

TEST_F(LockedPicture, PixelsThatAreGoneDoNotLock) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    of(picture).set_purged(true);
    TRV_Picture locked(handle(picture), false);
    EXPECT_FALSE(locked.Lock());
    EXPECT_FALSE(locked.isLocked());
    EXPECT_EQ(PlatformLiveObjects().handleLocks, 0);
}

TEST_F(LockedPicture, NothingBoundNeitherLocksNorHasAMask) {
    TRV_Picture none(static_cast<REALpictureStruct*>(nullptr), false);
    EXPECT_FALSE(none.Lock());
    EXPECT_FALSE(none.Unlock());
    EXPECT_FALSE(none.HasMask());
    TRV_Picture no_data(static_cast<const TRV_ClientPicture_Data*>(nullptr), true);
    EXPECT_FALSE(no_data.Lock());
}

TEST_F(LockedPicture, DrawingsAreRenderedIntoAPictureOfTheirOwn) {
    const ObjectRef drawing = host.new_picture({.width = 6, .height = 5, .backing = Backing::drawing_commands});
    of(drawing).drawing = [](int x, int y) { return static_cast<std::uint32_t>(x * 0x10000 + y * 0x100 + 7); };
    const auto before = host.accounts();
    {
        TRV_Picture locked(handle(drawing), false);
        ASSERT_TRUE(locked.Lock());
        EXPECT_EQ(locked.depth(), 32);
        EXPECT_NE(locked.picture(), handle(drawing));
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 6; ++x)
                EXPECT_EQ(locked.GetPixel(long{y}, long{x}, nullptr), of(drawing).drawing(x, y));
        EXPECT_EQ(of(drawing).locks(), 0);
    }
    EXPECT_EQ(host.accounts(), before);
}

TEST_F(LockedPicture, DrawingsLeaveTheCurrentWorldAsItWasAlsoWhenTheyThrow) {
    const ObjectRef drawing = host.new_picture({.width = 6, .height = 5, .backing = Backing::drawing_commands});
    std::vector<std::uint8_t> bytes(16);
    const PixelLayout layout = {bytes.data(), 2, 2, 32, 8, 72};
    const GWorldPtr elsewhere = PlatformNewGWorld(&layout, nullptr, 0);
    SetGWorld(elsewhere, nullptr);
    for (const bool throws : {false, true}) {
        host.on_draw = [throws] {
            if (throws) throw std::runtime_error("out of ink");
        };
        const auto before = host.accounts();
        {
            TRV_Picture locked(handle(drawing), false);
            EXPECT_EQ(locked.Lock(), !throws);
        }
        EXPECT_EQ(host.accounts(), before);
        GWorldPtr current = nullptr;
        GDHandle device = nullptr;
        GetGWorld(&current, &device);
        EXPECT_EQ(current, elsewhere);
    }
    PlatformDisposeGWorld(elsewhere);
}

TEST_F(LockedPicture, BindingAWorldAfterAPixelBufferForgetsTheRowTable) {
    const ObjectRef buffer = make({.width = 3, .height = 2, .backing = Backing::pixel_buffer});
    const ObjectRef world = make({.width = 3, .height = 2, .depth = 16});
    TRV_Picture locked(handle(buffer), false);
    ASSERT_TRUE(locked.Lock());
    ASSERT_TRUE(locked.SetREALPicture(handle(world), false));
    ASSERT_TRUE(locked.Lock());
    EXPECT_EQ(locked.row_start(1), of(world).row(1));
    EXPECT_EQ(locked.GetPixel(1L, 2L, nullptr), read_pixel(of(world), 2, 1));
}

TEST_F(LockedPicture, AskingForTheMaskMakesOne) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    {
        TRV_Picture locked(handle(picture), false);
        EXPECT_FALSE(locked.HasMask());
        EXPECT_FALSE(of(picture).mask());
        TRV_Picture mask(locked, true);
        EXPECT_TRUE(of(picture).mask());
        EXPECT_TRUE(locked.HasMask());
        EXPECT_TRUE(mask.isMask());
        ASSERT_TRUE(mask.Lock());
        EXPECT_EQ(mask.width(), 4);
    }
    EXPECT_EQ(of(picture).mask()->references(), 1);
    EXPECT_EQ(host.accounts().picture_locks, 0);
}

TEST_F(LockedPicture, AWorldIsAskedForBeforeAnyOtherStoreOfAMask) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    for (const Backing backing : {Backing::graphics_world, Backing::pixel_buffer, Backing::bitmap_context}) {
        of(picture).set_mask(make({.width = 4, .height = 2, .backing = backing}));
        const int asked = host.faults.calls("REALLockPictureDescription");
        const int any = host.faults.calls("lockPictureDescription");
        TRV_Picture mask(handle(picture), true);
        EXPECT_TRUE(mask.Lock());
        EXPECT_EQ(host.faults.calls("REALLockPictureDescription"), asked + 1);
        EXPECT_EQ(host.faults.calls("lockPictureDescription"), any + (backing == Backing::graphics_world ? 0 : 1));
    }
}

TEST_F(LockedPicture, NewPictures) {
    const auto before = host.accounts();
    for (const int depth : {1, 16, 24, 32}) {
        TRV_Picture made(7, 3, depth, false);
        ASSERT_TRUE(made.Lock()) << depth;
        EXPECT_EQ(made.depth(), depth);
        EXPECT_EQ(made.width(), 7);
    }
    EXPECT_EQ(host.accounts(), before);  // dropped with the object
    for (const int depth : {0, 2, 4, 8, 12, 15, 33, -1}) {
        TRV_Picture refused(7, 3, depth, false);
        EXPECT_FALSE(refused.Lock()) << depth;
    }
    TRV_Picture none(static_cast<REALpictureStruct*>(nullptr), false);
    EXPECT_FALSE(none.SetNewPicture(0, 3, 32, false));
    EXPECT_FALSE(none.SetNewPicture(3, 0, 32, false));
    EXPECT_FALSE(none.SetNewPicture(-3, 3, 32, false));
    EXPECT_FALSE(none.SetNewPicture(32768, 1, 32, false));  // the host refuses
    EXPECT_EQ(host.accounts(), before);

    REALpictureStruct* kept = nullptr;
    {
        TRV_Picture made(7, 3, 32, true);
        kept = made.picture();
    }
    EXPECT_EQ(host.accounts().pictures, before.pictures + 1);
    EXPECT_EQ(host.accounts().picture_locks, 0);
    ObjectRef::adopt(host.objects().find(kept));
    EXPECT_EQ(host.accounts(), before);
}

TEST_F(LockedPicture, BindingAnewReleasesFirst) {
    const ObjectRef first = make({.width = 4, .height = 2}), second = make({.width = 9, .height = 2});
    TRV_Picture locked(handle(first), false);
    ASSERT_TRUE(locked.Lock());
    ASSERT_TRUE(locked.SetREALPicture(handle(second), false));
    EXPECT_EQ(of(first).locks(), 0);
    EXPECT_FALSE(locked.isLocked());
    ASSERT_TRUE(locked.Lock());
    EXPECT_EQ(locked.width(), 9);
    locked.Release();
    EXPECT_EQ(of(second).locks(), 0);
    EXPECT_EQ(locked.picture(), nullptr);
    EXPECT_EQ(locked.hRes(), 0);
    EXPECT_FALSE(locked.Lock());
}

TEST_F(LockedPicture, RefusedLocksAreNotUnlocked) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    host.faults.fail_at("lockPictureDescription", 1);
    {
        TRV_Picture refused(handle(picture), false);
        EXPECT_FALSE(refused.Lock());
    }
    EXPECT_TRUE(host.complaints().empty());
    host.faults.fail_at("REALLockPictureDescription", 1);
    host.faults.fail_at("lockPictureDescription", 1);
    {
        TRV_Picture refused(handle(picture), true);
        EXPECT_FALSE(refused.Lock());
    }
    EXPECT_TRUE(host.complaints().empty());
    EXPECT_EQ(host.accounts().picture_locks, 0);
}

TEST_F(LockedPicture, APixelMapIsLockedFromItsConstructionOn) {
    std::vector<std::uint8_t> bytes(3 * 20, 0x5A);
    const PixelLayout layout = {bytes.data(), 5, 3, 32, 20, 96};
    const GWorldPtr world = PlatformNewGWorld(&layout, nullptr, 0);
    PixMap** const map = GetGWorldPixMap(world);
    {
        TRV_Picture screen(map);
        EXPECT_TRUE(screen.isLocked());
        EXPECT_EQ(screen.width(), 5);
        EXPECT_EQ(screen.height(), 3);
        EXPECT_EQ(screen.depth(), 32);
        EXPECT_EQ(screen.rowBytes(), 20);
        EXPECT_EQ(screen.baseAddress(), bytes.data());
        EXPECT_EQ(screen.hRes(), 96);
        EXPECT_EQ(screen.GetPixel(2L, 4L, nullptr), 0x5A5A5A5Au);
        EXPECT_FALSE(screen.Lock());
        EXPECT_EQ(PlatformLiveObjects().pixelLocks, 1);
        EXPECT_EQ(PlatformLiveObjects().handleLocks, 0);
    }
    EXPECT_EQ(PlatformLiveObjects().pixelLocks, 0);
    (*map)->purged = true;
    {
        TRV_Picture gone(map);
        EXPECT_FALSE(gone.isLocked());
    }
    EXPECT_EQ(PlatformLiveObjects().pixelLocks, 0);
    {
        TRV_Picture none(static_cast<PixMap**>(nullptr));
        EXPECT_FALSE(none.isLocked());
    }
    PlatformDisposeGWorld(world);
}

}  // namespace
}  // namespace tarvo::test
