#pragma once

// The directories of a TIFF file, or of an Exif block, which is one: tags with their values, where they stand.

#include <cstdint>
#include <optional>
#include <vector>

#include "byte_sink.h"
#include "byte_source.h"

namespace tarvo::host {

struct TiffEntry {
    std::uint32_t tag, type;
    std::uint64_t count;
    std::uint64_t place;        // of the entry
    std::uint64_t value_place;  // of the value, all of which is in the file
    std::uint64_t value_bytes;
    bool outside;  // the value stands elsewhere than in the entry
};

struct TiffDirectory {
    std::uint64_t place = 0, bytes = 0;  // of its count, its entries and its link
    std::vector<TiffEntry> entries = {};
    std::uint64_t next = 0;  // the directory that it links to; 0: none

    const TiffEntry* find(std::uint32_t tag) const;
};

// Returns how many bytes a value of that type takes; 0: the type is unknown.
std::uint64_t tiff_value_bytes(std::uint32_t type);

class TiffDirectories {
public:
    explicit TiffDirectories(const BytePlaces& file);

    // False when the file does not begin as one.
    bool is_tiff() const { return header_bytes_ != 0; }
    bool big_endian() const { return big_endian_; }
    // True when places have 64 bits, as in no Exif block.
    bool is_large() const { return header_bytes_ == 16; }
    std::uint64_t first() const { return first_; }

    // Reads a directory, without entries of unknown types and those whose values are not in the file. Of all together
    // it takes no more entries than a reader of Exif. Returns nothing where there is none.
    std::optional<TiffDirectory> read(std::uint64_t place);

    // The first number of an entry of whole numbers.
    std::optional<std::uint64_t> number(const TiffEntry& entry) const;
    // The first two numbers of an entry of fractions.
    std::optional<double> fraction(const TiffEntry& entry) const;
    Bytes value(const TiffEntry& entry) const;

private:
    std::optional<std::uint64_t> integer_at(std::uint64_t place, std::size_t bytes) const;
    std::optional<TiffEntry> entry_at(std::uint64_t place) const;

    const BytePlaces& file_;
    bool big_endian_ = false;
    std::uint64_t header_bytes_ = 0;
    std::uint64_t first_ = 0;
    int entries_ = 0;
};

}  // namespace tarvo::host
