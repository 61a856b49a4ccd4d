#pragma once

// What a picture's file carries besides pixels. It travels from file to file as bytes; only what a changed picture
// makes untrue is changed in it.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "byte_sink.h"

namespace tarvo::host {

// Pixels for a length, along and across the rows.
struct Resolution {
    enum class Unit : std::uint8_t { none, inch, centimetre, metre };  // none: only their ratio is known
    double x, y;
    Unit unit;

    Resolution in(Unit wanted) const;
    friend bool operator==(const Resolution&, const Resolution&) = default;
};

// How a JPEG file was made, for one that is made of it.
struct JpegMaking {
    int quality = 92;  // 1 to 100
    // Pixels for a sample of colour, along and across the rows: 1, 2 or 4.
    int across = 1, down = 1;

    friend bool operator==(const JpegMaking&, const JpegMaking&) = default;
};

struct Metadata {
    Bytes exif = {};           // from its TIFF header on
    Bytes xmp = {};            // the packet
    Bytes xmp_extension = {};  // the rest of a packet that a JPEG file has in two: a document that the packet names
    Bytes iptc = {};           // image resources, one of which has IPTC's records: see image_resources.h
    Bytes icc = {};
    std::optional<Resolution> resolution = {};
};

// More of one kind is left out.
inline constexpr std::size_t kMostMetadataBytes = std::size_t{8} << 20;

// What a file loses on its way in or out.
struct Loss {
    enum class Kind : std::uint8_t { metadata, profile, pages, draft };
    Kind kind;
    std::string words;  // a sentence that goes behind the file's name: "has no room for XMP: it is left out"
};
using Losses = std::vector<Loss>;

// That more was there than is kept.
Loss too_much_metadata();

// How many bytes of each kind a format can hold; 0: the format has no place for it.
struct MetadataRoom {
    std::size_t exif = 0, xmp = 0, xmp_extension = 0, iptc = 0, icc = 0;
    std::optional<double> most_resolution = {};  // in the unit that the format counts in
    Resolution::Unit resolution_unit = Resolution::Unit::inch;
    bool exif_is_merged = false;  // with the format's own directory, so that it has to be one
};

// Returns the resolution that an Exif block tells, if it does.
std::optional<Resolution> resolution_of_exif(const Bytes& block);

// The kinds, to be added up.
inline constexpr int kExif = 1, kXmp = 2, kIptc = 4, kIcc = 8, kResolution = 16, kAllMetadata = 31;

// Returns what is left without those kinds.
Metadata without(Metadata metadata, std::uint32_t kinds);

// Makes metadata true of a picture that is shown upright and of that size: orientation, sizes, and without the preview,
// which nobody has changed with the picture.
void make_true(Metadata& metadata, int width, int height);

// Returns what of it a file can hold whose pixels are greys, or colours. Tells what it can't.
Metadata fitting(Metadata metadata, const MetadataRoom& room, bool grey, Losses& losses);

}  // namespace tarvo::host
