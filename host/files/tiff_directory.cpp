#include "tiff_directory.h"

#include <algorithm>
#include <iterator>

#include "exif.h"

namespace tarvo::host {

namespace {

constexpr std::uint32_t kShort = 3, kLong = 4, kRational = 5, kDirectory = 13, kLong8 = 16, kDirectory8 = 18;
constexpr std::uint64_t kMarkBytes = 8;

}  // namespace

std::uint64_t tiff_value_bytes(std::uint32_t type) {
    constexpr std::uint8_t kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type < std::size(kBytes) ? kBytes[type] : 0;
}

const TiffEntry* TiffDirectory::find(std::uint32_t tag) const {
    const auto found = std::ranges::find(entries, tag, &TiffEntry::tag);
    return found == entries.end() ? nullptr : &*found;
}

TiffDirectories::TiffDirectories(const BytePlaces& file) : file_(file) {
    std::uint8_t mark[4];
    if (!file.read_at(0, mark) || mark[0] != mark[1] || (mark[0] != 'I' && mark[0] != 'M')) return;
    big_endian_ = mark[0] == 'M';
    const auto version = integer_at(2, 2);
    const bool large = version == 43u && integer_at(4, 4) == (big_endian_ ? 8u << 16 : 8u);
    if (version != 42u && !large) return;
    const auto first = large ? integer_at(kMarkBytes, 8) : integer_at(4, 4);
    if (!first) return;
    header_bytes_ = large ? 16 : kMarkBytes;
    first_ = *first;
}

std::optional<std::uint64_t> TiffDirectories::integer_at(std::uint64_t place, std::size_t bytes) const {
    std::uint8_t read[8] = {};
    if (!file_.read_at(place, std::span(read).first(bytes))) return {};
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i) value = value << 8 | read[big_endian_ ? i : bytes - 1 - i];
    return value;
}

std::optional<TiffDirectory> TiffDirectories::read(std::uint64_t place) {
    const std::size_t count_bytes = is_large() ? 8 : 2, entry_bytes = is_large() ? 20 : 12,
                      link_bytes = is_large() ? 8 : 4;
    const auto count = integer_at(place, count_bytes);
    if (!is_tiff() || !count || place < header_bytes_) return {};
    TiffDirectory found{.place = place, .bytes = count_bytes};
    for (std::uint64_t i = 0; i < *count; ++i) {
        const std::uint64_t at = place + found.bytes;
        if (entries_ == kMostExifEntries || !has_bytes(file_.size(), at, entry_bytes)) return found;
        ++entries_;
        found.bytes += entry_bytes;
        if (const auto entry = entry_at(at)) found.entries.push_back(*entry);
    }
    if (const auto link = integer_at(place + found.bytes, link_bytes)) {
        found.next = *link;
        found.bytes += link_bytes;
    }
    return found;
}

std::optional<TiffEntry> TiffDirectories::entry_at(std::uint64_t place) const {
    const std::size_t word = is_large() ? 8 : 4;
    const auto tag = integer_at(place, 2), type = integer_at(place + 2, 2), count = integer_at(place + 4, word);
    const std::uint64_t each = type ? tiff_value_bytes(static_cast<std::uint32_t>(*type)) : 0;
    if (!tag || !count || each == 0 || *count > file_.size() / each) return {};
    TiffEntry entry{.tag = static_cast<std::uint32_t>(*tag),
                    .type = static_cast<std::uint32_t>(*type),
                    .count = *count,
                    .place = place,
                    .value_place = place + 4 + word,
                    .value_bytes = *count * each,
                    .outside = *count * each > word};
    if (!entry.outside) return entry;
    const auto elsewhere = integer_at(entry.value_place, word);
    if (!elsewhere || !has_bytes(file_.size(), *elsewhere, entry.value_bytes)) return {};
    entry.value_place = *elsewhere;
    return entry;
}

std::optional<std::uint64_t> TiffDirectories::number(const TiffEntry& entry) const {
    constexpr std::uint32_t kNumbers[] = {kShort, kLong, kDirectory, kLong8, kDirectory8};
    if (entry.count == 0 || std::ranges::find(kNumbers, entry.type) == std::end(kNumbers)) return {};
    return integer_at(entry.value_place, static_cast<std::size_t>(tiff_value_bytes(entry.type)));
}

std::optional<double> TiffDirectories::fraction(const TiffEntry& entry) const {
    if (entry.count == 0 || entry.type != kRational) return {};
    const auto over = integer_at(entry.value_place, 4), under = integer_at(entry.value_place + 4, 4);
    if (!over || !under || *over == 0 || *under == 0) return {};
    return static_cast<double>(*over) / static_cast<double>(*under);
}

Bytes TiffDirectories::value(const TiffEntry& entry) const {
    // More than the file has is none, but files may have more than the machine's sizes count.
    if (entry.value_bytes > SIZE_MAX) return {};
    Bytes bytes(static_cast<std::size_t>(entry.value_bytes));
    if (!file_.read_at(entry.value_place, bytes)) bytes.clear();
    return bytes;
}

}  // namespace tarvo::host
