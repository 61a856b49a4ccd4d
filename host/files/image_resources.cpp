#include "image_resources.h"

#include <algorithm>
#include <optional>

#include "big_endian.h"
#include "byte_text.h"

namespace tarvo::host {

namespace {

constexpr std::uint32_t kRecords = 0x0404;
// Two kinds of preview, the profile, Exif in two parts, XMP.
constexpr std::uint32_t kLeftOut[] = {0x0409, 0x040C, 0x040F, 0x0422, 0x0423, 0x0424};

constexpr std::uint8_t kFirstOfRecord = 0x1C;

struct Resource {
    std::uint32_t number;
    std::span<const std::uint8_t> data;
    std::size_t bytes;  // with what goes before and behind
};

std::size_t even(std::size_t count) { return count + count % 2; }

// Returns the resource at the start of a list, if one is there whole.
std::optional<Resource> first_of(std::span<const std::uint8_t> list) {
    constexpr std::size_t kNamePlace = 6;
    if (!as_text(list).starts_with("8BIM") || list.size() <= kNamePlace) return {};
    const std::size_t size_place = kNamePlace + even(std::size_t{list[kNamePlace]} + 1);
    if (list.size() < size_place + 4) return {};
    const std::size_t data_place = size_place + 4, size = big_endian(list, size_place, 4);
    if (list.size() - data_place < size) return {};
    // The last one may lack the byte that makes its length even.
    return Resource{big_endian(list, 4, 2), list.subspan(data_place, size),
                    std::min(data_place + even(size), list.size())};
}

// Bytes behind resources that are kept stay, where nothing can be read of them.
Bytes without_numbers(std::span<const std::uint8_t> list, std::span<const std::uint32_t> numbers) {
    Bytes kept;
    while (const auto resource = first_of(list)) {
        const auto whole = list.first(resource->bytes);
        if (std::ranges::find(numbers, resource->number) == numbers.end())
            kept.insert(kept.end(), whole.begin(), whole.end());
        list = list.subspan(resource->bytes);
    }
    if (!kept.empty()) kept.insert(kept.end(), list.begin(), list.end());
    return kept;
}

}  // namespace

Bytes own_resources(std::span<const std::uint8_t> list) { return without_numbers(list, kLeftOut); }

Bytes without_records(std::span<const std::uint8_t> list) {
    constexpr std::uint32_t kNumbers[] = {kRecords};
    return without_numbers(list, kNumbers);
}

std::span<const std::uint8_t> iptc_records(std::span<const std::uint8_t> list) {
    while (const auto resource = first_of(list)) {
        if (resource->number == kRecords) return resource->data;
        list = list.subspan(resource->bytes);
    }
    return {};
}

Bytes resources_of(std::span<const std::uint8_t> records) {
    Bytes list = {'8', 'B', 'I', 'M'};
    append_big_endian(list, kRecords, 2);
    append_big_endian(list, 0, 2);  // no name
    append_big_endian(list, static_cast<std::uint32_t>(records.size()), 4);
    list.insert(list.end(), records.begin(), records.end());
    list.resize(even(list.size()));
    return list;
}

Bytes resources_in(std::span<const std::uint8_t> bytes) {
    if (!bytes.empty() && bytes[0] == kFirstOfRecord) return resources_of(bytes);
    take_start(bytes, {"Photoshop 3.0\0", 14});
    if (!first_of(bytes)) return {};
    return own_resources(bytes);
}

}  // namespace tarvo::host
