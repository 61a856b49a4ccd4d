#pragma once

// Where an overlay lies on a source picture.

#include <algorithm>
#include <cstdint>

#include "picture.h"
#include "region.h"

namespace tarvo::plugin {

struct Placement {
    std::int32_t left, top;  // of the overlay's first pixel, on the source
    Region covered;          // the part of the source under the overlay; empty when they do not meet
};

inline Region common_region(const Region& a, const Region& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

// The overlay may lie anywhere, even where its far edges do not fit in 32 bits.
inline Placement placement_of(const TRV_Picture& overlay, std::int32_t left, std::int32_t top,
                              const TRV_Picture& source) {
    const auto last_covered = [](std::int32_t first, std::int32_t size, std::int32_t limit) {
        const std::int64_t last = std::int64_t{first} + size - 1;
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(last, -1, limit - 1));
    };
    return {left,
            top,
            {std::max(left, 0), std::max(top, 0), last_covered(left, overlay.width(), source.width()),
             last_covered(top, overlay.height(), source.height())}};
}

}  // namespace tarvo::plugin
