#pragma once

// QuickDraw, Core Graphics and Gestalt, as far as they are used: graphics worlds, pixel maps, bitmap contexts, the main
// device, the processor's features. Host and plugin both link this library, as both would link the operating system.
//
// No object here owns its pixels: whoever makes a world, a context or a device keeps its pixel memory alive for as long
// as the object lives. What is kept between calls is a state: the process's own, or one that the calling thread has
// chosen. A state is used by one thread at a time.

#include <cstddef>
#include <cstdint>

#define PLATFORM_API extern "C" __attribute__((visibility("default")))

using OSErr = std::int16_t;
using OSType = std::uint32_t;
using Fixed = std::int32_t;  // 16 bits before the point, 16 behind it
using Handle = char**;
inline constexpr OSErr noErr = 0;

struct Rect {
    std::int16_t top, left, bottom, right;
};

struct RGBColor {
    std::uint16_t red, green, blue;
};

struct ColorSpec {
    std::int16_t value;
    RGBColor rgb;
};

// The colours of an indexed picture. There are always 2^depth entries in memory; unused ones are black.
struct ColorTable {
    std::int32_t ctSeed;
    std::int16_t ctFlags;
    std::int16_t ctSize;  // the last index
    ColorSpec* ctTable;
};
using CTabHandle = ColorTable**;

struct PixMap {
    std::uint8_t* baseAddr;
    std::int32_t rowBytes;
    Rect bounds;
    Fixed hRes, vRes;        // in dots per inch
    std::int16_t pixelSize;  // in bits
    CTabHandle pmTable;      // null above 8 bits
    std::int32_t handleLocks;
    std::int32_t pixelLocks;
    bool purged;  // the pixels are gone, and LockPixels fails
};
using PixMapHandle = PixMap**;

struct CGrafPort;
using GWorldPtr = CGrafPort*;

struct GDevice {
    PixMapHandle gdPMap;
    Rect gdRect;
};
using GDHandle = GDevice**;

struct CGContext;
using CGContextRef = CGContext*;

// A file, given by volume, directory and name.
#pragma pack(push, 1)
struct FSSpec {
    std::int16_t vRefNum;
    std::int32_t parID;
    std::uint8_t name[64];  // a length byte and up to 63 characters
};
#pragma pack(pop)
static_assert(sizeof(FSSpec) == 70);

// --- the operating system's calls -----------------------------------------------------------------------------------

// For the selector 'ppcf' the response is the processor's features: bit 4 is set when it has a vector unit. All other
// selectors fail.
PLATFORM_API OSErr Gestalt(OSType selector, std::int32_t* response);
inline constexpr OSType gestaltPowerPCProcessorFeatures = 0x70706366;  // 'ppcf'
inline constexpr OSErr gestaltUndefSelectorErr = -5551;

PLATFORM_API PixMapHandle GetGWorldPixMap(GWorldPtr world);
// Get and set the world that drawing goes to, and the device that it belongs to, which is always null here.
PLATFORM_API void GetGWorld(GWorldPtr* world, GDHandle* device);
PLATFORM_API void SetGWorld(GWorldPtr world, GDHandle device);

// Returns true if the pixels may be read and written until the matching UnlockPixels.
PLATFORM_API bool LockPixels(PixMapHandle pixels);
PLATFORM_API void UnlockPixels(PixMapHandle pixels);
PLATFORM_API Rect* GetPixBounds(PixMapHandle pixels, Rect* bounds);
PLATFORM_API std::int16_t GetPixDepth(PixMapHandle pixels);
PLATFORM_API std::int32_t GetPixRowBytes(PixMapHandle pixels);
PLATFORM_API std::uint8_t* GetPixBaseAddr(PixMapHandle pixels);
PLATFORM_API std::int32_t Fix2Long(Fixed value);  // truncates

PLATFORM_API void HLock(Handle handle);
PLATFORM_API void HUnlock(Handle handle);
PLATFORM_API char* NewPtr(std::int32_t size);
PLATFORM_API void DisposePtr(char* pointer);

// Returns null when there is no main screen.
PLATFORM_API GDHandle GetMainDevice();

PLATFORM_API std::size_t CGBitmapContextGetWidth(CGContextRef context);
PLATFORM_API std::size_t CGBitmapContextGetHeight(CGContextRef context);
PLATFORM_API std::size_t CGBitmapContextGetBitsPerPixel(CGContextRef context);
PLATFORM_API std::size_t CGBitmapContextGetBytesPerRow(CGContextRef context);
PLATFORM_API void* CGBitmapContextGetData(CGContextRef context);

// --- for those that make these objects ------------------------------------------------------------------------------

// The longest side of a picture. Coordinates have 16 bits.
inline constexpr std::int32_t kLongestSide = 32767;

struct PixelLayout {
    std::uint8_t* pixels;
    std::int32_t width, height;  // 1 to kLongestSide
    std::int32_t depth;          // bits of a pixel
    std::int32_t rowBytes;
    std::int32_t dotsPerInch;
};

// Returns a world over the given pixels; null when the layout is impossible or memory is short. `colors` are
// `colorCount` entries of a colour table for depths up to 8, which is filled up with black; null for no colour table.
PLATFORM_API GWorldPtr PlatformNewGWorld(const PixelLayout* layout, const RGBColor* colors, std::int32_t colorCount);
// Null is allowed. A world that is disposed of is no longer current, nor the main device.
PLATFORM_API void PlatformDisposeGWorld(GWorldPtr world);

PLATFORM_API CGContextRef PlatformNewBitmapContext(const PixelLayout* layout);
PLATFORM_API void PlatformDisposeBitmapContext(CGContextRef context);

// Makes a world the main screen, or with null none. The device's rectangle begins at `left`, `top`.
PLATFORM_API void PlatformSetMainDevice(GWorldPtr screen, std::int16_t left, std::int16_t top);
// Sets a function that each GetMainDevice calls first; null for none. The function brings the main screen's pixels up
// to date, and may set another main screen or none.
using PlatformScreenRefresh = void (*)(void* context);
PLATFORM_API void PlatformSetScreenRefresh(PlatformScreenRefresh refresh, void* context);

// Everything that is kept between calls: the current world, all worlds, contexts and blocks, the main device. Objects
// are used while the state that they were made in is chosen; they end with it.
struct PlatformState;
// Throws std::bad_alloc.
PLATFORM_API PlatformState* PlatformNewState();
PLATFORM_API void PlatformDisposeState(PlatformState* state);  // null is allowed
// Makes the calling thread use a state, or with null the process's own, and returns what it used before.
PLATFORM_API PlatformState* PlatformUseState(PlatformState* state);

// How many worlds, contexts and locks of handles and of pixels there are now, for tests.
struct PlatformCounts {
    std::int32_t worlds, contexts, handleLocks, pixelLocks;
};
PLATFORM_API PlatformCounts PlatformLiveObjects();
