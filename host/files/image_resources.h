#pragma once

// The list of image resources in which JPEG, PNG and TIFF files hold IPTC's records: "8BIM", a number, a name, bytes.

#include <cstdint>
#include <span>

#include "byte_sink.h"

namespace tarvo::host {

// Returns the list without previews, and without what files have places of their own for (Exif, XMP, the colour
// profile). Behind a resource that is kept, bytes from which on the list can't be read stay as they are.
Bytes own_resources(std::span<const std::uint8_t> list);

// Returns IPTC's records of a list; none if it has none.
std::span<const std::uint8_t> iptc_records(std::span<const std::uint8_t> list);

// Returns the list without them.
Bytes without_records(std::span<const std::uint8_t> list);

// Returns a list that has only these records.
Bytes resources_of(std::span<const std::uint8_t> records);

// Returns the list, as `own_resources` does, of bytes that are one, with the mark of JPEG's segment or without, or are
// records alone. Nothing if they are neither.
Bytes resources_in(std::span<const std::uint8_t> bytes);

}  // namespace tarvo::host
