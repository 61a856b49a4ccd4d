#include "picture.h"

#include <limits>
#include <utility>

#include "client_memory.h"
#include "host_reference.h"
#include "host_services.h"
#include "numbers.h"
#include "pixel_blocks.h"

namespace tarvo::plugin {
namespace {

// Makes a world current, so that what is drawn goes there, and afterwards the one that was current before.
class CurrentWorld {
public:
    explicit CurrentWorld(GWorldPtr world) {
        GetGWorld(&saved_, &device_);
        SetGWorld(world, nullptr);
    }
    ~CurrentWorld() { SetGWorld(saved_, device_); }
    CurrentWorld(const CurrentWorld&) = delete;
    CurrentWorld& operator=(const CurrentWorld&) = delete;

private:
    GWorldPtr saved_ = nullptr;
    GDHandle device_ = nullptr;
};

// Locks a handle, so that its record stays where it is.
class LockedHandle {
public:
    explicit LockedHandle(PixMap** handle) : handle_(reinterpret_cast<Handle>(handle)) { HLock(handle_); }
    ~LockedHandle() { HUnlock(handle_); }
    LockedHandle(const LockedHandle&) = delete;
    LockedHandle& operator=(const LockedHandle&) = delete;

private:
    Handle handle_;
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

// Every constructor delegates to the empty one. If a host service throws in one of them, the destructor runs all the
// same and gives back what was taken.

TRV_Picture::TRV_Picture(REALpictureStruct* picture, bool asMask) : TRV_Picture() { SetREALPicture(picture, asMask); }

// Holds the host picture: the program may take it out of the client picture while the host has control.
TRV_Picture::TRV_Picture(const TRV_ClientPicture_Data* data, bool asMask) : TRV_Picture() {
    if (!data) return;
    if (data->pic) {
        REALLockObject(data->pic);
        HostReference<REALpictureStruct> held(data->pic);
        SetREALPicture(held.get(), asMask);
        if (picture_ == held.get()) {
            ownsPicture_ = true;
            held.release();
        }
    } else {
        isMask_ = asMask;
        clientData_ = data;
    }
}

TRV_Picture::TRV_Picture(long width, long height, int depth, bool handOver) : TRV_Picture() {
    SetNewPicture(width, height, depth, handOver);
}

TRV_Picture::TRV_Picture(const TRV_Picture& other, bool asMask) : TRV_Picture() {
    if (other.picture_) {
        SetREALPicture(other.picture_, asMask);
    } else if (other.clientData_) {
        isMask_ = asMask;
        clientData_ = other.clientData_;
    }
}

TRV_Picture::TRV_Picture(PixMap** pixMap) : TRV_Picture() {
    fromPixMap_ = true;
    pixMap_ = pixMap;
    if (!pixMap_) return;
    const LockedHandle handle(pixMap_);
    if (!LockPixels(pixMap_)) {
        pixMap_ = nullptr;
        return;
    }
    read_pixel_map();
}

TRV_Picture::~TRV_Picture() {
    if (fromPixMap_) {
        if (pixMap_) UnlockPixels(pixMap_);
        return;
    }
    try {
        Release();
    } catch (...) {  // a host service threw; a destructor can tell nobody
    }
}

bool TRV_Picture::SetREALPicture(REALpictureStruct* picture, bool asMask) {
    Release();
    if (!picture) return false;
    if (asMask) return bind_mask_of(picture);

    isMask_ = false;
    picture_ = picture;
    holdsDescription_ = REALLockPictureDescription(picture_, &description_) != 0;
    if (!holdsDescription_) return false;
    switch (description_.kind) {
        case pictureDrawingCommands: return bind_drawing();
        case pictureMacintoshGWorld:
        case pictureHostPixelBuffer: return true;
        default: isRefused_ = true; return false;  // it stays bound, so that its description is unlocked on release
    }
}

// The host is asked for a graphics world first, since that is the fastest to walk.
bool TRV_Picture::bind_mask_of(REALpictureStruct* picture) {
    REALpictureStruct* const mask = REALGetPictureMask(picture, 1);
    if (!mask) return false;
    picture_ = mask;
    ownsPicture_ = true;
    isMask_ = true;
    holdsDescription_ = REALLockPictureDescription(mask, &description_, pictureMacintoshGWorld) != 0 ||
                        REALLockPictureDescription(mask, &description_) != 0;
    return true;
}

// Renders the bound drawing into a new picture and binds that in its place. On failure the drawing stays bound, and is
// released later like any picture.
bool TRV_Picture::bind_drawing() {
    constexpr std::int32_t kMostSide = std::numeric_limits<std::int16_t>::max();
    if (description_.width > kMostSide || description_.height > kMostSide) return false;
    TRV_Picture rendered(description_.width, description_.height, 32, kTemporary);
    if (!rendered.holdsDescription_) return false;
    const REALpictureDescription canvas = rendered.description_;
    if (canvas.kind != pictureMacintoshGWorld || !canvas.store) return false;

    const Rect everything = {0, 0, static_cast<std::int16_t>(description_.height),
                             static_cast<std::int16_t>(description_.width)};
    try {
        const CurrentWorld world(static_cast<GWorldPtr>(canvas.store));
        REALDrawPicturePrimitive(picture_, &everything, 0);
    } catch (...) {
        return false;  // a drawing that cannot be drawn cannot be bound
    }
    Release();
    picture_ = std::exchange(rendered.picture_, nullptr);
    description_ = canvas;
    holdsDescription_ = ownsPicture_ = true;
    return true;
}

bool TRV_Picture::SetNewPicture(long width, long height, int depth, bool handOver) {
    Release();
    if (width < 1 || height < 1) return false;
    if (depth != 1 && depth != 16 && depth != 24 && depth != 32) return false;
    picture_ = REALNewPicture(width, height, depth);
    if (!picture_) return false;
    ownsPicture_ = !handOver;
    newWidth_ = static_cast<std::int32_t>(width);
    newHeight_ = static_cast<std::int32_t>(height);
    holdsDescription_ = REALLockPictureDescription(picture_, &description_) != 0;
    return true;
}

bool TRV_Picture::Lock() {
    if (isLocked_ || !lock_pixels()) return false;
    // A new picture that has another size than was asked for is refused: kernels would walk it by the sizes of others.
    if (newWidth_ == 0 || (width_ == newWidth_ && height_ == newHeight_)) return true;
    Unlock();
    return false;
}

bool TRV_Picture::lock_pixels() {
    if (picture_) {
        if (!holdsDescription_ || isRefused_) return false;
        switch (description_.kind) {
            case pictureMacintoshGWorld: return lock_pixel_map();
            case pictureCGBitmapContext: return lock_bitmap_context();
            case pictureHostPixelBuffer: return lock_pixel_buffer();
            default: return false;
        }
    }
    return clientData_ && lock_client_memory();
}

bool TRV_Picture::lock_pixel_map() {
    const auto world = static_cast<GWorldPtr>(description_.store);
    PixMap** const map = world ? GetGWorldPixMap(world) : nullptr;
    if (!map) return false;
    const LockedHandle handle(map);
    if (!LockPixels(map)) return false;
    pixMap_ = map;
    read_pixel_map();
    return true;
}

void TRV_Picture::read_pixel_map() {
    Rect bounds{};
    GetPixBounds(pixMap_, &bounds);
    width_ = bounds.right - bounds.left;
    height_ = bounds.bottom - bounds.top;
    rowBytes_ = GetPixRowBytes(pixMap_);
    baseAddress_ = GetPixBaseAddr(pixMap_);
    hasResolution_ = true;
    hRes_ = Fix2Long((*pixMap_)->hRes);
    vRes_ = Fix2Long((*pixMap_)->vRes);
    set_depth(GetPixDepth(pixMap_));
    if (depth_ == 8 && !isMask_) read_index_colors((*pixMap_)->pmTable);
    isLocked_ = true;
}

bool TRV_Picture::lock_bitmap_context() {
    const auto context = static_cast<CGContextRef>(description_.store);
    if (!context) return false;
    width_ = static_cast<std::int32_t>(CGBitmapContextGetWidth(context));
    height_ = static_cast<std::int32_t>(CGBitmapContextGetHeight(context));
    rowBytes_ = static_cast<std::int32_t>(CGBitmapContextGetBytesPerRow(context));
    baseAddress_ = static_cast<std::uint8_t*>(CGBitmapContextGetData(context));
    hasResolution_ = true;
    hRes_ = vRes_ = 72;
    set_depth(static_cast<std::int32_t>(CGBitmapContextGetBitsPerPixel(context)));
    isLocked_ = true;
    return true;
}

bool TRV_Picture::lock_pixel_buffer() {
    rowTableSource_ = static_cast<const REALpixelBuffer*>(description_.store);
    if (rowTableSource_) {
        width_ = rowTableSource_->width;
        height_ = rowTableSource_->height;
        rowBytes_ = wrapping_multiply(width_, XRgb32::kBytes);  // for programs that ask; rows are found by the table
    }
    set_depth(32);
    isLocked_ = true;
    return true;
}

// The mask of a client picture that has none locks too, without pixels: it reads 0, and writes do nothing.
bool TRV_Picture::lock_client_memory() {
    width_ = clientData_->width;
    height_ = clientData_->height;
    rowBytes_ = isMask_ ? clientData_->maskRowBytes : clientData_->rowBytes;
    baseAddress_ = isMask_ ? clientData_->maskPixels : clientData_->pixels;
    clientMemory_ = isMask_ ? clientData_->maskPixels : clientData_->buffer;
    hold_client_memory(clientMemory_);
    set_depth(isMask_ ? clientData_->maskDepth : clientData_->depth);
    isLocked_ = true;
    return true;
}

void TRV_Picture::set_depth(std::int32_t depth) {
    depth_ = depth;
    bytesPerPixel_ = depth == 8 || depth == 16 || depth == 24 || depth == 32 ? depth / 8 : 0;
    bitsPerPixel_ = depth == 1 || depth == 2 || depth == 4 ? depth : 0;
    format_ = format_at(depth, Addressing::whole_pixels);
}

PixelFormat TRV_Picture::format_at(long depth, Addressing addressing) const {
    if (rowTableSource_ || depth == 32) return PixelFormat::xrgb32;
    if (depth == 16) return PixelFormat::rgb555;
    if (depth == 24) return PixelFormat::rgb24;
    // Tested before the depths below, because masks of 1 bit too are read and written in whole bytes.
    if (isMask_) return PixelFormat::grey8;
    if (depth == 8) return PixelFormat::indexed8;
    if (depth == 1 && addressing == Addressing::single_bits) return PixelFormat::mono1;
    return PixelFormat::opaque;
}

void TRV_Picture::read_index_colors(CTabHandle table) {
    indexColors_ = {};
    if (!table || !*table || !(*table)->ctTable) return;
    const ColorSpec* const entries = (*table)->ctTable;
    for (std::size_t i = 0; i < indexColors_.size(); ++i) {
        const RGBColor& color = entries[i].rgb;
        indexColors_[i] = pack_rgb(color.red >> 8, color.green >> 8, color.blue >> 8);
    }
}

bool TRV_Picture::Unlock() {
    if (!isLocked_) return false;
    finish_streaming(store_mode(WritingOrder::strips));
    if (pixMap_) {
        UnlockPixels(pixMap_);
        pixMap_ = nullptr;
    }
    drop_client_memory(std::exchange(clientMemory_, nullptr));
    isLocked_ = false;
    forget_geometry();
    hRes_ = vRes_ = -1;
    return true;
}

void TRV_Picture::Release() {
    Unlock();
    if (picture_) {
        if (holdsDescription_) REALUnlockPictureDescription(picture_);
        if (ownsPicture_) REALUnlockObject(picture_);
        picture_ = nullptr;
    }
    description_ = {};
    holdsDescription_ = false;
    ownsPicture_ = isRefused_ = false;
    newWidth_ = newHeight_ = 0;
    clientData_ = nullptr;
    rowTableSource_ = nullptr;
    forget_geometry();
    hRes_ = vRes_ = 0;
}

void TRV_Picture::forget_geometry() {
    width_ = height_ = depth_ = bytesPerPixel_ = bitsPerPixel_ = rowBytes_ = 0;
    baseAddress_ = nullptr;
    hasResolution_ = false;
    format_ = PixelFormat::opaque;
}

bool TRV_Picture::HasMask() const {
    if (picture_) {
        REALpictureStruct* const mask = REALGetPictureMask(picture_, 0);
        if (mask) REALUnlockObject(mask);
        return mask != nullptr;
    }
    return clientData_ && clientData_->hasMask;
}
