#include "icc_profile.h"

#include "big_endian.h"
#include "byte_text.h"

namespace tarvo::host {

ProfileOf colors_of_profile(std::span<const std::uint8_t> profile) {
    constexpr std::size_t kProfileHeader = 128, kTagBytes = 12, kColorsPlace = 16, kMarkPlace = 36;
    if (profile.size() < kProfileHeader + 4 || big_endian(profile, 0, 4) > profile.size())
        return ProfileOf::nothing_known;
    if (as_text(profile.subspan(kMarkPlace, 4)) != "acsp") return ProfileOf::nothing_known;
    // A table of so many tags, each with its data within the profile.
    const std::size_t tags = big_endian(profile, kProfileHeader, 4);
    if (tags > (profile.size() - kProfileHeader - 4) / kTagBytes) return ProfileOf::nothing_known;
    for (std::size_t place = kProfileHeader + 4, i = 0; i < tags; ++i, place += kTagBytes) {
        const std::size_t data = big_endian(profile, place + 4, 4), size = big_endian(profile, place + 8, 4);
        if (data > profile.size() || size > profile.size() - data) return ProfileOf::nothing_known;
    }
    const std::string_view colors = as_text(profile.subspan(kColorsPlace, 4));
    if (colors == "RGB ") return ProfileOf::rgb;
    if (colors == "GRAY") return ProfileOf::grey;
    if (colors == "CMYK") return ProfileOf::inks;
    return ProfileOf::nothing_known;
}

}  // namespace tarvo::host
