#include "srgb_pixels.h"

#include <lcms2.h>

#include <memory>
#include <new>
#include <utility>

#include "exif.h"
#include "file_error.h"
#include "icc_profile.h"

namespace tarvo::host {

namespace {

// What of lcms2 has to be given back.
template <class Handle, auto give_back>
struct Giver {
    void operator()(Handle* handle) const { give_back(handle); }
};
using Context =
    std::unique_ptr<std::remove_pointer_t<cmsContext>, Giver<std::remove_pointer_t<cmsContext>, cmsDeleteContext>>;
using Profile = std::unique_ptr<void, Giver<void, cmsCloseProfile>>;
using Handle = std::unique_ptr<void, Giver<void, cmsDeleteTransform>>;

}  // namespace

// From one kind of pixels to those of sRGB.
class SrgbPixels::Transform {
public:
    // Null when the profile cannot be used for such pixels.
    static std::shared_ptr<const Transform> of(const Bytes& bytes, cmsUInt32Number from, cmsUInt32Number to) {
        auto made = std::make_shared<Transform>();
        made->context_.reset(cmsCreateContext(nullptr, nullptr));
        if (!made->context_) throw std::bad_alloc();
        const Profile profile(
            cmsOpenProfileFromMemTHR(made->context_.get(), bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
        const Profile srgb(cmsCreate_sRGBProfileTHR(made->context_.get()));
        if (!srgb) throw std::bad_alloc();
        if (!profile) return nullptr;
        made->handle_.reset(cmsCreateTransformTHR(made->context_.get(), profile.get(), from, srgb.get(), to,
                                                  INTENT_RELATIVE_COLORIMETRIC,
                                                  cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_COPY_ALPHA |
                                                      cmsFLAGS_NOCACHE));  // without the cache it may be shared
        return made->handle_ ? made : nullptr;
    }

    void convert(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const {
        cmsDoTransform(handle_.get(), from, to, static_cast<cmsUInt32Number>(count));
    }

private:
    Context context_;
    Handle handle_;
};

SrgbPixels::SrgbPixels(PixelTarget& to) : to_(to) {}
SrgbPixels::~SrgbPixels() = default;

void SrgbPixels::profile(std::span<const std::uint8_t> bytes) { profile_.assign(bytes.begin(), bytes.end()); }

InkConversion SrgbPixels::ink_conversion(bool inverted) {
    const bool usable = colors_of_profile(profile_) == ProfileOf::inks;
    auto transform = usable ? Transform::of(profile_, inverted ? TYPE_CMYK_8_REV : TYPE_CMYK_8, TYPE_RGB_8) : nullptr;
    if (!transform) return {};
    return [transform](const std::uint8_t* ink, int count, std::uint8_t* rgb) {
        transform->convert(ink, rgb, static_cast<std::size_t>(count));
    };
}

void SrgbPixels::begin(const ImageForm& form, std::uint64_t working_bytes) {
    ImageForm converted = form;
    const ProfileOf colors = colors_of_profile(profile_);
    const bool inks = form.file.colors == FilePixels::Colors::inks;
    greys_ = colors == ProfileOf::grey && is_grey(form);
    if (greys_)
        transform_ = Transform::of(profile_, TYPE_GRAY_8, TYPE_RGB_8);
    else if (colors == ProfileOf::rgb && !inks)
        transform_ = form.layout == Layout::rgba ? Transform::of(profile_, TYPE_RGBA_8, TYPE_RGBA_8)
                                                 : Transform::of(profile_, TYPE_RGB_8, TYPE_RGB_8);
    layout_ = form.layout;
    if (transform_) convert_palette(converted);
    if (inks && colors != ProfileOf::inks)
        losses_.push_back(
            {Loss::Kind::profile, "has inks without a color profile of theirs: they are converted plainly"});
    else if (!inks && !profile_.empty() && !transform_)
        losses_.push_back(
            {Loss::Kind::profile, "has a color profile that cannot be used: colors are taken for sRGB's"});
    run_.resize(form.row_bytes());
    to_.begin(converted, working_bytes);
}

// The palette of an indexed image, and a table of greys that have alpha beside them.
void SrgbPixels::convert_palette(ImageForm& form) {
    const auto convert = [&](Rgba& color) {
        const std::uint8_t given[] = {color.red, color.green, color.blue};
        std::uint8_t made[3];
        transform_->convert(given, made, 1);
        color.red = greys_ ? made[1] : made[0];
        color.green = made[1];
        color.blue = greys_ ? made[1] : made[2];
    };
    if (layout_ == Layout::indexed)
        for (Rgba& color : form.palette) convert(color);
    if (layout_ != Layout::grey_alpha) return;
    greys_table_ = grey_palette(8);
    for (Rgba& grey : greys_table_) convert(grey);
}

void SrgbPixels::put(const PixelRun& run) noexcept {
    if (!transform_ || layout_ == Layout::indexed) return to_.put(run);
    const auto count = static_cast<std::size_t>(run.count);
    PixelRun converted = run;
    converted.pixels = run_.data();
    if (layout_ == Layout::grey_alpha) {
        for (std::size_t i = 0; i < 2 * count; i += 2) {
            run_[i] = greys_table_[run.pixels[i]].green;
            run_[i + 1] = run.pixels[i + 1];
        }
    } else {
        transform_->convert(run.pixels, run_.data(), count);
    }
    to_.put(converted);
}

void SrgbPixels::carry(Carried&& carried) {
    if (!carried.metadata.icc.empty()) make_exif_srgb(carried.metadata.exif);
    carried.metadata.icc.clear();
    carried.losses.insert(carried.losses.end(), losses_.begin(), losses_.end());
    to_.carry(std::move(carried));
}

}  // namespace tarvo::host
