#include "platform.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <thread>
#include <vector>

namespace {

struct DisposeWorld {
    void operator()(CGrafPort* world) const { PlatformDisposeGWorld(world); }
};
using World = std::unique_ptr<CGrafPort, DisposeWorld>;

struct DisposeContext {
    void operator()(CGContext* context) const { PlatformDisposeBitmapContext(context); }
};
using Context = std::unique_ptr<CGContext, DisposeContext>;

class Platform : public testing::Test {
protected:
    // 5 x 3 pixels of the depth over `bytes_`.
    PixelLayout layout(std::int32_t depth) {
        return {.pixels = bytes_.data(), .width = 5, .height = 3, .depth = depth, .rowBytes = 24, .dotsPerInch = 96};
    }

    World new_world(std::int32_t depth, std::vector<RGBColor> colors = {}) {
        const PixelLayout asked = layout(depth);
        const auto count = static_cast<std::int32_t>(colors.size());
        return World(PlatformNewGWorld(&asked, colors.empty() ? nullptr : colors.data(), count));
    }

    std::array<std::uint8_t, 72> bytes_{};
};

TEST_F(Platform, GestaltAnswersForTheProcessorsFeatures) {
    std::int32_t response = -1;
    ASSERT_EQ(Gestalt(gestaltPowerPCProcessorFeatures, &response), noErr);
#if defined(__x86_64__)
    EXPECT_EQ(response, 16);
#else
    EXPECT_TRUE(response == 0 || response == 16);
#endif
    EXPECT_NE(Gestalt(gestaltPowerPCProcessorFeatures, nullptr), noErr);
}

TEST_F(Platform, GestaltFailsForOtherSelectors) {
    std::int32_t response = 42;
    EXPECT_EQ(Gestalt(0x73797376, &response), gestaltUndefSelectorErr);
    EXPECT_EQ(response, 42);
}

TEST_F(Platform, AWorldTellsItsLayout) {
    const World world = new_world(32);
    const PixMapHandle pixels = GetGWorldPixMap(world.get());
    ASSERT_NE(pixels, nullptr);
    Rect bounds{9, 9, 9, 9};
    EXPECT_EQ(GetPixBounds(pixels, &bounds), &bounds);
    EXPECT_EQ(bounds.top, 0);
    EXPECT_EQ(bounds.left, 0);
    EXPECT_EQ(bounds.bottom, 3);
    EXPECT_EQ(bounds.right, 5);
    EXPECT_EQ(GetPixDepth(pixels), 32);
    EXPECT_EQ(GetPixRowBytes(pixels), 24);
    EXPECT_EQ(GetPixBaseAddr(pixels), bytes_.data());
    EXPECT_EQ(Fix2Long((*pixels)->hRes), 96);
    EXPECT_EQ(Fix2Long((*pixels)->vRes), 96);
    EXPECT_EQ((*pixels)->pmTable, nullptr);
}

TEST_F(Platform, ColorTablesAreFilledUpWithBlack) {
    const World world = new_world(2, {{0xFFFF, 0xFFFF, 0xFFFF}, {0x1234, 0x5678, 0x9ABC}});
    const CTabHandle table = (*GetGWorldPixMap(world.get()))->pmTable;
    ASSERT_NE(table, nullptr);
    ASSERT_EQ((*table)->ctSize, 3);
    const ColorSpec* entries = (*table)->ctTable;
    EXPECT_EQ(entries[0].rgb.red, 0xFFFF);
    EXPECT_EQ(entries[1].value, 1);
    EXPECT_EQ(entries[1].rgb.green, 0x5678);
    EXPECT_EQ(entries[3].value, 3);
    EXPECT_EQ(entries[3].rgb.red + entries[3].rgb.green + entries[3].rgb.blue, 0);
}

TEST_F(Platform, ColorTablesAreCutAtTheLastIndexAndAreForLowDepthsOnly) {
    const std::vector<RGBColor> white(5, {0xFFFF, 0xFFFF, 0xFFFF});
    const World shallow = new_world(1, white);
    EXPECT_EQ((*(*GetGWorldPixMap(shallow.get()))->pmTable)->ctSize, 1);
    const World deep = new_world(16, white);
    EXPECT_EQ((*GetGWorldPixMap(deep.get()))->pmTable, nullptr);
    const World plain = new_world(8);
    EXPECT_EQ((*GetGWorldPixMap(plain.get()))->pmTable, nullptr);
}

TEST_F(Platform, ImpossibleLayoutsAreRefused) {
    const auto refused = [&](auto change) {
        PixelLayout wrong = layout(32);
        change(wrong);
        const World world(PlatformNewGWorld(&wrong, nullptr, 0));
        const Context context(PlatformNewBitmapContext(&wrong));
        return !world && !context;
    };
    EXPECT_FALSE(refused([](PixelLayout&) {}));
    EXPECT_TRUE(refused([](PixelLayout& it) { it.width = 0; }));
    EXPECT_TRUE(refused([](PixelLayout& it) { it.height = -1; }));
    EXPECT_TRUE(refused([](PixelLayout& it) { it.width = 32768; }));
    EXPECT_TRUE(refused([](PixelLayout& it) { it.height = 32768; }));
    EXPECT_TRUE(refused([](PixelLayout& it) { it.depth = 0; }));
    EXPECT_TRUE(refused([](PixelLayout& it) { it.depth = 33; }));
    EXPECT_TRUE(refused([](PixelLayout& it) { it.rowBytes = 19; }));
    EXPECT_TRUE(refused([](PixelLayout& it) { it.pixels = nullptr; }));
    EXPECT_EQ(PlatformNewGWorld(nullptr, nullptr, 0), nullptr);
}

TEST_F(Platform, TheCurrentWorldIsOnePieceOfState) {
    World world = new_world(32);
    SetGWorld(world.get(), nullptr);
    GWorldPtr current = nullptr;
    GDevice* record = nullptr;
    GDHandle device = &record;
    GetGWorld(&current, &device);
    EXPECT_EQ(current, world.get());
    EXPECT_EQ(device, nullptr);
    GetGWorld(nullptr, nullptr);

    world.reset();
    GetGWorld(&current, &device);
    EXPECT_EQ(current, nullptr) << "a disposed world is not current";
}

TEST_F(Platform, LocksAreCounted) {
    const World world = new_world(32);
    const PixMapHandle pixels = GetGWorldPixMap(world.get());
    const auto handle = reinterpret_cast<Handle>(pixels);
    const PlatformCounts before = PlatformLiveObjects();
    HLock(handle);
    ASSERT_TRUE(LockPixels(pixels));
    ASSERT_TRUE(LockPixels(pixels));
    EXPECT_EQ(PlatformLiveObjects().handleLocks, before.handleLocks + 1);
    EXPECT_EQ(PlatformLiveObjects().pixelLocks, before.pixelLocks + 2);
    HUnlock(handle);
    HUnlock(handle);
    for (int i = 0; i < 3; ++i) UnlockPixels(pixels);
    EXPECT_EQ(PlatformLiveObjects().handleLocks, before.handleLocks) << "an unlock too many is no debt";
    EXPECT_EQ(PlatformLiveObjects().pixelLocks, before.pixelLocks);
}

TEST_F(Platform, PurgedPixelsCannotBeLocked) {
    const World world = new_world(32);
    const PixMapHandle pixels = GetGWorldPixMap(world.get());
    (*pixels)->purged = true;
    EXPECT_FALSE(LockPixels(pixels));
    EXPECT_EQ((*pixels)->pixelLocks, 0);
}

TEST_F(Platform, NullHandlesAreHarmless) {
    PixMap* no_map = nullptr;
    for (const PixMapHandle nothing : {PixMapHandle{}, &no_map}) {
        Rect bounds{1, 2, 3, 4};
        EXPECT_FALSE(LockPixels(nothing));
        UnlockPixels(nothing);
        EXPECT_EQ(GetPixBounds(nothing, &bounds)->right, 0);
        EXPECT_EQ(GetPixDepth(nothing), 0);
        EXPECT_EQ(GetPixRowBytes(nothing), 0);
        EXPECT_EQ(GetPixBaseAddr(nothing), nullptr);
        HLock(reinterpret_cast<Handle>(nothing));
        HUnlock(reinterpret_cast<Handle>(nothing));
    }
    EXPECT_EQ(GetGWorldPixMap(nullptr), nullptr);
    EXPECT_EQ(CGBitmapContextGetWidth(nullptr), 0u);
    EXPECT_EQ(CGBitmapContextGetHeight(nullptr), 0u);
    EXPECT_EQ(CGBitmapContextGetBitsPerPixel(nullptr), 0u);
    EXPECT_EQ(CGBitmapContextGetBytesPerRow(nullptr), 0u);
    EXPECT_EQ(CGBitmapContextGetData(nullptr), nullptr);
    PlatformDisposeGWorld(nullptr);
    PlatformDisposeBitmapContext(nullptr);
}

TEST_F(Platform, FixedNumbersGiveTheirIntegerPart) {
    EXPECT_EQ(Fix2Long(72 << 16), 72);
    EXPECT_EQ(Fix2Long((72 << 16) + 0xFFFF), 72);
    EXPECT_EQ(Fix2Long(-0x8000), 0);
    EXPECT_EQ(Fix2Long(-0x18000), -1);
}

TEST_F(Platform, ResolutionsBeyondAFixedNumberStopAtItsEnds) {
    PixelLayout fine = layout(32);
    fine.dotsPerInch = 100000;
    const World world(PlatformNewGWorld(&fine, nullptr, 0));
    EXPECT_EQ(Fix2Long((*GetGWorldPixMap(world.get()))->hRes), 32767);
}

TEST_F(Platform, ABitmapContextTellsItsLayout) {
    const PixelLayout asked = layout(8);
    const Context context(PlatformNewBitmapContext(&asked));
    EXPECT_EQ(CGBitmapContextGetWidth(context.get()), 5u);
    EXPECT_EQ(CGBitmapContextGetHeight(context.get()), 3u);
    EXPECT_EQ(CGBitmapContextGetBitsPerPixel(context.get()), 8u);
    EXPECT_EQ(CGBitmapContextGetBytesPerRow(context.get()), 24u);
    EXPECT_EQ(CGBitmapContextGetData(context.get()), bytes_.data());
}

TEST_F(Platform, TheMainDeviceIsHandedIn) {
    EXPECT_EQ(GetMainDevice(), nullptr);
    const World screen = new_world(32);
    PlatformSetMainDevice(screen.get(), 10, -20);
    const GDHandle device = GetMainDevice();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ((*device)->gdPMap, GetGWorldPixMap(screen.get()));
    EXPECT_EQ((*device)->gdRect.left, 10);
    EXPECT_EQ((*device)->gdRect.top, -20);
    EXPECT_EQ((*device)->gdRect.right, 15);
    EXPECT_EQ((*device)->gdRect.bottom, -17);
    PlatformSetMainDevice(nullptr, 0, 0);
    EXPECT_EQ(GetMainDevice(), nullptr);
}

TEST_F(Platform, ADisposedScreenIsNoMainDevice) {
    World screen = new_world(32);
    PlatformSetMainDevice(screen.get(), 0, 0);
    screen.reset();
    EXPECT_EQ(GetMainDevice(), nullptr);
}

TEST_F(Platform, PointersAreBlocksOfTheirOwn) {
    char* first = NewPtr(12);
    char* second = NewPtr(0);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    first[11] = 'x';
    DisposePtr(first);
    DisposePtr(second);
    DisposePtr(nullptr);
    EXPECT_EQ(NewPtr(-1), nullptr);
}

// A plugin never disposes of some blocks; that is no leak.
TEST_F(Platform, PointersMayBeForgotten) { EXPECT_NE(NewPtr(100), nullptr); }

TEST_F(Platform, LiveObjectsAreCounted) {
    const PlatformCounts before = PlatformLiveObjects();
    {
        const World world = new_world(32);
        const PixelLayout asked = layout(8);
        const Context context(PlatformNewBitmapContext(&asked));
        ASSERT_TRUE(LockPixels(GetGWorldPixMap(world.get())));
        EXPECT_EQ(PlatformLiveObjects().worlds, before.worlds + 1);
        EXPECT_EQ(PlatformLiveObjects().contexts, before.contexts + 1);
    }
    EXPECT_EQ(PlatformLiveObjects().worlds, before.worlds);
    EXPECT_EQ(PlatformLiveObjects().contexts, before.contexts);
    EXPECT_EQ(PlatformLiveObjects().pixelLocks, before.pixelLocks);
}

// --- states ----------------------------------------------------------------------------------------------------------

class OwnState {
public:
    OwnState() : state_(PlatformNewState()), before_(PlatformUseState(state_)) {}
    ~OwnState() {
        EXPECT_EQ(PlatformUseState(before_), state_);
        PlatformDisposeState(state_);
    }
    OwnState(const OwnState&) = delete;
    OwnState& operator=(const OwnState&) = delete;

private:
    PlatformState *state_, *before_;
};

TEST_F(Platform, AStateOfItsOwnHasNothingOfOthers) {
    const World outside = new_world(32);
    SetGWorld(outside.get(), nullptr);
    const PlatformCounts before = PlatformLiveObjects();
    {
        const OwnState state;
        GWorldPtr current = outside.get();
        GetGWorld(&current, nullptr);
        EXPECT_EQ(current, nullptr);
        EXPECT_EQ(PlatformLiveObjects().worlds, 0);
        const World inside = new_world(16);
        SetGWorld(inside.get(), nullptr);
        PlatformSetMainDevice(inside.get(), 0, 0);
        EXPECT_NE(GetMainDevice(), nullptr);
    }
    GWorldPtr current = nullptr;
    GetGWorld(&current, nullptr);
    EXPECT_EQ(current, outside.get());
    EXPECT_EQ(GetMainDevice(), nullptr);
    EXPECT_EQ(PlatformLiveObjects().worlds, before.worlds);
    SetGWorld(nullptr, nullptr);
}

TEST_F(Platform, AStateIsItsThreadsChoice) {
    const OwnState state;
    const World inside = new_world(16);
    SetGWorld(inside.get(), nullptr);
    std::thread([] {
        GWorldPtr current = nullptr;
        GetGWorld(&current, nullptr);
        EXPECT_EQ(current, nullptr);
    }).join();
}

TEST_F(Platform, AStateEndsWithItsObjects) {
    PlatformState* const state = PlatformNewState();
    PlatformState* const before = PlatformUseState(state);
    const PixelLayout asked = layout(32);
    EXPECT_NE(PlatformNewGWorld(&asked, nullptr, 0), nullptr);
    EXPECT_NE(PlatformNewBitmapContext(&asked), nullptr);
    EXPECT_NE(NewPtr(10), nullptr);
    PlatformUseState(before);
    PlatformDisposeState(state);  // a leak checker sees whether they went
    PlatformDisposeState(nullptr);
}

}  // namespace
