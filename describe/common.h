#pragma once

// Arguments and errors that many operations share.

#include "operation.h"

namespace tarvo::describe {

inline constexpr Argument kRect{
    .name = "rect", .text = "the region, clipped to the picture; nil for all of it", .left_out = "nil"};
inline constexpr Argument kMask{.name = "mask",
                                .text = "a picture of the source's size, of 1, 2, 4, 8, 16, 24 or 32 bits"};
inline constexpr Argument kYield{.name = "yield",
                                 .text = "give the host control about every so many pixels; 0 or below: never",
                                 .unit = "pixels",
                                 .left_out = "0"};
inline constexpr Argument kIdleYield{
    .name = "yield", .text = "accepted; the host never gets control", .unit = "pixels", .left_out = "0"};
inline constexpr Argument kAsPicture{
    .name = "as_picture", .text = "back the resulting client picture by a host picture", .left_out = "false"};

inline constexpr Error kSourceNil{2, "the source is nil"};
inline constexpr Error kSourceLock{4, "the source cannot be locked"};
inline constexpr Error kResult{6, "the result cannot be made or locked"};
inline constexpr Error kClientUnpainted{
    6, "the resulting client picture cannot be locked: it is returned, unpainted", {}, Gives::result, forms_with("cp")};
inline constexpr Error kMaskNil{8, "the mask is nil"};
inline constexpr Error kMaskLock{9, "the mask cannot be locked"};
inline constexpr Error kMaskSize{10, "the mask has another size than the source"};
inline constexpr Error kMaskDepth{
    11, "the mask has a depth that pictures do not have (also after 10, whose code it replaces)"};
inline constexpr Error kRegionEmpty{38, "the region is empty"};
constexpr Error mask_not_copied(Forms forms = kEveryForm) {
    return {9, "the source's mask cannot be copied: the result is returned without", {}, Gives::result, forms};
}

constexpr Error out_of_range(int code, Text argument) { return {code, {}, argument}; }

inline constexpr Text kCoffee = "docs/pictures/coffee.png";
inline constexpr Text kChelsea = "docs/pictures/chelsea.png";
inline constexpr Text kRocket = "docs/pictures/rocket.png";

}  // namespace tarvo::describe
