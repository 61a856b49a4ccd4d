#pragma once

// Pictures between calls.

#include <memory>

#include "object.h"

namespace tarvo::host {

// A picture outside of any host: what one call leaves and the next ones take, on whatever threads. Nobody writes to its
// pixels, not even the operation that changes its picture in place: for that, hand in a copy.
struct PictureValue {
    PictureOptions options;
    SharedPixels pixels;
    std::shared_ptr<const PictureValue> mask;  // null if there is none

    // What a picture that nobody writes to any more has, and its mask. Without pixels for a picture that has none in
    // one block.
    static PictureValue of(const Picture& picture);
    // The same with pixels of its own; so also the mask. Throws std::bad_alloc.
    PictureValue copy() const;
};

}  // namespace tarvo::host
