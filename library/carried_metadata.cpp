// What pictures carry, for programs.

#include <span>

#include "image_resources.h"
#include "kept_picture.h"
#include "metadata.h"

namespace tarvo::library {
namespace {

static_assert(TARVO_METADATA_EXIF == host::kExif && TARVO_METADATA_XMP == host::kXmp &&
              TARVO_METADATA_IPTC == host::kIptc && TARVO_METADATA_ICC == host::kIcc &&
              TARVO_METADATA_RESOLUTION == host::kResolution && TARVO_METADATA_ALL == host::kAllMetadata);

std::span<const std::uint8_t> bytes_of(const host::Metadata& metadata, tarvo_metadata kind) {
    switch (kind) {
        case TARVO_METADATA_EXIF: return metadata.exif;
        case TARVO_METADATA_XMP: return metadata.xmp;
        case TARVO_METADATA_IPTC: return host::iptc_records(metadata.iptc);
        case TARVO_METADATA_ICC: return metadata.icc;
        case TARVO_METADATA_RESOLUTION:
        case TARVO_METADATA_ALL: break;
    }
    return {};
}

}  // namespace
}  // namespace tarvo::library

using namespace tarvo;

const uint8_t* tarvo_picture_metadata(const tarvo_picture* picture, tarvo_metadata kind, size_t* length) {
    std::span<const std::uint8_t> bytes;
    if (picture && picture->carried) bytes = library::bytes_of(picture->carried->metadata, kind);
    if (length) *length = bytes.size();
    return bytes.empty() ? nullptr : bytes.data();
}

int tarvo_picture_resolution(const tarvo_picture* picture, double* x, double* y) {
    using Unit = host::Resolution::Unit;
    host::Resolution told{0, 0, Unit::none};
    if (picture && picture->carried && picture->carried->metadata.resolution)
        told = *picture->carried->metadata.resolution;
    const bool known = told.unit != Unit::none;
    told = told.in(Unit::inch);
    if (x) *x = known ? told.x : 0;
    if (y) *y = known ? told.y : 0;
    return known;
}
