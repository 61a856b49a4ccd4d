#pragma once

// Metadata in the application segments of JPEG files.

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "metadata.h"

namespace tarvo::host {

inline constexpr MetadataRoom kJpegRoom = {.exif = 65533 - 6,
                                           .xmp = 65533 - 29,
                                           .xmp_extension = kMostMetadataBytes,
                                           .iptc = kMostMetadataBytes,
                                           .icc = kMostMetadataBytes,
                                           .most_resolution = 65535};

// Collects metadata from a file's segments, as they come.
class JpegMarkers {
public:
    // Takes the contents of the segment APP`number`. Others than those of metadata are ignored.
    void add(int number, std::span<const std::uint8_t> contents);

    // The first Exif block so far; the orientation is needed before the pixels come.
    std::span<const std::uint8_t> exif() const { return found_.exif; }

    // The colour profile, if all of it has come.
    Bytes profile() const;

    // To be called after the last segment. Metadata that is not there whole is left out, and told.
    Metadata finish(Losses& losses);

private:
    struct Part {
        std::size_t place;  // in the whole
        Bytes bytes;
    };

    bool take_room(std::size_t& taken, std::size_t bytes);
    void add_profile_part(std::span<const std::uint8_t> part);
    void add_extension_part(std::span<const std::uint8_t> part);
    Bytes whole_extension() const;

    Metadata found_;
    Bytes resources_;
    std::map<int, Bytes> profile_;  // by number
    int profile_parts_ = 0;         // as the file says
    std::vector<Part> extension_;
    std::size_t profile_bytes_ = 0, extension_bytes_ = 0;
    bool too_large_ = false;
};

struct JpegMarker {
    int number;  // of APP
    Bytes contents;
};

// Metadata that fits, as segments, but for the resolution, which JFIF's own segment has.
std::vector<JpegMarker> markers_of(const Metadata& metadata);

}  // namespace tarvo::host
