#include "picture_value.h"

#include <algorithm>

namespace tarvo::host {

PictureValue PictureValue::of(const Picture& picture) {
    PictureValue value = {picture.options(), picture.shared_pixels(), nullptr};
    if (const auto* const mask = dynamic_cast<const Picture*>(picture.mask().get()))
        value.mask = std::make_shared<const PictureValue>(of(*mask));
    return value;
}

PictureValue PictureValue::copy() const {
    PictureValue copied = {options, SharedPixels::of_size(pixels.size), nullptr};
    std::copy_n(pixels.bytes.get(), pixels.size, copied.pixels.bytes.get());
    if (mask) copied.mask = std::make_shared<const PictureValue>(mask->copy());
    return copied;
}

}  // namespace tarvo::host
