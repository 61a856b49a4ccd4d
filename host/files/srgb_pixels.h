#pragma once

// Colours by their profile, as sRGB's.

#include <cstdint>
#include <memory>
#include <span>

#include "carried.h"
#include "image.h"

namespace tarvo::host {

// Stands between a decoder and the target of its pixels, and passes them on in the colours of sRGB: by the profile,
// relative colorimetric with black point compensation. Without a profile, or with one that cannot be used, colours are
// taken for sRGB's, and inks converted plainly. What is carried has no profile any more.
class SrgbPixels final : public PixelTarget {
public:
    explicit SrgbPixels(PixelTarget& to);
    ~SrgbPixels() override;

    void profile(std::span<const std::uint8_t> bytes) override;
    InkConversion ink_conversion(bool inverted) override;
    void check_memory(std::uint64_t bytes, const std::string& what) override { to_.check_memory(bytes, what); }
    bool takes_draft(int whole_width, int whole_height, int width, int height) override {
        return to_.takes_draft(whole_width, whole_height, width, height);
    }
    void begin(const ImageForm& form, std::uint64_t working_bytes) override;
    void put(const PixelRun& run) noexcept override;
    void turn(int orientation) override { to_.turn(orientation); }
    void carry(Carried&& carried) override;

private:
    class Transform;

    void convert_palette(ImageForm& form);

    PixelTarget& to_;
    Bytes profile_;
    std::shared_ptr<const Transform> transform_;  // null when there is nothing to convert
    bool greys_ = false;                          // it takes greys, and colours else
    Layout layout_ = Layout::rgb;
    Palette greys_table_ = {};
    Bytes run_;
    Losses losses_;
};

}  // namespace tarvo::host
