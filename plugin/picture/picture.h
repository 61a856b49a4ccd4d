#pragma once

// TRV_Picture: one image with its pixels addressable, wherever they live.

#include <cstddef>
#include <cstdint>
#include <span>

#include "client_picture_data.h"
#include "platform.h"
#include "real_interface.h"
#include "row_codec.h"

namespace tarvo::plugin {

// Arguments for the parameters `asMask` and `handOver` of TRV_Picture.
inline constexpr bool kAsImage = false, kAsMask = true;
inline constexpr bool kTemporary = false, kHandOver = true;

}  // namespace tarvo::plugin

// A picture is constructed empty or bound to an image. `Lock` fills the geometry and makes the pixels addressable,
// `Unlock` ends that, and the destructor unlocks and gives back every host object that is held. Nothing here sets the
// error code: what fails returns false, reads 0 or writes nothing.
//
// Callers keep coordinates inside `width` x `height`. The last argument of every accessor, `caller`, names the
// operation and the place of the call for people with a debugger; it changes nothing and may be null.
class TRV_Picture {
    using Addressing = tarvo::plugin::Addressing;
    using IndexColors = tarvo::plugin::IndexColors;
    using PixelColor = tarvo::plugin::PixelColor;
    using PixelFormat = tarvo::plugin::PixelFormat;
    using StoreMode = tarvo::plugin::StoreMode;
    using WritingOrder = tarvo::plugin::WritingOrder;

public:
    TRV_Picture() = default;
    // Binds a host picture or, with `asMask`, its mask, which the host makes if there is none.
    TRV_Picture(REALpictureStruct* picture, bool asMask);
    // Binds a client picture's image or mask: that of its host picture if it has one, else its own memory.
    TRV_Picture(const TRV_ClientPicture_Data* data, bool asMask);
    // Makes and binds a new host picture. With `handOver` it outlives this object, without it goes with it.
    TRV_Picture(long width, long height, int depth, bool handOver);
    // Binds the image of another, or its mask. The two are locked independently.
    TRV_Picture(const TRV_Picture& other, bool asMask);
    // Binds and locks a pixel map, such as a screen's.
    explicit TRV_Picture(PixMap** pixMap);
    ~TRV_Picture();
    TRV_Picture(const TRV_Picture&) = delete;
    TRV_Picture& operator=(const TRV_Picture&) = delete;

    bool SetREALPicture(REALpictureStruct* picture, bool asMask);
    bool SetNewPicture(long width, long height, int depth, bool handOver);

    bool Lock();
    bool Unlock();
    // Unlocks the image and unbinds it.
    void Release();

    // Whether the image has a mask. None is made.
    bool HasMask() const;

    // The host picture that is bound; null for client memory and pixel maps.
    REALpictureStruct* picture() const { return picture_; }
    bool isMask() const { return isMask_; }
    bool isLocked() const { return isLocked_; }
    // The size in pixels. It is 0 while unlocked, and so is the rest of the geometry.
    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    // Bits of a stored pixel.
    std::int32_t depth() const { return depth_; }
    // Bytes of a stored pixel at the depths 8, 16, 24 and 32; 0 at any other depth.
    std::int32_t bytesPerPixel() const { return bytesPerPixel_; }
    // The depth where it is 1, 2 or 4; 0 at any other depth.
    std::int32_t bitsPerPixel() const { return bitsPerPixel_; }
    std::int32_t rowBytes() const { return rowBytes_; }
    std::uint8_t* baseAddress() const { return baseAddress_; }
    bool hasResolution() const { return hasResolution_; }
    // Dots per inch; -1 while unknown, 0 once something has been released.
    std::int32_t hRes() const { return hRes_; }
    std::int32_t vRes() const { return vRes_; }

    // The address of a row's first byte; null where there are no pixels.
    std::uint8_t* row_start(long row) const;

    // Read and write a pixel as 0x00RRGGBB; at 32 bits the top byte is read and written too.
    unsigned long GetPixel(const void* address, const char* caller) const;
    // The same for a given depth, which may be 1: `bit` then chooses a bit of the byte, 0 the most significant.
    unsigned long GetPixel(const void* address, long bit, long depth, const char* caller) const;
    unsigned long GetPixel(long row, long column, const char* caller) const;
    void SetPixel(void* address, unsigned long color, const char* caller);
    void SetPixel(void* address, long bit, unsigned long color, long depth, const char* caller);
    void SetPixel(long row, long column, unsigned long color, const char* caller);

    // Read and write a run of one row, each pixel as the accessor by row and column does.
    void get_pixels(long row, long column, std::span<PixelColor> colors, const char* caller) const;
    void set_pixels(long row, long column, std::span<const PixelColor> colors, const char* caller);
    // The address of a stored pixel if the pixels of its row are 32-bit words side by side; else null.
    std::uint8_t* words_at(long row, long column) const;
    // The mode in which the pixels of this picture are written.
    StoreMode store_mode(WritingOrder order = WritingOrder::rows) const {
        return tarvo::plugin::store_mode_for(std::int64_t{rowBytes_} * height_, order);
    }
    // Asks for the memory of a run of one row that will be read soon. Walks down columns do; only time depends on it.
    void prefetch(long row, long column, std::size_t count) const;
    // Read and write a run of one row, each pixel as the bit-addressed accessor does. From one pixel to the next the
    // address and the bit move on by the bits of a pixel.
    void get_pixel_bits(long row, long column, std::span<PixelColor> colors, const char* caller) const;
    void set_pixel_bits(long row, long column, std::span<const PixelColor> colors, const char* caller);

    // Whether whole-pixel access reads the same red, green and blue from a run of one row here and in another picture.
    bool same_colors(const TRV_Picture& other, long row, long column, std::size_t count, const char* caller) const;

    // Copies `count` pixels from this image to another and moves both addresses behind the last one. Between equal
    // depths of 16 or 32 bits the stored values are copied, between any others the colours.
    void CopyPixels(TRV_Picture& destination, void** source, void** target, long count, const char* caller) const;
    // The same for masks, whose grey levels have their own rules of conversion between 8, 16 and 32 bits.
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
    PixelFormat format_at(long depth, Addressing addressing) const;

    REALpictureStruct* picture_ = nullptr;
    REALpictureDescription description_{};
    bool holdsDescription_ = false;  // the host granted the lock of `description_`
    bool ownsPicture_ = false;       // one reference to `picture_` is dropped when it is unbound
    bool isRefused_ = false;         // `picture_` is of a kind that operations do not take
    bool isMask_ = false;
    bool isLocked_ = false;
    bool fromPixMap_ = false;
    const TRV_ClientPicture_Data* clientData_ = nullptr;
    std::uint8_t* clientMemory_ = nullptr;  // held while locked
    PixMap** pixMap_ = nullptr;
    std::int32_t newWidth_ = 0, newHeight_ = 0;  // the size that was asked for, of a new picture

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

    PixelFormat format_ = PixelFormat::opaque;  // by which whole pixels are read and written
    IndexColors indexColors_{};                 // all black without a colour table
};

// Inline, because walks down columns ask for a row's address every few pixels.
inline std::uint8_t* TRV_Picture::row_start(long row) const {
    if (rowTableSource_) return rowTableSource_->rows ? rowTableSource_->rows[row] : nullptr;
    return baseAddress_ ? baseAddress_ + static_cast<std::ptrdiff_t>(row) * rowBytes_ : nullptr;
}

inline std::uint8_t* TRV_Picture::words_at(long row, long column) const {
    std::uint8_t* const start = row_start(row);
    if (format_ != PixelFormat::xrgb32 || !start) return nullptr;
    return start + static_cast<std::ptrdiff_t>(column) * tarvo::plugin::XRgb32::kBytes;
}

namespace tarvo::plugin {

// Copy the pixels, or the mask levels, that both images have, counted from the top left corner.
void copy_rows(const TRV_Picture& source, TRV_Picture& destination, const char* caller);
void copy_mask_rows(const TRV_Picture& source, TRV_Picture& destination, const char* caller);

}  // namespace tarvo::plugin
