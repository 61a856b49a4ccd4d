#pragma once

// Metadata made by hand.

#include <cstdint>
#include <string_view>

#include "big_endian.h"
#include "file_samples.h"

namespace tarvo::host {

// An image resource without a name.
inline Bytes resource(std::uint32_t number, const Bytes& data) {
    Bytes made = bytes_of("8BIM");
    append_big_endian(made, number, 2);
    append_big_endian(made, 0, 2);
    append_big_endian(made, static_cast<std::uint32_t>(data.size()), 4);
    made = made + data;
    if (made.size() % 2 != 0) made.push_back(0);
    return made;
}

// A profile of one tag, of which only the header means something.
inline Bytes profile(std::string_view colors) {
    Bytes made(16);
    made = made + bytes_of(colors) + Bytes(16) + bytes_of("acsp") + Bytes(88);
    append_big_endian(made, 1, 4);
    made = made + bytes_of("desc");
    append_big_endian(made, 144, 4);
    append_big_endian(made, 4, 4);
    made = made + Bytes(4);
    made[3] = static_cast<std::uint8_t>(made.size());
    return made;
}

// The types of TIFF's values.
inline constexpr std::uint32_t kByte = 1, kText = 2, kShort = 3, kLong = 4, kRational = 5, kAnything = 7, kUnknown = 19;

// A little-endian file that is written one part behind the other.
class TiffBytes {
public:
    explicit TiffBytes(std::uint32_t first = 8) {
        bytes_ = bytes_of({"II*\0", 4});
        put(first, 4);
    }

    struct Entry {
        std::uint32_t tag, type, count, value;
    };
    // A directory; returns its place.
    std::uint32_t directory(const std::vector<Entry>& entries, std::uint32_t next = 0) {
        const auto place = end();
        put(static_cast<std::uint32_t>(entries.size()), 2);
        for (const Entry& entry : entries) {
            put(entry.tag, 2), put(entry.type, 2);
            put(entry.count, 4), put(entry.value, 4);
        }
        put(next, 4);
        return place;
    }
    // What a directory of so many entries takes.
    static std::uint32_t bytes_for(std::uint32_t entries) { return 2 + 12 * entries + 4; }
    std::uint32_t append(const Bytes& value) {
        const auto place = end();
        bytes_ = std::move(bytes_) + value;
        return place;
    }
    std::uint32_t fraction(std::uint32_t over, std::uint32_t under) {
        const auto place = end();
        put(over, 4), put(under, 4);
        return place;
    }
    std::uint32_t end() const { return static_cast<std::uint32_t>(bytes_.size()); }
    const Bytes& bytes() const { return bytes_; }

private:
    void put(std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) bytes_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
    Bytes bytes_;
};

}  // namespace tarvo::host
