#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "bulk_memory.h"
#include "pixels.h"
#include "test_plugin.h"
#include "watched_memory.h"

namespace tarvo::host {
namespace {

class Pictures : public testing::Test {
protected:
    Picture& make(const PictureOptions& options) {
        kept_.push_back(host_.new_picture(options));
        return picture(kept_.back().handle());
    }

    Picture& picture(void* handle) { return *host_.objects().find<Picture>(handle); }

    Host host_;
    TestPlugin plugin_{host_};
    std::vector<ObjectRef> kept_;
};

void expect_all(const Picture& picture, std::uint32_t value) {
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ASSERT_EQ(load_pixel(picture.row(y), x, picture.depth()), value)
                << picture.describe() << " at " << x << ", " << y;
        }
    }
}

std::uint32_t white(int depth) {
    switch (depth) {
        case 1: return 0;
        case 16: return 0x7FFF;
        case 32: return 0xFFFFFF;
        default: return static_cast<std::uint32_t>((std::uint64_t{1} << depth) - 1);
    }
}

TEST_F(Pictures, AreWhiteAtFirst) {
    for (const int depth : {1, 2, 4, 8, 16, 24, 32}) {
        for (const int padding : {0, 3}) {
            expect_all(make({.width = 13, .height = 3, .depth = depth, .row_padding = padding}), white(depth));
            expect_all(make({.width = 16, .height = 2, .depth = depth, .row_padding = padding}), white(depth));
            expect_all(make({.width = 5, .height = 3, .depth = depth, .backing = Backing::bitmap_context}),
                       white(depth));
        }
    }
    expect_all(make({.width = 13, .height = 3, .backing = Backing::pixel_buffer}), white(32));
}

TEST_F(Pictures, AreWhiteInUsedMemoryToo) {
    constexpr PictureOptions kLarge{.width = 1024, .height = 600};
    for (int i = 0; i < 2; ++i) {
        const ObjectRef used = host_.new_picture(kLarge);
        Picture& large = picture(used.handle());
        expect_all(large, 0xFFFFFF);
        std::memset(large.row(0), 0x55, large.packed_row_bytes() * 600);
    }
}

TEST_F(Pictures, WhiteIsTheIndexOfWhite) {
    const std::vector<RGBColor> colors = {{0, 0, 0}, {0xFFFF, 0xFFFF, 0xFFFF}, {0xFFFF, 0, 0}};
    expect_all(make({.width = 9, .height = 2, .depth = 4, .colors = colors}), 1);
    expect_all(make({.width = 9, .height = 2, .depth = 4, .colors = {{0, 0, 0}}}), 15);
    expect_all(make({.width = 9, .height = 2, .depth = 8, .without_color_table = true}), 255);
}

TEST_F(Pictures, RowsArePackedAndPadded) {
    EXPECT_EQ(make({.width = 9, .height = 1, .depth = 1}).packed_row_bytes(), 2u);
    EXPECT_EQ(make({.width = 5, .height = 1, .depth = 24}).packed_row_bytes(), 15u);
    Picture& padded = make({.width = 5, .height = 4, .depth = 16, .row_padding = 6});
    EXPECT_EQ(padded.packed_row_bytes(), 10u);
    EXPECT_EQ(padded.row(3) - padded.row(0), 48);
}

TEST_F(Pictures, OfAnyDepthCanBeAWorld) {
    for (int depth = 1; depth <= 32; ++depth) {
        Picture& odd = make({.width = 11, .height = 2, .depth = depth});
        EXPECT_EQ(odd.packed_row_bytes(), static_cast<std::size_t>((11 * depth + 7) / 8));
        REALpictureDescription description{};
        ASSERT_EQ(plugin_.lock_description(&odd, &description), 1);
        EXPECT_EQ(GetPixDepth(GetGWorldPixMap(static_cast<GWorldPtr>(description.store))), depth);
    }
}

TEST_F(Pictures, ImpossibleOnesCannotBeMade) {
    const auto impossible = [&](const PictureOptions& options) {
        EXPECT_THROW(host_.new_picture(options), HostError) << options.width << " x " << options.height;
    };
    impossible({.width = 0, .height = 1});
    impossible({.width = 1, .height = -1});
    impossible({.width = 32768, .height = 1});
    impossible({.width = 1, .height = 32768});
    impossible({.width = 1, .height = 1, .depth = 0});
    impossible({.width = 1, .height = 1, .depth = 33});
    impossible({.width = 1, .height = 1, .depth = 24, .backing = Backing::pixel_buffer});
    impossible({.width = 1, .height = 1, .row_padding = -1});
    impossible({.width = 32767, .height = 32767});
    EXPECT_EQ(host_.objects().size(), 0u);
    make({.width = 32767, .height = 1});
    make({.width = 1, .height = 32767});
}

TEST(PictureOptionsOf, PossiblePicturesAreBounded) {
    const auto is_possible = [](const PictureOptions& options) {
        EXPECT_EQ(Picture::make(options) != nullptr, Picture::is_possible(options));
        return Picture::is_possible(options);
    };
    EXPECT_TRUE(is_possible({.width = 32767, .height = 1}));
    EXPECT_FALSE(is_possible({.width = 32768, .height = 1}));
    EXPECT_FALSE(is_possible({.width = 1, .height = 32768}));
    EXPECT_FALSE(is_possible({.width = 0, .height = 1}));
    EXPECT_FALSE(is_possible({.width = 32768, .height = 1, .any_sides = true}));
    EXPECT_TRUE(is_possible({.width = -32767, .height = 1, .any_sides = true}));
    EXPECT_FALSE(is_possible({.width = -32768, .height = 1, .any_sides = true}));
    EXPECT_TRUE(is_possible({.width = 1, .height = 1, .row_padding = 4}));
    EXPECT_FALSE(is_possible({.width = 1, .height = 1, .row_padding = -1}));
    EXPECT_TRUE(is_possible({.width = 1, .height = 1, .backing = Backing::pixel_buffer}));
    EXPECT_FALSE(is_possible({.width = 1, .height = 1, .depth = 16, .backing = Backing::pixel_buffer}));
    EXPECT_FALSE(is_possible({.width = 1, .height = 1, .backing = Backing::pixel_buffer, .row_padding = 4}));
}

TEST(PixelsOfOthers, MakeWorldsAndContextsAlone) {
    const auto made = [](const PictureOptions& options, std::size_t bytes) {
        return Picture::of(options, bytes == 0 ? SharedPixels() : SharedPixels::of_size(bytes)) != nullptr;
    };
    EXPECT_TRUE(made({.width = 3, .height = 2}, 24));
    EXPECT_TRUE(made({.width = 3, .height = 2, .backing = Backing::bitmap_context}, 24));
    EXPECT_TRUE(made({.width = 3, .height = 2, .row_padding = 4}, 28)) << "behind the last row there is none";
    EXPECT_FALSE(made({.width = 3, .height = 2}, 23));
    EXPECT_FALSE(made({.width = 3, .height = 2}, 0));
    EXPECT_FALSE(made({.width = 3, .height = 2, .backing = Backing::pixel_buffer}, 24));
    EXPECT_FALSE(made({.width = 3, .height = 2, .backing = Backing::drawing_commands}, 24));
    EXPECT_FALSE(made({.width = 0, .height = 2, .any_sides = true}, 24));
    EXPECT_FALSE(made({.width = 3, .height = 0, .any_sides = true}, 24));
    EXPECT_FALSE(made({.width = 3, .height = 2, .depth = 33}, 24));
}

TEST_F(Pictures, OfAnySidesSayThemAndHaveNoPixels) {
    for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {0, 0}, {-3, 4}, {4, -3}, {-32767, -32767}}) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
        Picture& world = make({.width = width, .height = height, .depth = 16, .any_sides = true});
        REALpictureDescription description{};
        ASSERT_EQ(plugin_.lock_description(&world, &description), 1);
        EXPECT_EQ(description.width, width);
        EXPECT_EQ(description.height, height);
        Rect bounds{};
        GetPixBounds(GetGWorldPixMap(static_cast<GWorldPtr>(description.store)), &bounds);
        EXPECT_EQ(bounds.right - bounds.left, width);
        EXPECT_EQ(bounds.bottom - bounds.top, height);
        EXPECT_EQ(world.packed_row_bytes(), static_cast<std::size_t>(std::max(2 * width, 0)));
        EXPECT_EQ(plugin_.mask(&world, true), nullptr);

        Picture& buffer = make({.width = width, .height = height, .backing = Backing::pixel_buffer, .any_sides = true});
        ASSERT_EQ(plugin_.lock_description(&buffer, &description), 1);
        const auto* const rows = static_cast<const REALpixelBuffer*>(description.store);
        ASSERT_TRUE(rows);
        EXPECT_EQ(rows->width, width);
        EXPECT_EQ(rows->height, height);
        plugin_.unlock_description(&world);
        plugin_.unlock_description(&buffer);
    }
    EXPECT_THROW(make({.width = -32768, .height = 1, .any_sides = true}), HostError);
    EXPECT_THROW(make({.width = 0, .height = 1, .backing = Backing::bitmap_context, .any_sides = true}), HostError);
}

TEST_F(Pictures, TheServiceMakesPlainWorldsOfTheUsualDepths) {
    for (const long depth : {1, 2, 4, 8, 16, 24, 32}) {
        void* handle = plugin_.new_picture(6, 5, depth);
        ASSERT_NE(handle, nullptr) << depth;
        EXPECT_EQ(picture(handle).depth(), depth);
        EXPECT_EQ(picture(handle).backing(), Backing::graphics_world);
        EXPECT_EQ(picture(handle).plugin_references(), 1);
        expect_all(picture(handle), white(static_cast<int>(depth)));
    }
    // Where a long is wider than 32 bits, the upper ones count too.
    const long beyond_32_bits = sizeof(long) > 4 ? static_cast<long>(0x100000000LL) : -1;
    for (const long depth : {0L, 3L, 12L, 33L, -1L, beyond_32_bits | 32})
        EXPECT_EQ(plugin_.new_picture(6, 5, depth), nullptr);
    for (const long side : {0L, -1L, 32768L, beyond_32_bits | 1}) {
        EXPECT_EQ(plugin_.new_picture(side, 5, 32), nullptr);
        EXPECT_EQ(plugin_.new_picture(5, side, 32), nullptr);
    }
}

TEST_F(Pictures, WorldsDescribeTheirPixels) {
    Picture& made = make({.width = 6, .height = 5, .depth = 16, .row_padding = 2, .dots_per_inch = 300});
    REALpictureDescription description{};
    ASSERT_EQ(plugin_.lock_description(&made, &description), 1);
    EXPECT_EQ(description.kind, pictureMacintoshGWorld);
    EXPECT_EQ(description.width, 6);
    EXPECT_EQ(description.height, 5);
    EXPECT_EQ(description.depth, 16);
    const PixMapHandle pixels = GetGWorldPixMap(static_cast<GWorldPtr>(description.store));
    EXPECT_EQ(GetPixBaseAddr(pixels), made.row(0));
    EXPECT_EQ(GetPixRowBytes(pixels), 14);
    EXPECT_EQ(Fix2Long((*pixels)->hRes), 300);
    EXPECT_EQ((*pixels)->pmTable, nullptr);
}

TEST_F(Pictures, ShallowWorldsHaveColors) {
    for (const int depth : {1, 2, 4, 8}) {
        Picture& made = make({.width = 2, .height = 2, .depth = depth});
        REALpictureDescription description{};
        plugin_.lock_description(&made, &description);
        const CTabHandle table = (*GetGWorldPixMap(static_cast<GWorldPtr>(description.store)))->pmTable;
        ASSERT_NE(table, nullptr);
        ASSERT_EQ((*table)->ctSize, (1 << depth) - 1);
        ASSERT_EQ(made.colors().size(), std::size_t{1} << depth);
        const ColorSpec& shown = (*table)->ctTable[white(depth)];
        EXPECT_EQ(packed_color(shown.rgb), 0xFFFFFFu) << depth;
    }
    Picture& bare = make({.width = 2, .height = 2, .depth = 8, .without_color_table = true});
    REALpictureDescription description{};
    plugin_.lock_description(&bare, &description);
    EXPECT_EQ((*GetGWorldPixMap(static_cast<GWorldPtr>(description.store)))->pmTable, nullptr);
    EXPECT_TRUE(bare.colors().empty());
    EXPECT_TRUE(make({.width = 2, .height = 2, .depth = 16}).colors().empty());
}

TEST_F(Pictures, ColorsAreFilledUpWithBlack) {
    const std::vector<RGBColor>& colors = make({.width = 1, .height = 1, .depth = 2, .colors = {{1, 2, 3}}}).colors();
    ASSERT_EQ(colors.size(), 4u);
    EXPECT_EQ(colors[0].green, 2);
    EXPECT_EQ(colors[3].red + colors[3].green + colors[3].blue, 0);
}

TEST_F(Pictures, BitmapContextsDescribeTheirPixels) {
    Picture& made = make({.width = 6, .height = 5, .depth = 24, .backing = Backing::bitmap_context, .row_padding = 1});
    REALpictureDescription description{};
    ASSERT_EQ(plugin_.lock_description(&made, &description), 1);
    EXPECT_EQ(description.kind, pictureCGBitmapContext);
    const auto context = static_cast<CGContextRef>(description.store);
    EXPECT_EQ(CGBitmapContextGetWidth(context), 6u);
    EXPECT_EQ(CGBitmapContextGetHeight(context), 5u);
    EXPECT_EQ(CGBitmapContextGetBitsPerPixel(context), 24u);
    EXPECT_EQ(CGBitmapContextGetBytesPerRow(context), 19u);
    EXPECT_EQ(CGBitmapContextGetData(context), made.row(0));
}

TEST_F(Pictures, PixelBuffersHaveRowsInAnyOrder) {
    Picture& made = make({.width = 6, .height = 5, .backing = Backing::pixel_buffer});
    REALpictureDescription description{};
    ASSERT_EQ(plugin_.lock_description(&made, &description), 1);
    EXPECT_EQ(description.kind, pictureHostPixelBuffer);
    EXPECT_EQ(description.depth, 32);
    const auto* buffer = static_cast<const REALpixelBuffer*>(description.store);
    EXPECT_EQ(buffer->width, 6);
    EXPECT_EQ(buffer->height, 5);
    bool one_follows_another = true;
    for (int y = 0; y < 5; ++y) {
        EXPECT_EQ(buffer->rows[y], made.row(y));
        if (y > 0) one_follows_another = one_follows_another && buffer->rows[y] - buffer->rows[y - 1] == 24;
    }
    EXPECT_FALSE(one_follows_another);
}

TEST_F(Pictures, WithoutPixelsDescribeTheirKind) {
    const std::pair<Backing, int> kinds[] = {{Backing::drawing_commands, 1}, {Backing::refused, 2}};
    for (const auto& [backing, kind] : kinds) {
        Picture& made = make({.width = 6, .height = 5, .backing = backing});
        REALpictureDescription description{};
        ASSERT_EQ(plugin_.lock_description(&made, &description), 1);
        EXPECT_EQ(description.kind, kind);
        EXPECT_EQ(description.store, nullptr);
        EXPECT_EQ(description.width, 6);
        EXPECT_EQ(description.height, 5);
        EXPECT_EQ(made.row(0), nullptr);
        EXPECT_EQ(made.locks(), 1);
    }
}

TEST_F(Pictures, AreLockedByKindOnlyAsTheyAre) {
    Picture& world = make({.width = 1, .height = 1});
    Picture& context = make({.width = 1, .height = 1, .backing = Backing::bitmap_context});
    REALpictureDescription description{};
    EXPECT_EQ(plugin_.lock_description(&world, &description, 8), 0);
    EXPECT_EQ(plugin_.lock_description(&context, &description, 4), 0);
    EXPECT_EQ(description.kind, 0);
    EXPECT_EQ(host_.accounts().picture_locks, 0);
    EXPECT_EQ(plugin_.lock_description(&world, &description, 4), 1);
    EXPECT_EQ(plugin_.lock_description(&context, &description, 8), 1);
    EXPECT_EQ(host_.accounts().picture_locks, 2);
}

TEST_F(Pictures, LocksAreCountedAndEnd) {
    Picture& made = make({.width = 1, .height = 1});
    REALpictureDescription description{};
    plugin_.lock_description(&made, &description);
    plugin_.lock_description(&made, &description, 4);
    EXPECT_EQ(made.locks(), 2);
    EXPECT_NE(made.describe().find("locks: 2"), std::string::npos);
    plugin_.unlock_description(&made);
    plugin_.unlock_description(&made);
    EXPECT_TRUE(host_.complaints().empty());
    plugin_.unlock_description(&made);
    EXPECT_EQ(made.locks(), 0);
    EXPECT_NE(last_complaint(host_).find("unlockPictureDescription: no lock to end"), std::string::npos);
    EXPECT_EQ(plugin_.lock_description(&made, nullptr), 0);
    EXPECT_EQ(made.locks(), 0);
}

TEST_F(Pictures, PurgedPixelsCannotBeLocked) {
    Picture& made = make({.width = 1, .height = 1});
    REALpictureDescription description{};
    plugin_.lock_description(&made, &description);
    const PixMapHandle pixels = GetGWorldPixMap(static_cast<GWorldPtr>(description.store));
    made.set_purged(true);
    EXPECT_FALSE(LockPixels(pixels));
    made.set_purged(false);
    EXPECT_TRUE(LockPixels(pixels));
    make({.width = 1, .height = 1, .backing = Backing::bitmap_context}).set_purged(true);
}

TEST_F(Pictures, HaveMasksOnDemand) {
    Picture& made = make({.width = 7, .height = 5, .depth = 16});
    EXPECT_EQ(plugin_.mask(&made, false), nullptr);
    void* mask = plugin_.mask(&made, true);
    ASSERT_NE(mask, nullptr);
    EXPECT_EQ(made.mask().handle(), mask);
    EXPECT_EQ(picture(mask).width(), 7);
    EXPECT_EQ(picture(mask).height(), 5);
    EXPECT_EQ(picture(mask).depth(), 32);
    expect_all(picture(mask), 0);
    EXPECT_EQ(made.mask()->references(), 2);
    EXPECT_EQ(plugin_.mask(&made, false), mask);
    EXPECT_EQ(plugin_.mask(&made, true), mask);
    EXPECT_EQ(made.mask()->plugin_references(), 3);
    for (int i = 0; i < 3; ++i) plugin_.unlock(mask);
    EXPECT_EQ(made.mask()->references(), 1);
    EXPECT_TRUE(host_.complaints().empty());
}

TEST_F(Pictures, MasksOutliveThemWhileHeld) {
    void* owner = plugin_.new_picture(2, 2, 32);
    void* mask = plugin_.mask(owner, true);
    plugin_.unlock(owner);
    EXPECT_EQ(host_.accounts().pictures, 1);
    plugin_.unlock(mask);
    EXPECT_EQ(host_.accounts().pictures, 0);
}

TEST_F(Pictures, AreBuiltOfBuffers) {
    std::uint8_t bytes[2 * 16];
    for (std::uint8_t i = 0; i < sizeof bytes; ++i) bytes[i] = i;
    void* made = plugin_.from_buffer(3, 2, pixelTypeXRGB32, bytes, 16);
    ASSERT_NE(made, nullptr);
    std::memset(bytes + 12, 0, 4);
    EXPECT_EQ(picture(made).depth(), 32);
    EXPECT_EQ(load_pixel(picture(made).row(0), 0, 32), 0x00010203u);
    EXPECT_EQ(load_pixel(picture(made).row(1), 2, 32), 0x18191A1Bu);
}

TEST_F(Pictures, AreNotBuiltOfBuffersThatCannotHoldThem) {
    const std::uint8_t bytes[64] = {};
    EXPECT_EQ(plugin_.from_buffer(3, 2, 2, bytes, 12), nullptr);
    EXPECT_EQ(plugin_.from_buffer(3, 2, pixelTypeXRGB32, bytes, 11), nullptr);
    EXPECT_EQ(plugin_.from_buffer(3, 2, pixelTypeXRGB32, bytes, -12), nullptr);
    EXPECT_EQ(plugin_.from_buffer(0, 2, pixelTypeXRGB32, bytes, 12), nullptr);
    EXPECT_EQ(plugin_.from_buffer(3, 40000, pixelTypeXRGB32, bytes, 12), nullptr);
    EXPECT_EQ(plugin_.from_buffer(3, 2, pixelTypeXRGB32, nullptr, 12), nullptr);
}

TEST_F(Pictures, TakeTheirPlatformObjectsWithThem) {
    const PlatformCounts before = PlatformLiveObjects();
    make({.width = 1, .height = 1});
    make({.width = 1, .height = 1, .backing = Backing::bitmap_context});
    EXPECT_EQ(PlatformLiveObjects().worlds, before.worlds + 1);
    EXPECT_EQ(PlatformLiveObjects().contexts, before.contexts + 1);
    kept_.clear();
    EXPECT_EQ(PlatformLiveObjects().worlds, before.worlds);
    EXPECT_EQ(PlatformLiveObjects().contexts, before.contexts);
}

TEST(Masks, HaveTheDepthThatTheHostIsToldTo) {
    for (const int depth : {1, 2, 4, 8, 16, 24, 32, 5}) {
        Host host({.mask_depth = depth});
        TestPlugin plugin(host);
        void* mask = plugin.mask(plugin.new_picture(9, 2, 32), true);
        const Picture& made = *host.objects().find<Picture>(mask);
        EXPECT_EQ(made.depth(), depth);
        expect_all(made, depth == 1 ? 1 : 0);
    }
}

#ifdef WATCHED_MEMORY
TEST_F(Pictures, EndWhereTheirPixelsEnd) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    volatile std::uint8_t* last = make({.width = 3, .height = 2, .depth = 24}).row(1);
    EXPECT_DEATH(last[9] = 1, "heap-buffer-overflow");
    volatile std::uint8_t* row = make({.width = 4, .height = 2, .backing = Backing::pixel_buffer}).row(0);
    EXPECT_DEATH(row[16] = 1, "heap-buffer-overflow");
    EXPECT_DEATH(*(row - 1) = 1, "heap-buffer-overflow");
    void* mortal = plugin_.new_picture(2, 2, 32);
    volatile std::uint8_t* pixels = picture(mortal).row(0);
    plugin_.unlock(mortal);
    EXPECT_DEATH(pixels[0] = 1, "heap-use-after-free");
}
#endif

}  // namespace
}  // namespace tarvo::host
