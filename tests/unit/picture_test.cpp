// TRV_Picture over every backing store, with the plugin linked in.

#include "picture.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

#include "client_memory.h"
#include "host.h"
#include "plain_image.h"
#include "plugin_entry.h"

namespace tarvo::test {
namespace {

using host::Backing;
using host::ObjectRef;
using host::Picture;
using host::PictureOptions;

class LockedPicture : public ::testing::Test {
protected:
    LockedPicture() { host.start_plugin(REALPluginMain); }

    ObjectRef make(PictureOptions options) {
        ObjectRef made = host.new_picture(options);
        scribble(of(made));
        return made;
    }
    void scribble(Picture& picture) {
        for (int y = 0; y < picture.height(); ++y)
            for (std::size_t i = 0; i < picture.packed_row_bytes(); ++i)
                picture.row(y)[i] = static_cast<std::uint8_t>(random());
    }
    static Picture& of(const ObjectRef& picture) { return dynamic_cast<Picture&>(*picture.get()); }
    static REALpictureStruct* handle(const ObjectRef& picture) {
        return static_cast<REALpictureStruct*>(picture.handle());
    }

    host::Host host;
    std::mt19937 random{7};
};

// --- locking ---------------------------------------------------------------------------------------------------------

TEST_F(LockedPicture, LockFillsTheGeometryAndUnlockClearsIt) {
    struct Expected {
        int depth, bytes, bits;
    };
    for (const auto& [depth, bytes, bits] : {Expected{1, 0, 1}, {2, 0, 2}, {4, 0, 4}, {8, 1, 0}, {16, 2, 0}, {24, 3, 0},
                                            {32, 4, 0}, {12, 0, 0}, {5, 0, 0}}) {
        SCOPED_TRACE(depth);
        const ObjectRef picture = make({.width = 13, .height = 3, .depth = depth, .row_padding = 5, .dots_per_inch = 300});
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
        EXPECT_EQ(locked.RowStart(2), of(picture).row(2));
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
    for (int row = 0; row < 4; ++row) EXPECT_EQ(locked.RowStart(row), of(picture).row(row));
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
    EXPECT_EQ(locked.RowStart(1), of(world).row(1));
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
    { TRV_Picture refused(handle(picture), false); EXPECT_FALSE(refused.Lock()); }
    EXPECT_TRUE(host.complaints().empty());
    host.faults.fail_at("REALLockPictureDescription", 1);
    host.faults.fail_at("lockPictureDescription", 1);
    { TRV_Picture refused(handle(picture), true); EXPECT_FALSE(refused.Lock()); }
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
    { TRV_Picture none(static_cast<PixMap**>(nullptr)); EXPECT_FALSE(none.isLocked()); }
    PlatformDisposeGWorld(world);
}

// --- pixels ----------------------------------------------------------------------------------------------------------

struct Bound {
    PictureOptions options;
    bool as_mask;
};

std::vector<Bound> every_binding() {
    std::vector<Bound> all;
    for (const int depth : {1, 2, 4, 8, 16, 24, 32, 5, 12})
        for (const int padding : {0, 3})
            for (const bool as_mask : {false, true})
                all.push_back({{.width = 45, .height = 3, .depth = depth, .row_padding = padding}, as_mask});
    for (const bool as_mask : {false, true}) {
        all.push_back({{.width = 45, .height = 3, .depth = 8, .without_color_table = true}, as_mask});
        all.push_back({{.width = 45, .height = 3, .backing = Backing::pixel_buffer}, as_mask});
    }
    all.push_back({{.width = 45, .height = 3, .depth = 8, .backing = Backing::bitmap_context}, true});
    return all;
}

class EveryBinding : public LockedPicture {
protected:
    // Calls `check(locked, stored)` for each kind of picture, as picture and as mask.
    void for_each(const std::function<void(TRV_Picture&, Picture&, const Bound&)>& check) {
        for (const Bound& bound : every_binding()) {
            SCOPED_TRACE(::testing::Message() << bound.options.depth << " bits, kind "
                                              << static_cast<int>(bound.options.backing) << ", padded by "
                                              << bound.options.row_padding << (bound.as_mask ? ", as mask" : ""));
            const ObjectRef stored = make(bound.options);
            const ObjectRef owner = host.new_picture({.width = 1, .height = 1});
            if (bound.as_mask) of(owner).set_mask(stored);
            TRV_Picture locked(handle(bound.as_mask ? owner : stored), bound.as_mask);
            ASSERT_TRUE(locked.Lock());
            check(locked, of(stored), bound);
        }
    }
    std::vector<std::uint8_t> bytes_of_rows(const Picture& picture) {
        std::vector<std::uint8_t> bytes;
        for (int y = 0; y < picture.height(); ++y)
            bytes.insert(bytes.end(), picture.row(y), picture.row(y) + picture.packed_row_bytes());
        return bytes;
    }
    std::vector<PixelColor> noise(std::size_t count) {
        std::vector<PixelColor> colors(count);
        for (PixelColor& color : colors) color = random() % 4 ? static_cast<PixelColor>(random()) : 0;
        return colors;
    }
};

TEST_F(EveryBinding, PixelsReadAsTheJudgeReadsThem) {
    for_each([&](TRV_Picture& locked, Picture& stored, const Bound& bound) {
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 45; ++x)
                ASSERT_EQ(locked.GetPixel(long{y}, long{x}, "test"), read_pixel(stored, x, y, bound.as_mask));
    });
}

TEST_F(EveryBinding, PixelsAreWrittenAsTheJudgeWritesThem) {
    for_each([&](TRV_Picture& locked, Picture& stored, const Bound& bound) {
        const auto colors = noise(45);
        const auto expected = Picture::make(bound.options);
        for (int y = 0; y < 3; ++y) std::copy_n(stored.row(y), stored.packed_row_bytes(), expected->row(y));
        for (int x = 0; x < 45; ++x) {
            locked.SetPixel(1L, long{x}, colors[static_cast<std::size_t>(x)], "test");
            write_pixel(*expected, x, 1, colors[static_cast<std::size_t>(x)], bound.as_mask);
        }
        EXPECT_EQ(bytes_of_rows(stored), bytes_of_rows(*expected));
    });
}

TEST_F(EveryBinding, RowsReadAsTheirPixels) {
    for_each([&](TRV_Picture& locked, Picture&, const Bound&) {
        for (const long column : {0L, 1L, 7L, 44L}) {
            std::vector<PixelColor> run(static_cast<std::size_t>(45 - column));
            locked.GetPixels(2, column, run, "test");
            for (std::size_t i = 0; i < run.size(); ++i)
                ASSERT_EQ(run[i], locked.GetPixel(2L, column + static_cast<long>(i), "test"));
        }
    });
}

TEST_F(EveryBinding, RowsAreWrittenAsTheirPixels) {
    for_each([&](TRV_Picture& locked, Picture& stored, const Bound&) {
        for (const long column : {0L, 1L, 7L, 44L}) {
            const auto run = noise(static_cast<std::size_t>(45 - column));
            const auto before = bytes_of_rows(stored);
            for (std::size_t i = 0; i < run.size(); ++i)
                locked.SetPixel(1L, column + static_cast<long>(i), run[i], "test");
            const auto expected = bytes_of_rows(stored);
            const std::size_t row = stored.packed_row_bytes();
            std::copy_n(before.begin() + static_cast<std::ptrdiff_t>(row), row, stored.row(1));
            locked.SetPixels(1, column, run, "test");
            ASSERT_EQ(bytes_of_rows(stored), expected);
        }
        locked.SetPixels(1, 0, {}, "test");
    });
}

// The address and the bit step from pixel to pixel by the bits of a pixel.
struct Walk {
    std::uint8_t* address;
    long bit = 0;
    void step(const TRV_Picture& picture) {
        address += picture.bytesPerPixel();
        bit += picture.bitsPerPixel();
        if (bit > 7) {
            bit = 0;
            ++address;
        }
    }
};

TEST_F(EveryBinding, BitAddressedRowsReadAsTheirPixels) {
    for_each([&](TRV_Picture& locked, Picture&, const Bound&) {
        std::vector<PixelColor> run(45);
        locked.GetPixelBits(1, 0, run, "test");
        Walk walk{locked.RowStart(1)};
        for (const PixelColor color : run) {
            ASSERT_EQ(color, locked.GetPixel(walk.address, walk.bit, locked.depth(), "test"));
            walk.step(locked);
        }
        std::vector<PixelColor> tail(45 - 13);
        locked.GetPixelBits(1, 13, tail, "test");
        EXPECT_TRUE(std::equal(tail.begin(), tail.end(), run.begin() + 13));
    });
}

TEST_F(EveryBinding, BitAddressedRowsAreWrittenAsTheirPixels) {
    for_each([&](TRV_Picture& locked, Picture& stored, const Bound&) {
        const auto run = noise(45);
        const auto before = bytes_of_rows(stored);
        Walk walk{locked.RowStart(1)};
        for (const PixelColor color : run) {
            locked.SetPixel(walk.address, walk.bit, color, locked.depth(), "test");
            walk.step(locked);
        }
        const auto expected = bytes_of_rows(stored);
        const std::size_t row = stored.packed_row_bytes();
        std::copy_n(before.begin() + static_cast<std::ptrdiff_t>(row), row, stored.row(1));
        locked.SetPixelBits(1, 0, run, "test");
        EXPECT_EQ(bytes_of_rows(stored), expected);
    });
}

TEST_F(LockedPicture, OneBitPicturesReadAndWriteSingleBits) {
    const ObjectRef picture = make({.width = 19, .height = 2, .depth = 1});
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    std::vector<PixelColor> run(19);
    locked.GetPixelBits(0, 0, run, nullptr);
    for (int x = 0; x < 19; ++x)
        EXPECT_EQ(run[static_cast<std::size_t>(x)], bit_at(of(picture), x, 0) ? 0x000000u : 0xFFFFFFu);
    locked.SetPixelBits(1, 0, run, nullptr);
    for (int x = 0; x < 19; ++x) EXPECT_EQ(bit_at(of(picture), x, 1), bit_at(of(picture), x, 0));
}

TEST_F(LockedPicture, PicturesTooLargeForTheCachesAreWrittenAlike) {
    const ObjectRef picture = host.new_picture({.width = 2111, .height = 2000, .row_padding = 4});
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    std::vector<PixelColor> run(2100);
    for (PixelColor& color : run) color = static_cast<PixelColor>(random());
    for (const long column : {0L, 1L, 5L, 11L}) {
        locked.SetPixels(1999, column, run, nullptr);
        for (std::size_t i = 0; i < run.size(); ++i)
            ASSERT_EQ(locked.GetPixel(1999L, column + static_cast<long>(i), nullptr), run[i]);
    }
}

// --- copies ----------------------------------------------------------------------------------------------------------

TEST_F(LockedPicture, CopiesOfEqualDepthsKeepTheStoredValues) {
    for (const int depth : {16, 32}) {
        const ObjectRef from = make({.width = 9, .height = 1, .depth = depth});
        const ObjectRef to = make({.width = 9, .height = 1, .depth = depth});
        TRV_Picture source(handle(from), false), target(handle(to), false);
        ASSERT_TRUE(source.Lock() && target.Lock());
        void *s = source.RowStart(0), *t = target.RowStart(0);
        source.CopyPixels(target, &s, &t, 9, nullptr);
        EXPECT_TRUE(std::equal(of(from).row(0), of(from).row(0) + 9 * depth / 8, of(to).row(0)));
        EXPECT_EQ(s, source.RowStart(0) + 9 * depth / 8);
        EXPECT_EQ(t, target.RowStart(0) + 9 * depth / 8);
        source.CopyPixels(target, &s, &t, 0, nullptr);
        source.CopyPixels(target, &s, &t, -3, nullptr);
        EXPECT_EQ(s, source.RowStart(0) + 9 * depth / 8);
    }
}

TEST_F(LockedPicture, CopiesBetweenDepthsGoThroughColours) {
    for (const int from_depth : {8, 16, 24, 32}) {
        for (const int to_depth : {16, 24, 32}) {
            const ObjectRef from = make({.width = 9, .height = 1, .depth = from_depth});
            const ObjectRef to = make({.width = 9, .height = 1, .depth = to_depth});
            TRV_Picture source(handle(from), false), target(handle(to), false);
            ASSERT_TRUE(source.Lock() && target.Lock());
            void *s = source.RowStart(0), *t = target.RowStart(0);
            source.CopyPixels(target, &s, &t, 9, nullptr);
            EXPECT_EQ(difference(of(to), read_image(of(from)), to_depth), "");
        }
    }
}

TEST_F(LockedPicture, CopiesBelowEightBitsMoveNoAddress) {
    const ObjectRef from = make({.width = 9, .height = 1, .depth = 1}), to = make({.width = 9, .height = 1, .depth = 4});
    TRV_Picture source(handle(from), false), target(handle(to), false);
    ASSERT_TRUE(source.Lock() && target.Lock());
    void *s = source.RowStart(0), *t = target.RowStart(0);
    source.CopyPixels(target, &s, &t, 9, nullptr);
    EXPECT_EQ(s, source.RowStart(0));
    EXPECT_EQ(t, target.RowStart(0));
}

TEST_F(LockedPicture, MaskLevelsAreConvertedByTheirOwnRules) {
    const auto copied = [&](int from_depth, std::uint32_t value, int to_depth) {
        const ObjectRef from = make({.width = 1, .height = 1, .depth = from_depth});
        const ObjectRef to = make({.width = 1, .height = 1, .depth = to_depth});
        for (int i = 0; i < from_depth / 8; ++i)
            of(from).row(0)[i] = static_cast<std::uint8_t>(value >> (from_depth - 8 - 8 * i));
        TRV_Picture source(handle(from), false), target(handle(to), false);
        EXPECT_TRUE(source.Lock() && target.Lock());
        void *s = source.RowStart(0), *t = target.RowStart(0);
        source.CopyMaskPixels(target, &s, &t, 1, nullptr);
        EXPECT_EQ(s, source.RowStart(0) + from_depth / 8);
        EXPECT_EQ(t, target.RowStart(0) + to_depth / 8);
        std::uint32_t stored = 0;
        for (int i = 0; i < to_depth / 8; ++i) stored = stored << 8 | of(to).row(0)[i];
        return stored;
    };
    EXPECT_EQ(copied(32, 0xA5808182, 32), 0xA5808182u);
    EXPECT_EQ(copied(32, 0xA5808182, 16), 16u * 0x421);
    EXPECT_EQ(copied(32, 0xA5FF0000, 8), 31u);  // five bits reach eight unscaled
    EXPECT_EQ(copied(16, 0xFC00, 32), 0xF8F8F8u);
    EXPECT_EQ(copied(16, 0x83FF, 32), 0x000000u);  // the red field counts
    EXPECT_EQ(copied(16, 0xFFFF, 16), 0xFFFFu);
    EXPECT_EQ(copied(16, 0x7C00, 8), 0xF8u);
    EXPECT_EQ(copied(8, 0x80, 32), 0x808080u);
    EXPECT_EQ(copied(8, 31, 16), 31u * 0x421);
    EXPECT_EQ(copied(8, 255, 16), 255u * 0x421 & 0xFFFF);  // spills into the neighbouring fields
    EXPECT_EQ(copied(8, 0xFE, 8), 0xFEu);
    EXPECT_EQ(copied(24, 0x123456, 32), 0x123456u);  // no rule: through colours
}

// --- client memory ---------------------------------------------------------------------------------------------------

// The data of a client picture with memory of its own, 2 x 2 at 24 bits.
struct OwnMemory {
    OwnMemory() {
        data.width = data.height = 2;
        data.depth = 24;
        data.buffer = data.pixels = NewClientMemory(64 * 2);
        data.rowBytes = 64;
        data.hasMask = 1;
        data.maskDepth = 8;
        data.maskPixels = NewClientMemory(4);
        data.maskRowBytes = 2;
    }
    ~OwnMemory() { drop(); }
    void drop() {
        DropClientMemory(std::exchange(data.buffer, nullptr));
        DropClientMemory(std::exchange(data.maskPixels, nullptr));
    }
    TRV_ClientPicture_Data data = {};
};

TEST_F(LockedPicture, ClientMemoryAndItsMask) {
    OwnMemory own;
    own.data.maskPixels[2] = 3;
    TRV_Picture locked(&own.data, false);
    EXPECT_TRUE(locked.HasMask());
    ASSERT_TRUE(locked.Lock());
    EXPECT_EQ(locked.depth(), 24);
    EXPECT_EQ(locked.bytesPerPixel(), 3);
    EXPECT_EQ(locked.bitsPerPixel(), 0);
    EXPECT_FALSE(locked.hasResolution());
    locked.SetPixel(1L, 1L, 0xABCDEF, nullptr);
    EXPECT_EQ(own.data.pixels[64 + 3], 0xAB);
    TRV_Picture mask(locked, true);
    ASSERT_TRUE(mask.Lock());
    EXPECT_EQ(mask.depth(), 8);
    EXPECT_EQ(mask.GetPixel(1L, 0L, nullptr), 0x030303u);
    own.data.hasMask = 0;
    EXPECT_FALSE(locked.HasMask());  // the flag counts, not the memory
}

TEST_F(LockedPicture, LockedClientMemoryOutlivesItsInstance) {
    OwnMemory own;
    TRV_Picture locked(&own.data, false), mask(&own.data, true);
    ASSERT_TRUE(locked.Lock() && mask.Lock());
    own.drop();
    locked.SetPixel(1L, 1L, 0x123456, nullptr);
    EXPECT_EQ(locked.GetPixel(1L, 1L, nullptr), 0x123456u);
    mask.SetPixel(0L, 0L, 7, nullptr);
    EXPECT_EQ(mask.GetPixel(0L, 0L, nullptr), 0x070707u);
}

TEST_F(LockedPicture, AMissingClientMaskReadsZeroAndTakesNoWrites) {
    std::vector<std::uint8_t> image(64 * 2);
    TRV_ClientPicture_Data data = {};
    data.width = data.height = 2;
    data.depth = 32;
    data.pixels = image.data();
    data.rowBytes = 64;
    TRV_Picture mask(&data, true);
    ASSERT_TRUE(mask.Lock());
    EXPECT_EQ(mask.width(), 2);
    EXPECT_EQ(mask.depth(), 0);
    EXPECT_FALSE(mask.HasMask());
    EXPECT_EQ(mask.GetPixel(1L, 1L, nullptr), 0u);
    mask.SetPixel(1L, 1L, 0xFFFFFF, nullptr);
    PixelColor run[2] = {1, 2};
    mask.GetPixels(0, 0, run, nullptr);
    EXPECT_EQ(run[0] | run[1], 0u);
    mask.SetPixels(0, 0, run, nullptr);
    mask.GetPixelBits(0, 0, run, nullptr);
    mask.SetPixelBits(0, 0, run, nullptr);
    void* nowhere = mask.RowStart(0);
    EXPECT_EQ(nowhere, nullptr);
    TRV_Picture image_picture(&data, false);
    ASSERT_TRUE(image_picture.Lock());
    void* here = image_picture.RowStart(0);
    image_picture.CopyMaskPixels(mask, &here, &nowhere, 2, nullptr);
    mask.CopyMaskPixels(image_picture, &nowhere, &here, 2, nullptr);
    EXPECT_EQ(here, image_picture.RowStart(0));
}

}  // namespace
}  // namespace tarvo::test
