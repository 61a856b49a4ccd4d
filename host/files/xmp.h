#pragma once

// XMP packets: text in XML, of which only what a changed picture makes untrue is changed.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "byte_sink.h"

namespace tarvo::host {

// Puts numbers right that tell of the stored pixels, wherever the packet has them: the orientation, sizes.
void make_xmp_true(Bytes& packet, int width, int height);

// Returns the 32 digits that name the extension of a packet; empty if there is none.
std::string_view name_of_extension(std::span<const std::uint8_t> packet);

// Returns a packet that has what its extension has besides, and no longer names it. Empty if they are not written in
// the usual way, of which this asks no more than it has to.
Bytes with_extension(std::span<const std::uint8_t> packet, std::span<const std::uint8_t> extension);

}  // namespace tarvo::host
