#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "image.h"

namespace tarvo::host {

// The palette of an image, made of its colours in the order in which they come.
class ColorIndices {
public:
    // Returns false for a colour that the palette has no room for.
    bool add(const Rgba& color) {
        const std::size_t count = indices_.size();
        const auto [place, is_new] = indices_.try_emplace(word(color), static_cast<std::uint8_t>(count));
        if (is_new && count < palette_.size()) palette_[count] = color;
        return !is_new || count < palette_.size();
    }
    std::size_t size() const { return indices_.size(); }
    const Palette& palette() const { return palette_; }
    // Returns the index of a colour that was added.
    std::uint8_t operator[](const Rgba& color) const { return indices_.find(word(color))->second; }

private:
    static std::uint32_t word(const Rgba& color) {
        return std::uint32_t{color.alpha} << 24 | std::uint32_t{color.red} << 16 | std::uint32_t{color.green} << 8 |
               color.blue;
    }

    Palette palette_ = {};
    std::unordered_map<std::uint32_t, std::uint8_t> indices_;
};

}  // namespace tarvo::host
