#include "platform.h"

#include <algorithm>
#include <memory>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

#if defined(__powerpc__)
#include <sys/auxv.h>
#endif

struct CGrafPort {
    PixMap map{};
    PixMap* map_pointer = &map;
    ColorTable colors{};
    ColorTable* colors_pointer = &colors;
    std::vector<ColorSpec> entries;
};

struct CGContext {
    PixelLayout layout;
};

struct PlatformState {
    GWorldPtr current = nullptr;
    std::unordered_map<PixMapHandle, std::unique_ptr<CGrafPort>> worlds;
    std::unordered_map<CGContextRef, std::unique_ptr<CGContext>> contexts;
    std::unordered_map<char*, std::unique_ptr<char[]>> blocks;
    GDevice device{};
    GDevice* device_pointer = &device;
    PlatformScreenRefresh refresh_screen = nullptr;
    void* refresh_context = nullptr;
};

namespace {

constexpr std::int32_t kMaxDepth = 32;
constexpr OSErr kParamErr = -50;

constinit thread_local PlatformState* chosen = nullptr;

// The process's own is never destroyed, because objects of other libraries may end after this library.
PlatformState& state() {
    if (chosen) return *chosen;
    static PlatformState& own = *new PlatformState;
    return own;
}

bool has_vector_unit() {
#if defined(__powerpc__)
    constexpr unsigned long kHasAltiVec = 0x10000000;
    return (getauxval(AT_HWCAP) & kHasAltiVec) != 0;
#elif defined(__x86_64__) || defined(__i386__)
    return __builtin_cpu_supports("sse2") != 0;
#else
    return false;
#endif
}

bool is_possible(const PixelLayout* layout) {
    if (!layout || !layout->pixels) return false;
    const auto side_fits = [](std::int32_t side) { return side >= 1 && side <= kLongestSide; };
    if (!side_fits(layout->width) || !side_fits(layout->height)) return false;
    if (layout->depth < 1 || layout->depth > kMaxDepth) return false;
    return layout->rowBytes >= (layout->width * layout->depth + 7) / 8;
}

Fixed to_fixed(std::int32_t value) { return std::clamp<std::int32_t>(value, -32768, 32767) * 65536; }

std::int16_t to_coordinate(std::int32_t value) {
    return static_cast<std::int16_t>(std::clamp<std::int32_t>(value, -32768, 32767));
}

void set_colors(CGrafPort& world, const RGBColor* colors, std::int32_t count) {
    const std::int32_t size = 1 << world.map.pixelSize;
    world.entries.resize(static_cast<std::size_t>(size));
    for (std::int32_t i = 0; i < size; ++i) {
        const RGBColor color = i < count ? colors[i] : RGBColor{0, 0, 0};
        world.entries[static_cast<std::size_t>(i)] = {static_cast<std::int16_t>(i), color};
    }
    world.colors.ctSize = static_cast<std::int16_t>(size - 1);
    world.colors.ctTable = world.entries.data();
    world.map.pmTable = &world.colors_pointer;
}

PixMap* open(PixMapHandle pixels) { return pixels ? *pixels : nullptr; }

// Returns the pixel map of a handle; null for any other handle. Locks of others mean nothing here.
PixMap* pixel_map_of(Handle handle) {
    const auto pixels = reinterpret_cast<PixMapHandle>(handle);
    return state().worlds.contains(pixels) ? *pixels : nullptr;
}

void drop_lock(std::int32_t& locks) {
    if (locks > 0) --locks;
}

}  // namespace

// --- the operating system's calls -----------------------------------------------------------------------------------

OSErr Gestalt(OSType selector, std::int32_t* response) {
    if (selector != gestaltPowerPCProcessorFeatures) return gestaltUndefSelectorErr;
    if (!response) return kParamErr;
    *response = has_vector_unit() ? 1 << 4 : 0;
    return noErr;
}

PixMapHandle GetGWorldPixMap(GWorldPtr world) { return world ? &world->map_pointer : nullptr; }

void GetGWorld(GWorldPtr* world, GDHandle* device) {
    if (world) *world = state().current;
    if (device) *device = nullptr;
}

void SetGWorld(GWorldPtr world, GDHandle /*device*/) { state().current = world; }

bool LockPixels(PixMapHandle pixels) {
    PixMap* map = open(pixels);
    if (!map || map->purged) return false;
    ++map->pixelLocks;
    return true;
}

void UnlockPixels(PixMapHandle pixels) {
    if (PixMap* map = open(pixels)) drop_lock(map->pixelLocks);
}

Rect* GetPixBounds(PixMapHandle pixels, Rect* bounds) {
    const PixMap* map = open(pixels);
    if (bounds) *bounds = map ? map->bounds : Rect{0, 0, 0, 0};
    return bounds;
}

std::int16_t GetPixDepth(PixMapHandle pixels) {
    const PixMap* map = open(pixels);
    return map ? map->pixelSize : std::int16_t{0};
}

std::int32_t GetPixRowBytes(PixMapHandle pixels) {
    const PixMap* map = open(pixels);
    return map ? map->rowBytes : 0;
}

std::uint8_t* GetPixBaseAddr(PixMapHandle pixels) {
    const PixMap* map = open(pixels);
    return map ? map->baseAddr : nullptr;
}

std::int32_t Fix2Long(Fixed value) { return value / 65536; }

void HLock(Handle handle) {
    if (PixMap* map = pixel_map_of(handle)) ++map->handleLocks;
}

void HUnlock(Handle handle) {
    if (PixMap* map = pixel_map_of(handle)) drop_lock(map->handleLocks);
}

// Blocks are listed here until they are disposed of, so that none is lost when the library that has it is unloaded.
char* NewPtr(std::int32_t size) {
    if (size < 0) return nullptr;
    try {
        auto block = std::make_unique<char[]>(static_cast<std::size_t>(size));
        char* address = block.get();
        state().blocks.emplace(address, std::move(block));
        return address;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void DisposePtr(char* pointer) { state().blocks.erase(pointer); }

GDHandle GetMainDevice() {
    PlatformState& live = state();
    if (live.refresh_screen) live.refresh_screen(live.refresh_context);
    return live.device.gdPMap ? &live.device_pointer : nullptr;
}

std::size_t CGBitmapContextGetWidth(CGContextRef context) {
    return context ? static_cast<std::size_t>(context->layout.width) : 0;
}

std::size_t CGBitmapContextGetHeight(CGContextRef context) {
    return context ? static_cast<std::size_t>(context->layout.height) : 0;
}

std::size_t CGBitmapContextGetBitsPerPixel(CGContextRef context) {
    return context ? static_cast<std::size_t>(context->layout.depth) : 0;
}

std::size_t CGBitmapContextGetBytesPerRow(CGContextRef context) {
    return context ? static_cast<std::size_t>(context->layout.rowBytes) : 0;
}

void* CGBitmapContextGetData(CGContextRef context) { return context ? context->layout.pixels : nullptr; }

// --- for those that make these objects ------------------------------------------------------------------------------

GWorldPtr PlatformNewGWorld(const PixelLayout* layout, const RGBColor* colors, std::int32_t colorCount) {
    if (!is_possible(layout)) return nullptr;
    try {
        auto world = std::make_unique<CGrafPort>();
        PixMap& map = world->map;
        map.baseAddr = layout->pixels;
        map.rowBytes = layout->rowBytes;
        map.bounds = {0, 0, static_cast<std::int16_t>(layout->height), static_cast<std::int16_t>(layout->width)};
        map.hRes = map.vRes = to_fixed(layout->dotsPerInch);
        map.pixelSize = static_cast<std::int16_t>(layout->depth);
        if (colors && layout->depth <= 8) set_colors(*world, colors, colorCount);
        GWorldPtr made = world.get();
        state().worlds.emplace(&made->map_pointer, std::move(world));
        return made;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void PlatformDisposeGWorld(GWorldPtr world) {
    if (!world) return;
    PlatformState& live = state();
    if (live.current == world) live.current = nullptr;
    if (live.device.gdPMap == &world->map_pointer) live.device = {};
    live.worlds.erase(&world->map_pointer);
}

CGContextRef PlatformNewBitmapContext(const PixelLayout* layout) {
    if (!is_possible(layout)) return nullptr;
    try {
        auto context = std::make_unique<CGContext>(CGContext{*layout});
        CGContextRef made = context.get();
        state().contexts.emplace(made, std::move(context));
        return made;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void PlatformDisposeBitmapContext(CGContextRef context) { state().contexts.erase(context); }

void PlatformSetMainDevice(GWorldPtr screen, std::int16_t left, std::int16_t top) {
    PlatformState& live = state();
    live.device = {};
    if (!screen) return;
    const Rect& bounds = screen->map.bounds;
    live.device.gdPMap = &screen->map_pointer;
    live.device.gdRect = {top, left, to_coordinate(top + bounds.bottom), to_coordinate(left + bounds.right)};
}

void PlatformSetScreenRefresh(PlatformScreenRefresh refresh, void* context) {
    state().refresh_screen = refresh;
    state().refresh_context = context;
}

PlatformState* PlatformNewState() { return new PlatformState; }

void PlatformDisposeState(PlatformState* state) { delete state; }

PlatformState* PlatformUseState(PlatformState* state) { return std::exchange(chosen, state); }

PlatformCounts PlatformLiveObjects() {
    const PlatformState& live = state();
    PlatformCounts counts{};
    counts.worlds = static_cast<std::int32_t>(live.worlds.size());
    counts.contexts = static_cast<std::int32_t>(live.contexts.size());
    for (const auto& [handle, world] : live.worlds) {
        counts.handleLocks += world->map.handleLocks;
        counts.pixelLocks += world->map.pixelLocks;
    }
    return counts;
}
