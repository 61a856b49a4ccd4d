#pragma once

// TRV_Picture: one image, wherever its pixels live, with its pixels addressable.

#include <cstddef>
#include <cstdint>
#include <span>

#include "client_picture_data.h"
#include "platform.h"
#include "real_interface.h"
#include "row_codec.h"

// Life: constructed empty or bound to an image; `Lock` fills the geometry and makes the pixels addressable; `Unlock`
// ends that; destruction unlocks and gives back every host object that is held. Nothing here sets the error code:
// failure is a false result, a read of 0, a write that does nothing.
//
// Coordinates are the caller's to keep inside `width` x `height`. The trailing `caller` of every accessor names the
// operation and the place of the call, for whoever looks with a debugger; it changes nothing and may be null.
class TRV_Picture {
public:
    TRV_Picture() = default;
    // A host picture, or, with `asMask`, its mask, which the host makes when there is none.
    TRV_Picture(REALpictureStruct* picture, bool asMask);
    // A client picture's image or mask: of its host picture when it has one, else its own memory.
    TRV_Picture(const TRV_ClientPicture_Data* data, bool asMask);
    // A new host picture. With `handOver` the host picture outlives this object; without, it is dropped with it.
    TRV_Picture(long width, long height, int depth, bool handOver);
    // The image of another, or its mask. Nothing of the other's lock is shared.
    TRV_Picture(const TRV_Picture& other, bool asMask);
    // A pixel map such as a screen's, locked at once.
    explicit TRV_Picture(PixMap** pixMap);
    ~TRV_Picture();
    TRV_Picture(const TRV_Picture&) = delete;
    TRV_Picture& operator=(const TRV_Picture&) = delete;

    bool SetREALPicture(REALpictureStruct* picture, bool asMask);
    bool SetNewPicture(long width, long height, int depth, bool handOver);

    bool Lock();
    bool Unlock();
    // Unlocks, and lets go of what is bound.
    void Release();

    // True when the image has a mask; makes none.
    bool HasMask() const;

    // The bound host picture; null for client memory and pixel maps.
    REALpictureStruct* picture() const { return picture_; }
    bool isMask() const { return isMask_; }
    bool isLocked() const { return isLocked_; }
    // Pixels; 0 while unlocked.
    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    // Bits a pixel as stored.
    std::int32_t depth() const { return depth_; }
    // Bytes a pixel: 1 to 4 at depths 8, 16, 24, 32; else 0.
    std::int32_t bytesPerPixel() const { return bytesPerPixel_; }
    // The depth at 1, 2 and 4 bits; else 0.
    std::int32_t bitsPerPixel() const { return bitsPerPixel_; }
    std::int32_t rowBytes() const { return rowBytes_; }
    std::uint8_t* baseAddress() const { return baseAddress_; }
    bool hasResolution() const { return hasResolution_; }
    // Dots per inch; -1 while unknown, 0 once something has been released.
    std::int32_t hRes() const { return hRes_; }
    std::int32_t vRes() const { return vRes_; }

    // The first byte of a row; null where there are no pixels.
    std::uint8_t* RowStart(long row) const;

    // A pixel as 0x00RRGGBB; at 32 bits with the stored top byte.
    unsigned long GetPixel(const void* address, const char* caller) const;
    // The same with single bits of 1-bit pictures: `bit` 0 is the most significant of the byte.
    unsigned long GetPixel(const void* address, long bit, long depth, const char* caller) const;
    unsigned long GetPixel(long row, long column, const char* caller) const;
    void SetPixel(void* address, unsigned long color, const char* caller);
    void SetPixel(void* address, long bit, unsigned long color, long depth, const char* caller);
    void SetPixel(long row, long column, unsigned long color, const char* caller);

    // A run of one row, each pixel as the accessor by row and column gives or takes it.
    void GetPixels(long row, long column, std::span<PixelColor> colors, const char* caller) const;
    void SetPixels(long row, long column, std::span<const PixelColor> colors, const char* caller);
    // The stored pixels of a row from a column on, where they are 32-bit words side by side; else null.
    std::uint8_t* WordsAt(long row, long column) const;
    // Whether the picture is too large to be found in the caches again, and is better written past them.
    bool streams() const { return streams_; }
    // Brings a run of one row near that is going to be read soon, for walks down columns: nothing but time depends on
    // it.
    void Prefetch(long row, long column, std::size_t count) const;
    // A run of one row, each pixel as the bit-addressed accessor gives or takes it when the address and the bit step
    // from pixel to pixel by the bits of a pixel.
    void GetPixelBits(long row, long column, std::span<PixelColor> colors, const char* caller) const;
    void SetPixelBits(long row, long column, std::span<const PixelColor> colors, const char* caller);

    // Whether a run of one row shows the same red, green and blue as that of another picture, to whole-pixel access.
    bool SameColors(const TRV_Picture& other, long row, long column, std::size_t count, const char* caller) const;

    // Copy `count` pixels from this image to another; both addresses are left behind the last pixel. Stored values of
    // equal depths (16 and 32 bits) are copied as they are, others go through colours.
    void CopyPixels(TRV_Picture& destination, void** source, void** target, long count, const char* caller) const;
    // The same for masks: grey levels are converted between 8, 16 and 32 bits by rules of their own.
    void CopyMaskPixels(TRV_Picture& destination, void** source, void** target, long count, const char* caller) const;

private:
    bool lock_pixels();
    bool bind_mask_of(REALpictureStruct* picture);
    bool bind_drawing();
    bool lock_pixel_map();
    bool lock_bitmap_context();
    bool lock_pixel_buffer();
    bool lock_client_memory();
    void read_pixel_map();
    void set_depth(std::int32_t depth);
    void read_index_colors(CTabHandle table);
    void forget_geometry();
    PixelFormat format_at(long depth, bool bitsAddressed) const;

    REALpictureStruct* picture_ = nullptr;
    REALpictureDescription description_{};
    bool holdsDescription_ = false;  // the host granted the lock of `description_`
    bool ownsPicture_ = false;       // our reference goes with the binding
    bool isRefused_ = false;         // of a kind that operations do not take
    bool isMask_ = false;
    bool isLocked_ = false;
    bool fromPixMap_ = false;
    const TRV_ClientPicture_Data* clientData_ = nullptr;
    std::uint8_t* clientMemory_ = nullptr;  // held while locked
    PixMap** pixMap_ = nullptr;
    std::int32_t newWidth_ = 0, newHeight_ = 0;  // what a new picture was asked to be

    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    std::int32_t depth_ = 0;
    std::int32_t bytesPerPixel_ = 0;
    std::int32_t bitsPerPixel_ = 0;
    std::int32_t rowBytes_ = 0;
    std::uint8_t* baseAddress_ = nullptr;
    const REALpixelBuffer* rowTableSource_ = nullptr;
    bool hasResolution_ = false;
    std::int32_t hRes_ = -1;
    std::int32_t vRes_ = -1;

    PixelFormat format_ = PixelFormat::opaque;  // of whole-pixel access
    bool streams_ = false;
    IndexColors indexColors_{};  // black without a colour table
};

// Asked for every row, by kernels that walk columns too.
inline std::uint8_t* TRV_Picture::RowStart(long row) const {
    if (rowTableSource_) return rowTableSource_->rows ? rowTableSource_->rows[row] : nullptr;
    return baseAddress_ ? baseAddress_ + static_cast<std::ptrdiff_t>(row) * rowBytes_ : nullptr;
}

inline std::uint8_t* TRV_Picture::WordsAt(long row, long column) const {
    std::uint8_t* const start = RowStart(row);
    if (format_ != PixelFormat::xrgb32 || !start) return nullptr;
    return start + static_cast<std::ptrdiff_t>(column) * XRgb32::kBytes;
}

// Copy what both images have, from the top left corner on.
void CopyRows(const TRV_Picture& source, TRV_Picture& destination, const char* caller);
void CopyMaskRows(const TRV_Picture& source, TRV_Picture& destination, const char* caller);
