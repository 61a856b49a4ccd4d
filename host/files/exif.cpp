#include "exif.h"

#include <algorithm>
#include <iterator>

namespace tarvo::host {

namespace {

constexpr std::size_t kHeaderBytes = 8, kEntryBytes = 12, kInlineBytes = 4;

enum Type : std::uint32_t { kShort = 3, kLong = 4, kRational = 5 };

enum Tag : std::uint32_t {
    kImageWidth = 0x0100,
    kImageHeight = 0x0101,
    kStripPlaces = 0x0111,
    kOrientation = 0x0112,
    kStripSizes = 0x0117,
    kXResolution = 0x011A,
    kYResolution = 0x011B,
    kResolutionUnit = 0x0128,
    kThumbnailPlace = 0x0201,
    kThumbnailSize = 0x0202,
    kCameraDirectory = 0x8769,
    kPositionDirectory = 0x8825,
    kColorSpace = 0xA001,
    kPixelWidth = 0xA002,
    kPixelHeight = 0xA003,
    kInteroperabilityDirectory = 0xA005,
};

// Returns how many bytes a value of that type takes; 0: the type is unknown.
std::size_t value_bytes(std::uint32_t type) {
    constexpr std::uint8_t kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
    return type < std::size(kBytes) ? kBytes[type] : 0;
}

template <class Number>
void keep_first(std::optional<Number>& kept, const std::optional<Number>& found) {
    if (!kept) kept = found;
}

std::ptrdiff_t offset(std::size_t place) { return static_cast<std::ptrdiff_t>(place); }

void store(Bytes& block, const ExifNumber& number, std::uint32_t value, bool big_endian) {
    for (int i = 0; i < number.bytes; ++i)
        block[number.place + static_cast<std::size_t>(big_endian ? number.bytes - 1 - i : i)] =
            static_cast<std::uint8_t>(value >> 8 * i);
}

class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> block)
        : bytes_(block.first(std::min(block.size(), kMostExifBytes))) {}

    Exif read() {
        if (!read_header()) return found_;
        std::optional<ExifNumber> camera, position, interoperability;
        const auto link = directory(*long_at(4), [&](std::uint32_t tag, std::size_t entry) {
            switch (tag) {
                case kImageWidth: return keep_first(found_.width, number(entry));
                case kImageHeight: return keep_first(found_.height, number(entry));
                case kOrientation: return keep_first(found_.orientation, short_number(entry));
                case kXResolution: return keep_first(found_.x_resolution, fraction(entry));
                case kYResolution: return keep_first(found_.y_resolution, fraction(entry));
                case kResolutionUnit: return keep_first(found_.resolution_unit, short_number(entry));
                case kCameraDirectory: return keep_first(camera, number(entry));
                case kPositionDirectory: return keep_first(position, number(entry));
                default: return;
            }
        });
        if (camera)
            directory(camera->value, [&](std::uint32_t tag, std::size_t entry) {
                if (tag == kColorSpace) keep_first(found_.color_space, short_number(entry));
                if (tag == kPixelWidth) keep_first(found_.camera_width, number(entry));
                if (tag == kPixelHeight) keep_first(found_.camera_height, number(entry));
                if (tag == kInteroperabilityDirectory) keep_first(interoperability, number(entry));
            });
        for (const auto& other : {position, interoperability})
            if (other) directory(other->value, [](std::uint32_t, std::size_t) {});
        if (!link || long_at(*link) == 0u) return found_;
        found_.thumbnail_link = ExifNumber{*long_at(*link), *link, 4};
        find_thumbnail();
        return found_;
    }

private:
    bool holds(std::size_t place, std::size_t count) const {
        return place <= bytes_.size() && count <= bytes_.size() - place;
    }

    std::optional<std::uint32_t> integer_at(std::size_t place, std::size_t count) const {
        if (!holds(place, count)) return {};
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value = value << 8 | bytes_[place + (found_.big_endian ? i : count - 1 - i)];
        return value;
    }
    std::optional<std::uint32_t> short_at(std::size_t place) const { return integer_at(place, 2); }
    std::optional<std::uint32_t> long_at(std::size_t place) const { return integer_at(place, 4); }

    bool read_header() {
        if (bytes_.size() < kHeaderBytes) return false;
        found_.big_endian = bytes_[0] == 'M';
        return bytes_[0] == bytes_[1] && (bytes_[0] == 'M' || bytes_[0] == 'I') && short_at(2) == 42u;
    }

    void find_thumbnail() {
        std::vector<ExifNumber> places, sizes;
        const std::size_t others = found_.others.size();
        directory(found_.thumbnail_link->value, [&](std::uint32_t tag, std::size_t entry) {
            if (tag == kThumbnailPlace || tag == kStripPlaces) append_numbers(places, entry);
            if (tag == kThumbnailSize || tag == kStripSizes) append_numbers(sizes, entry);
        });
        found_.others.resize(others);  // its own are none
        for (std::size_t i = 0; i < std::min(places.size(), sizes.size()); ++i)
            if (holds(places[i].value, sizes[i].value)) found_.thumbnail.push_back({places[i].value, sizes[i].value});
    }

    // Calls `visit(tag, place)` for each entry. Returns the place of the link to the next directory, if it is there.
    template <class Visit>
    std::optional<std::size_t> directory(std::uint32_t start, Visit visit) {
        if (std::find(std::begin(followed_), std::end(followed_), start) != std::end(followed_)) return {};
        followed_[directories_++] = start;
        const auto count = short_at(start);
        if (!count) return {};
        found_.others.push_back({start, 2});
        std::size_t entry = start + std::size_t{2};
        for (std::uint32_t i = 0; i < *count; ++i, entry += kEntryBytes) {
            if (entries_ == kMostExifEntries || !holds(entry, kEntryBytes)) return {};
            ++entries_;
            keep_place(entry);
            visit(*short_at(entry), entry);
        }
        if (!holds(entry, 4)) return {};
        return entry;
    }

    // Notes an entry, with the link that may follow it, and its value if that stands elsewhere.
    void keep_place(std::size_t entry) {
        found_.others.push_back({entry, std::min(kEntryBytes + 4, bytes_.size() - entry)});
        const std::uint64_t bytes = std::uint64_t{*long_at(entry + 4)} * value_bytes(*short_at(entry + 2));
        const std::size_t place = *long_at(entry + 8);
        if (bytes <= kInlineBytes || bytes > bytes_.size()) return;
        const auto size = static_cast<std::size_t>(bytes);
        if (holds(place, size)) found_.others.push_back({place, size});
    }

    // Returns where an entry's first value begins, if the entry has that type and the value is all there.
    std::optional<std::size_t> value_place(std::size_t entry, Type type, std::size_t bytes) const {
        const std::uint64_t count = *long_at(entry + 4);
        if (short_at(entry + 2) != type || count == 0) return {};
        const std::size_t place = count * bytes <= kInlineBytes ? entry + 8 : *long_at(entry + 8);
        if (!holds(place, bytes)) return {};
        return place;
    }

    std::optional<ExifNumber> short_number(std::size_t entry) const {
        const auto place = value_place(entry, kShort, 2);
        if (!place) return {};
        return ExifNumber{*short_at(*place), *place, 2};
    }

    std::optional<ExifNumber> number(std::size_t entry) const {
        const auto place = value_place(entry, kLong, 4);
        if (!place) return short_number(entry);
        return ExifNumber{*long_at(*place), *place, 4};
    }

    // Of an entry with several the reader takes as many as a directory may have entries.
    void append_numbers(std::vector<ExifNumber>& to, std::size_t entry) const {
        const auto first = number(entry);
        if (!first) return;
        const std::size_t count = std::min<std::size_t>(*long_at(entry + 4), kMostExifEntries);
        const auto bytes = static_cast<std::size_t>(first->bytes);
        for (std::size_t i = 0, place = first->place; i < count; ++i, place += bytes)
            if (const auto value = integer_at(place, bytes)) to.push_back({*value, place, first->bytes});
    }

    std::optional<ExifFraction> fraction(std::size_t entry) const {
        const auto place = value_place(entry, kRational, 8);
        if (!place) return {};
        return ExifFraction{*long_at(*place), *long_at(*place + 4), *place};
    }

    const std::span<const std::uint8_t> bytes_;
    Exif found_;
    std::uint32_t followed_[5] = {};  // there are no more to follow, and none begins with the header
    int directories_ = 0;
    int entries_ = 0;
};

}  // namespace

int Exif::shown_orientation() const {
    return orientation && orientation->value >= 1 && orientation->value <= 8 ? static_cast<int>(orientation->value) : 1;
}

Exif read_exif(std::span<const std::uint8_t> block) { return Reader(block).read(); }

void make_exif_srgb(Bytes& block) {
    const Exif exif = read_exif(block);
    if (exif.color_space) store(block, *exif.color_space, 1, exif.big_endian);
}

void make_exif_true(Bytes& block, int width, int height) {
    const Exif exif = read_exif(block);
    const Bytes before = block;
    for (const ExifRange& part : exif.thumbnail) std::fill_n(block.begin() + offset(part.place), part.size, 0);
    // What a preview overlaps, by mistake or malice, is not lost with it.
    std::copy_n(before.begin(), std::min(kHeaderBytes, before.size()), block.begin());
    for (const ExifRange& kept : exif.others)
        std::copy_n(before.begin() + offset(kept.place), kept.size, block.begin() + offset(kept.place));
    const auto put = [&](const std::optional<ExifNumber>& number, int value) {
        if (number) store(block, *number, static_cast<std::uint32_t>(value), exif.big_endian);
    };
    put(exif.orientation, 1);
    put(exif.width, width);
    put(exif.height, height);
    put(exif.camera_width, width);
    put(exif.camera_height, height);
    put(exif.thumbnail_link, 0);
}

}  // namespace tarvo::host
