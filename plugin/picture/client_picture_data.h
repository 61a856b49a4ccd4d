#pragma once

#include <cstdint>

#include "real_interface.h"

// The plugin data of a TRV_ClientPicture, whose image is in a host picture (`pic`) or in memory of its own:
//
//     |<- up to 15 ->|<------ rowBytes ------>|<------ rowBytes ------>| ...
//     ^ buffer       ^ pixels: the next multiple of 16
struct TRV_ClientPicture_Data {
    std::int32_t width;
    std::int32_t height;
    std::int32_t depth;    // own memory: 16, 24 or 32
    std::uint8_t* buffer;  // the client memory that `pixels` lies in
    std::uint8_t* pixels;  // null when the image is in `pic`
    std::int32_t rowBytes;
    std::int32_t hasMask;
    std::int32_t maskDepth;    // own memory: 8
    std::uint8_t* maskPixels;  // client memory; one grey byte for each pixel
    std::int32_t maskRowBytes;
    REALpictureStruct* pic;  // with a reference of its own
};
static_assert(sizeof(void*) != 4 || sizeof(TRV_ClientPicture_Data) == 44);
