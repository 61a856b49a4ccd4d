#pragma once

// The host's pictures as encoders take them.

#include "color_indices.h"
#include "host.h"
#include "image.h"

namespace tarvo::host {

// Gives a picture's pixels to an encoder, in colours as the host draws them.
//
// A picture of up to 8 bits is an indexed image, a deeper one RGB, and one with a mask RGBA, opaque beyond a mask that
// is smaller than itself. The last two become what `like` is if that loses nothing: greys of as many bits, or of 8;
// greys and alpha; or a palette of no more bits than its colours need.
class PictureSource final : public PixelSource {
public:
    // Throws FileError for a picture that has no pixels, or pixels of an unknown depth.
    explicit PictureSource(const Picture& picture, const FilePixels* like = nullptr);

    bool has_mask() const { return mask_ != nullptr; }
    const ImageForm& form() const override { return form_; }
    void read(int y, std::uint8_t* row) const noexcept override;

private:
    enum class Indices { stored, greys, palette };

    template <class Take>
    bool take_row(int y, Take take) const;
    template <class Take>
    bool take_all(Take take) const;
    void take_stored_indices();
    void become_grey(int bits);
    void become_palette();
    std::uint8_t* put(const Rgba& color, std::uint8_t* out) const noexcept;

    const Picture& picture_;
    const Picture* mask_ = nullptr;
    ImageForm form_;
    Indices indices_ = Indices::stored;  // those of an indexed image
    ColorIndices colors_;                // of the palette that it became
};

}  // namespace tarvo::host
