#include "metadata.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "exif.h"
#include "icc_profile.h"
#include "tiff_directory.h"
#include "xmp.h"

namespace tarvo::host {

namespace {

constexpr std::uint32_t kInches = 2, kCentimetres = 3;  // as Exif tells the unit

double units_in_a_metre(Resolution::Unit unit) {
    switch (unit) {
        case Resolution::Unit::inch: return 1 / 0.0254;
        case Resolution::Unit::centimetre: return 100;
        case Resolution::Unit::metre:
        case Resolution::Unit::none: break;
    }
    return 1;
}

// "Exif", "Exif and XMP", "Exif, XMP and the resolution"
std::string listed(const std::vector<std::string_view>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) text += i + 1 < names.size() ? ", " : " and ";
        text += names[i];
    }
    return text;
}

const char* name_of(ProfileOf colors) {
    switch (colors) {
        case ProfileOf::grey: return "greys";
        case ProfileOf::rgb: return "RGB";
        case ProfileOf::inks: return "CMYK";
        case ProfileOf::nothing_known: break;
    }
    return "";
}

// Returns why a profile can't go into a file, in words that go behind the file's name; empty if it can.
std::string objection(const Bytes& profile, std::size_t room, bool grey) {
    if (room == 0) return "has no room for the color profile: it is left out";
    const ProfileOf colors = colors_of_profile(profile);
    const ProfileOf wanted = grey ? ProfileOf::grey : ProfileOf::rgb;
    if (colors == ProfileOf::nothing_known) return "is made without the color profile, which is damaged";
    if (colors != wanted)
        return std::string("is made without the color profile, which is one of ") + name_of(colors) +
               ": the pixels are " + name_of(wanted);
    if (profile.size() > room)
        return "has no room for a color profile of " + std::to_string(profile.size()) + " bytes: it is left out";
    return {};
}

// XMP in one packet, or in two where the format has a place for the second.
void fit_xmp(Metadata& metadata, const MetadataRoom& room) {
    if (metadata.xmp_extension.empty() || room.xmp_extension >= metadata.xmp_extension.size()) return;
    metadata.xmp = with_extension(metadata.xmp, metadata.xmp_extension);
    metadata.xmp_extension.clear();
}

// True of a block that its own directory can be read of.
bool has_directory(const Bytes& exif) {
    const MemoryPlaces places(exif);
    TiffDirectories directories(places);
    return directories.is_tiff() && !directories.is_large() && directories.read(directories.first());
}

// True when nobody misses a resolution: Exif, which has it too, tells it.
bool tells_resolution(const Bytes& exif, const Resolution& wanted) {
    const auto told = resolution_of_exif(exif);
    if (!told) return false;
    const Resolution same = told->in(wanted.unit);
    const auto near = [](double a, double b) { return std::abs(a - b) <= 0.01 * b; };
    return near(same.x, wanted.x) && near(same.y, wanted.y);
}

}  // namespace

Resolution Resolution::in(Unit wanted) const {
    if (unit == Unit::none || wanted == Unit::none || unit == wanted) return *this;
    const double factor = units_in_a_metre(unit) / units_in_a_metre(wanted);
    return {x * factor, y * factor, wanted};
}

std::optional<Resolution> resolution_of_exif(const Bytes& block) {
    const Exif exif = read_exif(block);
    if (!exif.x_resolution || !exif.y_resolution) return {};
    const auto value = [](const ExifFraction& fraction) {
        return static_cast<double>(fraction.numerator) / fraction.denominator;
    };
    if (exif.x_resolution->numerator == 0 || exif.x_resolution->denominator == 0) return {};
    if (exif.y_resolution->numerator == 0 || exif.y_resolution->denominator == 0) return {};
    const std::uint32_t unit = exif.resolution_unit ? exif.resolution_unit->value : kInches;
    if (unit != kInches && unit != kCentimetres) return {};
    return Resolution{value(*exif.x_resolution), value(*exif.y_resolution),
                      unit == kInches ? Resolution::Unit::inch : Resolution::Unit::centimetre};
}

Loss too_much_metadata() {
    return {Loss::Kind::metadata,
            "has more than " + std::to_string(kMostMetadataBytes) + " bytes of one kind of metadata: some is left out"};
}

void make_true(Metadata& metadata, int width, int height) {
    make_exif_true(metadata.exif, width, height);
    make_xmp_true(metadata.xmp, width, height);
}

Metadata without(Metadata metadata, std::uint32_t kinds) {
    if (kinds & kExif) metadata.exif.clear();
    if (kinds & kXmp) {
        metadata.xmp.clear();
        metadata.xmp_extension.clear();
    }
    if (kinds & kIptc) metadata.iptc.clear();
    if (kinds & kIcc) metadata.icc.clear();
    if (kinds & kResolution) metadata.resolution.reset();
    return metadata;
}

Metadata fitting(Metadata metadata, const MetadataRoom& room, bool grey, Losses& losses) {
    std::vector<std::string_view> left_out;
    const bool has_xmp = !metadata.xmp.empty();
    if (has_xmp && room.xmp > 0) fit_xmp(metadata, room);
    const auto fit = [&](Bytes& bytes, bool is_there, std::size_t most, std::string_view name) {
        if (!is_there || (!bytes.empty() && bytes.size() <= most)) return;
        left_out.push_back(name);
        bytes.clear();
    };
    const bool merges = !room.exif_is_merged || has_directory(metadata.exif);
    fit(metadata.exif, !metadata.exif.empty(), merges ? room.exif : 0, "Exif");
    fit(metadata.xmp, has_xmp, room.xmp, "XMP");
    fit(metadata.iptc, !metadata.iptc.empty(), room.iptc, "IPTC");
    if (metadata.xmp.empty()) metadata.xmp_extension.clear();
    if (metadata.resolution) {
        const Resolution wanted = metadata.resolution->in(room.resolution_unit);
        const double least = std::min(wanted.x, wanted.y), most = std::max(wanted.x, wanted.y);
        // Both are rounded.
        if (!room.most_resolution || !(least >= 0.5 && most < *room.most_resolution + 0.5)) {
            if (!tells_resolution(metadata.exif, *metadata.resolution)) left_out.emplace_back("the resolution");
            metadata.resolution.reset();
        }
    }
    if (!left_out.empty())
        losses.push_back({Loss::Kind::metadata, "has no room for " + listed(left_out) + ": " +
                                                    (left_out.size() > 1 ? "they are" : "it is") + " left out"});
    if (!metadata.icc.empty()) {
        if (std::string words = objection(metadata.icc, room.icc, grey); !words.empty()) {
            losses.push_back({Loss::Kind::profile, std::move(words)});
            metadata.icc.clear();
        }
    }
    return metadata;
}

}  // namespace tarvo::host
