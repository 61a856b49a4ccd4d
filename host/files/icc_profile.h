#pragma once

#include <cstdint>
#include <span>

namespace tarvo::host {

// What colours an ICC profile is of, as far as its header tells.
enum class ProfileOf : std::uint8_t { nothing_known, grey, rgb, inks };

// A profile that is cut short or has no header of one is of nothing known.
ProfileOf colors_of_profile(std::span<const std::uint8_t> profile);

}  // namespace tarvo::host
