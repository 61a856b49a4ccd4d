#include "jpeg_markers.h"

#include <algorithm>
#include <utility>

#include "big_endian.h"
#include "byte_text.h"
#include "image_resources.h"
#include "xmp.h"

namespace tarvo::host {

namespace {

constexpr std::string_view kExifMark{"Exif\0\0", 6};
constexpr std::string_view kXmpMark{"http://ns.adobe.com/xap/1.0/\0", 29};
constexpr std::string_view kExtensionMark{"http://ns.adobe.com/xmp/extension/\0", 35};
constexpr std::string_view kProfileMark{"ICC_PROFILE\0", 12};
constexpr std::string_view kResourcesMark{"Photoshop 3.0\0", 14};

constexpr std::size_t kMostContents = 65533;
constexpr std::size_t kDigitsOfName = 32;
constexpr std::size_t kPartHead = kDigitsOfName + 8;  // then the size of the whole, and the place in it

std::span<const std::uint8_t> piece_of(std::span<const std::uint8_t> bytes, std::size_t place, std::size_t most) {
    return bytes.subspan(place, std::min(most, bytes.size() - place));
}

JpegMarker marker(int number, std::string_view mark) {
    JpegMarker made{number, {}};
    append_text(made.contents, mark);
    return made;
}

void append(Bytes& to, std::span<const std::uint8_t> bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

}  // namespace

static_assert(kJpegRoom.exif == kMostContents - kExifMark.size());
static_assert(kJpegRoom.xmp == kMostContents - kXmpMark.size());
static_assert(kJpegRoom.icc <= 255 * (kMostContents - kProfileMark.size() - 2));

void JpegMarkers::add(int number, std::span<const std::uint8_t> contents) {
    if (number == 1 && take_start(contents, kExifMark)) {
        if (found_.exif.empty()) append(found_.exif, contents);
    } else if (number == 1 && take_start(contents, kXmpMark)) {
        if (found_.xmp.empty()) append(found_.xmp, contents);
    } else if (number == 1 && take_start(contents, kExtensionMark)) {
        add_extension_part(contents);
    } else if (number == 2 && take_start(contents, kProfileMark)) {
        add_profile_part(contents);
    } else if (number == 13 && take_start(contents, kResourcesMark)) {
        std::size_t taken = resources_.size();
        if (take_room(taken, contents.size())) append(resources_, contents);
    }
}

bool JpegMarkers::take_room(std::size_t& taken, std::size_t bytes) {
    const bool fits = bytes <= kMostMetadataBytes - taken;
    if (fits) taken += bytes;
    too_large_ = too_large_ || !fits;
    return fits;
}

void JpegMarkers::add_profile_part(std::span<const std::uint8_t> part) {
    if (part.size() < 2 || !take_room(profile_bytes_, part.size() - 2)) return;
    if (profile_parts_ == 0) profile_parts_ = part[1];
    const auto [place, is_new] = profile_.try_emplace(part[0]);
    if (is_new) append(place->second, part.subspan(2));
}

void JpegMarkers::add_extension_part(std::span<const std::uint8_t> part) {
    if (part.size() < kPartHead || !take_room(extension_bytes_, part.size() - kPartHead)) return;
    extension_.push_back({big_endian(part, kDigitsOfName + 4, 4), {part.begin(), part.end()}});
}

Bytes JpegMarkers::profile() const {
    Bytes whole;
    for (int i = 1; i <= profile_parts_; ++i) {
        const auto part = profile_.find(i);
        if (part == profile_.end()) return {};
        append(whole, part->second);
    }
    return whole;
}

// The parts that the packet names, in any order.
Bytes JpegMarkers::whole_extension() const {
    const std::string_view name = name_of_extension(found_.xmp);
    std::vector<const Part*> parts;
    for (const Part& part : extension_)
        if (!name.empty() && as_text(part.bytes).starts_with(name)) parts.push_back(&part);
    std::ranges::sort(parts, {}, &Part::place);
    Bytes whole;
    for (const Part* part : parts) {
        if (part->place != whole.size()) return {};
        append(whole, std::span(part->bytes).subspan(kPartHead));
    }
    if (!parts.empty() && big_endian(parts[0]->bytes, kDigitsOfName, 4) != whole.size()) return {};
    return whole;
}

Metadata JpegMarkers::finish(Losses& losses) {
    found_.icc = profile();
    found_.xmp_extension = whole_extension();
    found_.iptc = resources_in(resources_);
    if (!profile_.empty() && found_.icc.empty())
        losses.push_back({Loss::Kind::profile, "has a color profile of which parts are missing: it is left out"});
    if (!extension_.empty() && found_.xmp_extension.empty())
        losses.push_back({Loss::Kind::metadata, "has XMP of which parts are missing: they are left out"});
    if (too_large_) losses.push_back(too_much_metadata());
    return std::move(found_);
}

std::vector<JpegMarker> markers_of(const Metadata& metadata) {
    std::vector<JpegMarker> markers;
    const auto add = [&](int number, std::string_view mark, std::span<const std::uint8_t> bytes) {
        markers.push_back(marker(number, mark));
        append(markers.back().contents, bytes);
    };
    if (!metadata.exif.empty()) add(1, kExifMark, metadata.exif);
    if (!metadata.xmp.empty()) add(1, kXmpMark, metadata.xmp);
    const std::string_view name = name_of_extension(metadata.xmp);
    constexpr std::size_t kMostOfExtension = kMostContents - kExtensionMark.size() - kPartHead;
    const std::size_t extension_bytes = name.empty() ? 0 : metadata.xmp_extension.size();
    for (std::size_t place = 0; place < extension_bytes; place += kMostOfExtension) {
        add(1, kExtensionMark, as_bytes(name));
        append_big_endian(markers.back().contents, static_cast<std::uint32_t>(extension_bytes), 4);
        append_big_endian(markers.back().contents, static_cast<std::uint32_t>(place), 4);
        append(markers.back().contents, piece_of(metadata.xmp_extension, place, kMostOfExtension));
    }
    constexpr std::size_t kMostOfProfile = kMostContents - kProfileMark.size() - 2;
    const std::size_t parts = (metadata.icc.size() + kMostOfProfile - 1) / kMostOfProfile;
    for (std::size_t i = 0; i < parts; ++i) {
        const std::uint8_t counted[] = {static_cast<std::uint8_t>(i + 1), static_cast<std::uint8_t>(parts)};
        add(2, kProfileMark, counted);
        append(markers.back().contents, piece_of(metadata.icc, i * kMostOfProfile, kMostOfProfile));
    }
    constexpr std::size_t kMostOfResources = kMostContents - kResourcesMark.size();
    for (std::size_t place = 0; place < metadata.iptc.size(); place += kMostOfResources)
        add(13, kResourcesMark, piece_of(metadata.iptc, place, kMostOfResources));
    return markers;
}

}  // namespace tarvo::host
