#pragma once

// Metadata in TIFF files. Theirs is Exif's own form, but spread over the file: a block of it is gathered here.

#include "byte_source.h"
#include "metadata.h"

namespace tarvo::host {

inline constexpr MetadataRoom kTiffRoom = {.exif = kMostMetadataBytes,
                                           .xmp = kMostMetadataBytes,
                                           .iptc = kMostMetadataBytes,
                                           .icc = kMostMetadataBytes,
                                           .most_resolution = 65535,
                                           .exif_is_merged = true};

// Returns what the first page of a file tells of itself, and what is lost of it and of other pages. In an Exif block
// that is made of it, what cameras tell stands where the file has it, if that is near its start: makers' notes point to
// places. Otherwise all comes one behind the other.
Metadata metadata_of_tiff(const BytePlaces& file, Losses& losses);

// The colour profile alone, which is needed before the pixels.
Bytes profile_of_tiff(const BytePlaces& file);

}  // namespace tarvo::host
