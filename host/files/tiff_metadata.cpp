#include "tiff_metadata.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include "big_endian.h"
#include "image_resources.h"
#include "tiff_directory.h"
#include "tiff_tags.h"

namespace tarvo::host {

namespace {

constexpr std::uint64_t kHeaderBytes = 8, kEntryBytes = 12;
// Values that end beyond this are moved: a block may have to go into a JPEG file's segment.
constexpr std::uint64_t kMostKept = 60000;
// The longest value of a block, which no JPEG file would hold.
constexpr std::uint64_t kMostOfAValue = 65535;

// How a file has its pixels, and what it has a place of its own for: no part of an Exif block.
constexpr std::uint32_t kOfTheFile[] = {254, 255, 256, 257, 258, 259, 262, 263,   264,   265,   266,   273,   277,
                                        278, 279, 280, 281, 284, 288, 289, 290,   291,   292,   297,   293,   317,
                                        320, 321, 322, 323, 324, 325, 326, 327,   328,   330,   332,   334,   336,
                                        338, 339, 340, 341, 343, 344, 345, 346,   347,   512,   513,   514,   515,
                                        517, 518, 519, 520, 521, 559, 700, 33723, 34377, 34675, 37724, 37439, 50740};

// What every file tells, whether anybody has described it or not.
bool says_little(std::uint32_t tag) {
    return tag == kTiffOrientation || tag == kTiffXResolution || tag == kTiffYResolution || tag == kTiffResolutionUnit;
}

// Blocks are short, so that a place in one is a size on every machine.
std::size_t in_block(std::uint64_t place) { return static_cast<std::size_t>(place); }

std::uint64_t even(std::uint64_t count) { return count + count % 2; }

// Gathers an Exif block of a file's directories.
class BlockMaker {
public:
    BlockMaker(const BytePlaces& file, TiffDirectories& directories, Losses& losses)
        : file_(file), directories_(directories), losses_(losses) {}

    Bytes make(const TiffDirectory& page) {
        TiffDirectory main = page;
        std::erase_if(main.entries, [](const TiffEntry& entry) {
            return std::ranges::find(kOfTheFile, entry.tag) != std::end(kOfTheFile);
        });
        if (std::ranges::all_of(main.entries, [](const TiffEntry& entry) { return says_little(entry.tag); })) return {};
        take_below(main, kTiffCamera);
        if (!below_.empty()) take_below_camera();
        take_below(main, kTiffPosition);
        leave_out_long(main);
        for (Below& below : below_) leave_out_long(below.directory);
        return end_of_below() <= kMostKept ? kept(main) : moved(main);
    }

private:
    struct Below {
        std::uint32_t tag;  // of the entry that links to it
        TiffDirectory directory;
        bool in_camera = false;
    };

    void take_below(const TiffDirectory& above, std::uint32_t tag) {
        const TiffEntry* link = above.find(tag);
        const auto place = link ? directories_.number(*link) : std::nullopt;
        if (!place || std::ranges::any_of(below_, [&](const Below& b) { return b.directory.place == *place; })) return;
        if (auto found = directories_.read(*place)) below_.push_back({tag, std::move(*found)});
    }
    // Of the camera's directory, which came first.
    void take_below_camera() {
        const TiffDirectory camera = below_.front().directory;
        const std::size_t before = below_.size();
        take_below(camera, kTiffInteroperability);
        if (below_.size() > before) below_.back().in_camera = true;
    }

    void leave_out_long(TiffDirectory& directory) {
        const auto left_out =
            std::erase_if(directory.entries, [](const TiffEntry& entry) { return entry.value_bytes > kMostOfAValue; });
        if (left_out > 0 && !told_)
            losses_.push_back({Loss::Kind::metadata, "has values of more than " + std::to_string(kMostOfAValue) +
                                                         " bytes in its Exif: they are left out"});
        told_ = told_ || left_out > 0;
    }

    // --- what the first directory links to stays where the file has it

    static std::uint64_t end_of(const TiffDirectory& directory) {
        std::uint64_t end = directory.place + directory.bytes;
        for (const TiffEntry& entry : directory.entries)
            if (entry.outside) end = std::max(end, entry.value_place + entry.value_bytes);
        return end;
    }

    // Where all ends that nothing may move of.
    std::uint64_t end_of_below() const {
        std::uint64_t end = kHeaderBytes;
        for (const Below& below : below_) end = std::max(end, end_of(below.directory));
        return end;
    }

    Bytes kept(const TiffDirectory& main) {
        Bytes block(in_block(end_of_below()));
        taken_ = {{0, kHeaderBytes}};
        const auto copy = [&](std::uint64_t place, std::uint64_t bytes) {
            file_.read_at(place, std::span(block).subspan(in_block(place), in_block(bytes)));
            taken_.emplace_back(place, place + bytes);
        };
        for (const Below& below : below_) {
            copy(below.directory.place, below.directory.bytes);
            for (const TiffEntry& entry : below.directory.entries)
                if (entry.outside) copy(entry.value_place, entry.value_bytes);
        }
        std::ranges::sort(taken_);
        const std::uint64_t place = room_for(block, directory_bytes(main));
        put_header(block, place);
        put_directory(block, place, main, [&](std::uint64_t bytes) { return room_for(block, bytes); });
        return block;
    }

    // Returns the first place in the block that nothing has taken, and takes it.
    std::uint64_t room_for(Bytes& block, std::uint64_t bytes) {
        std::uint64_t place = kHeaderBytes;
        for (const auto& [begin, end] : taken_) {
            if (begin >= place + bytes) break;
            place = std::max(place, even(end));
        }
        block.resize(in_block(std::max<std::uint64_t>(block.size(), place + bytes)));
        const std::pair taken(place, place + bytes);
        taken_.insert(std::upper_bound(taken_.begin(), taken_.end(), taken), taken);
        return place;
    }

    // --- one behind the other

    Bytes moved(const TiffDirectory& main) {
        Bytes block(in_block(kHeaderBytes));
        put_header(block, kHeaderBytes);
        append(block, main);
        const TiffDirectory* camera = nullptr;
        std::uint64_t camera_place = 0;
        for (const Below& below : below_) {
            const TiffDirectory& above = below.in_camera ? *camera : main;
            const std::uint64_t above_place = below.in_camera ? camera_place : kHeaderBytes;
            const std::uint64_t place = block.size();
            append(block, below.directory);
            const auto link = std::ranges::find(above.entries, below.tag, &TiffEntry::tag);
            const auto index = static_cast<std::uint64_t>(link - above.entries.begin());
            put(block, above_place + 2 + index * kEntryBytes + 8, place, 4);
            if (below.tag != kTiffCamera) continue;
            camera = &below.directory;
            camera_place = place;
            const TiffEntry* note = camera->find(kTiffMakerNote);
            if (note && note->outside)
                losses_.push_back({Loss::Kind::metadata,
                                   "has a maker's note in its Exif that is moved: places which it tells may be wrong"});
        }
        return block;
    }

    void append(Bytes& block, const TiffDirectory& directory) {
        const auto room_behind = [&block](std::uint64_t bytes) {
            const std::uint64_t place = block.size();
            block.resize(in_block(even(place + bytes)));
            return place;
        };
        const std::uint64_t place = room_behind(directory_bytes(directory));
        put_directory(block, place, directory, room_behind);
    }

    // --- both

    static std::uint64_t directory_bytes(const TiffDirectory& directory) {
        return 2 + directory.entries.size() * kEntryBytes + 4;
    }

    // With the values, for which `room(bytes)` finds places.
    template <class Room>
    void put_directory(Bytes& block, std::uint64_t place, const TiffDirectory& directory, Room room) const {
        put(block, place, directory.entries.size(), 2);
        place += 2;
        for (const TiffEntry& entry : directory.entries) {
            put(block, place, entry.tag, 2);
            put(block, place + 2, entry.type, 2);
            put(block, place + 4, entry.count, 4);
            const std::uint64_t value_place = entry.outside ? room(entry.value_bytes) : place + 8;
            if (entry.outside) put(block, place + 8, value_place, 4);
            const std::uint64_t bytes = entry.outside ? entry.value_bytes : 4;
            file_.read_at(entry.value_place, std::span(block).subspan(in_block(value_place), in_block(bytes)));
            place += kEntryBytes;
        }
    }

    void put_header(Bytes& block, std::uint64_t first) const {
        block[0] = block[1] = directories_.big_endian() ? 'M' : 'I';
        put(block, 2, 42, 2);
        put(block, 4, first, 4);
    }

    void put(Bytes& block, std::uint64_t place, std::uint64_t value, std::uint64_t bytes) const {
        for (std::uint64_t i = 0; i < bytes; ++i)
            block[in_block(place + (directories_.big_endian() ? bytes - 1 - i : i))] =
                static_cast<std::uint8_t>(value >> 8 * i);
    }

    const BytePlaces& file_;
    TiffDirectories& directories_;
    Losses& losses_;
    std::vector<Below> below_;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> taken_;  // places of the block and their ends, in order
    bool told_ = false;
};

// The bytes of a tag, unless there are too many.
Bytes value_of(const TiffDirectories& directories, const TiffDirectory& page, std::uint32_t tag, bool& too_large) {
    const TiffEntry* entry = page.find(tag);
    if (!entry) return {};
    too_large = too_large || entry->value_bytes > kMostMetadataBytes;
    return entry->value_bytes > kMostMetadataBytes ? Bytes() : directories.value(*entry);
}

// Kept as numbers of 32 bits, records may have zeros behind them.
void cut_zeros_behind_records(Bytes& records) {
    constexpr std::size_t kHead = 5;
    constexpr std::uint8_t kMark = 0x1C, kLongLength = 0x80;
    std::size_t end = 0;
    while (records.size() - end >= kHead && records[end] == kMark && records[end + 3] < kLongLength) {
        const std::size_t length = kHead + big_endian(records, end + 3, 2);
        if (length > records.size() - end) return;
        end += length;
    }
    if (std::all_of(records.begin() + static_cast<std::ptrdiff_t>(end), records.end(), [](auto b) { return b == 0; }))
        records.resize(end);
}

// Records of their own come before those in the list of resources, as other readers have it.
Bytes resources_in_both(Bytes records, const Bytes& list) {
    Bytes own = resources_in(list);
    cut_zeros_behind_records(records);
    if (records.empty()) return own;
    Bytes both = resources_of(records);
    const Bytes rest = without_records(own);
    both.insert(both.end(), rest.begin(), rest.end());
    return both;
}

std::optional<Resolution> resolution_of(const TiffDirectories& directories, const TiffDirectory& page) {
    const auto value = [&](std::uint32_t tag) {
        const TiffEntry* entry = page.find(tag);
        return entry ? directories.fraction(*entry) : std::nullopt;
    };
    const auto x = value(kTiffXResolution), y = value(kTiffYResolution);
    if (!x || !y) return {};
    const TiffEntry* told = page.find(kTiffResolutionUnit);
    constexpr std::uint64_t kNone = 1, kInches = 2, kCentimetres = 3;
    switch (told ? directories.number(*told).value_or(0) : kInches) {
        case kNone: return *x == *y ? std::nullopt : std::optional(Resolution{*x, *y, Resolution::Unit::none});
        case kInches: return Resolution{*x, *y, Resolution::Unit::inch};
        case kCentimetres: return Resolution{*x, *y, Resolution::Unit::centimetre};
        default: return {};
    }
}

}  // namespace

Metadata metadata_of_tiff(const BytePlaces& file, Losses& losses) {
    Metadata found;
    TiffDirectories directories(file);
    const auto page = directories.read(directories.first());
    if (!page) return found;
    bool too_large = false;
    found.xmp = value_of(directories, *page, kTiffXmp, too_large);
    found.icc = value_of(directories, *page, kTiffProfile, too_large);
    found.iptc = resources_in_both(value_of(directories, *page, kTiffIptc, too_large),
                                   value_of(directories, *page, kTiffResources, too_large));
    found.resolution = resolution_of(directories, *page);
    if (directories.is_large() && (page->find(kTiffCamera) || page->find(kTiffPosition)))
        losses.push_back({Loss::Kind::metadata, "has Exif of large files: it is left out"});
    else if (!directories.is_large())
        found.exif = BlockMaker(file, directories, losses).make(*page);
    if (too_large || found.exif.size() > kMostMetadataBytes) losses.push_back(too_much_metadata());
    if (found.exif.size() > kMostMetadataBytes) found.exif.clear();
    if (page->next != 0 || page->find(kTiffDirectoriesBelow))
        losses.push_back({Loss::Kind::pages, "has further pages: only the first is read"});
    return found;
}

Bytes profile_of_tiff(const BytePlaces& file) {
    TiffDirectories directories(file);
    const auto page = directories.read(directories.first());
    bool too_large = false;
    return page ? value_of(directories, *page, kTiffProfile, too_large) : Bytes();
}

}  // namespace tarvo::host
