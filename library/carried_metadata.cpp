// What pictures carry, for programs.

#include <cmath>
#include <span>
#include <string>

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

void put(host::Metadata& metadata, tarvo_metadata kind, std::span<const std::uint8_t> bytes) {
    const host::Bytes copy(bytes.begin(), bytes.end());
    switch (kind) {
        case TARVO_METADATA_EXIF: metadata.exif = copy; return;
        case TARVO_METADATA_XMP:
            metadata.xmp = copy;
            metadata.xmp_extension.clear();
            return;
        case TARVO_METADATA_IPTC: metadata.iptc = copy.empty() ? copy : host::resources_of(copy); return;
        case TARVO_METADATA_ICC: metadata.icc = copy; return;
        case TARVO_METADATA_RESOLUTION:
        case TARVO_METADATA_ALL: break;
    }
    throw wrong_use("there are no bytes of kind " + std::to_string(kind));
}

// The same pixels with what `change(metadata)` makes of a copy of what they carried.
template <class Change>
tarvo_picture* with_changed(const tarvo_picture& picture, Change change) {
    auto carried = std::make_shared<host::Carried>(picture.carried ? *picture.carried : host::Carried{});
    change(carried->metadata);
    return new tarvo_picture(picture.value, std::move(carried));
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

tarvo_status tarvo_picture_with_metadata(const tarvo_picture* picture, tarvo_metadata kind, const void* bytes,
                                         size_t length, tarvo_picture** made, tarvo_error** error) {
    if (made) *made = nullptr;
    return library::guarded(error, [&] {
        library::require(picture, "picture");
        library::require(made, "made");
        if (length != 0) library::require(bytes, "bytes");
        if (length > host::kMostMetadataBytes)
            throw library::Failure(TARVO_LIMIT, std::to_string(length) + " bytes of metadata: there may be " +
                                                    std::to_string(host::kMostMetadataBytes));
        *made = library::with_changed(*picture, [&](host::Metadata& metadata) {
            library::put(metadata, kind, {static_cast<const std::uint8_t*>(bytes), length});
        });
    });
}

tarvo_status tarvo_picture_with_resolution(const tarvo_picture* picture, double x, double y, tarvo_picture** made,
                                           tarvo_error** error) {
    if (made) *made = nullptr;
    return library::guarded(error, [&] {
        library::require(picture, "picture");
        library::require(made, "made");
        const bool none = x == 0 && y == 0;
        if (!none && !(std::isfinite(x) && std::isfinite(y) && x > 0 && y > 0))
            throw library::wrong_use("a resolution has two numbers above 0, or is 0 twice");
        *made = library::with_changed(*picture, [&](host::Metadata& metadata) {
            metadata.resolution.reset();
            if (!none) metadata.resolution = {x, y, host::Resolution::Unit::inch};
        });
    });
}
