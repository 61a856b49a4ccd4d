#pragma once

// Pictures as strings of bytes, to be kept in files and databases, and back.
//
//     offset       bytes     big-endian
//     0            4         width W
//     4            4         height H
//     8            2         depth of the picture
//     10           1         1 when there is a mask plane, else 0
//     11           3 W H     red, green and blue of each pixel, row after row
//     11 + 3 W H   W H       red of each mask pixel, if there is a mask plane

#include <cstddef>
#include <cstdint>

#include "picture.h"
#include "real_interface.h"

namespace tarvo::plugin {

// What a string begins with.
struct PictureStringHeader {
    static constexpr std::size_t kBytes = 11;

    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t depth = 0;
    bool hasMask = false;

    static PictureStringHeader read(const std::uint8_t* bytes);
    void write(std::uint8_t* bytes) const;

    // Where the mask plane begins, if there is one, and where the string ends. For any width and height these are
    // right, or larger than any string is long.
    std::uint64_t mask_offset() const;
    std::uint64_t length() const;
};

}  // namespace tarvo::plugin

// Returns a new string; null without an error code when the picture cannot be locked or the string would be too long.
REALstringStruct* TRV_ConvertToString(REALpictureStruct* p);
// Returns a new picture; null without an error code when the string is no picture's, or of one that the host cannot
// make.
REALpictureStruct* TRV_ConvertToPicture(REALstringStruct* s);

// The kernels. They copy between a locked picture or mask and the plane of a string, which is that of a picture of
// `width` x `height`. What only one of the two has is left alone.
void PrivWriteColorPlane(const TRV_Picture& source, std::uint8_t* plane, std::int32_t width, std::int32_t height);
void PrivReadColorPlane(const std::uint8_t* plane, std::int32_t width, std::int32_t height, TRV_Picture& result);
void PrivWriteMaskPlane(const TRV_Picture& mask, std::uint8_t* plane, std::int32_t width, std::int32_t height);
void PrivReadMaskPlane(const std::uint8_t* plane, std::int32_t width, std::int32_t height, TRV_Picture& mask);
