#pragma once

#include <cstdint>
#include <span>

namespace tarvo::fuzz {

// Reads a picture file, at both depths, writes what came in every format, and reads that again: what a format keeps
// must be what it was. Stops at a promise that is not kept.
void check_picture_file(std::span<const std::uint8_t> file);

}  // namespace tarvo::fuzz
