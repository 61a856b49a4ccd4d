#pragma once

// The few numbers of an Exif block that a picture's file needs, with the places where they stand: a block is never
// written anew, which makers' own notes do not survive, but patched.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tarvo::host {

// A whole number of 16 or 32 bits.
struct ExifNumber {
    std::uint32_t value;
    std::size_t place;  // of its first byte in the block
    int bytes;          // 2 or 4
};

// A fraction of two whole numbers of 32 bits each, one behind the other.
struct ExifFraction {
    std::uint32_t numerator, denominator;
    std::size_t place;
};

// Bytes of the block, all of them within it.
struct ExifRange {
    std::size_t place, size;
};

struct Exif {
    bool big_endian = false;
    std::optional<ExifNumber> orientation;  // whatever number is there
    std::optional<ExifFraction> x_resolution, y_resolution;
    std::optional<ExifNumber> resolution_unit;  // 2: inch, 3: centimetre
    // Of the picture as stored: told by its directory or by the one for what cameras add, or by both.
    std::optional<ExifNumber> width, height;
    std::optional<ExifNumber> camera_width, camera_height;
    // The preview, and where the first directory says that there is another, which tells of it.
    std::optional<ExifRange> thumbnail;
    std::optional<ExifNumber> thumbnail_link;

    // 1 to 8; 1 when the block tells none.
    int shown_orientation() const;
};

// Longer blocks are not looked at beyond this, nor is the rest after so many entries.
inline constexpr std::size_t kMostExifBytes = std::size_t{1} << 16;
inline constexpr int kMostExifEntries = 512;

// Of a block that begins with its TIFF header. Whatever the bytes are, it reads only within them, no directory twice,
// and what cannot be understood is not told. Of numbers that are told twice, the first counts.
Exif read_exif(std::span<const std::uint8_t> block);

}  // namespace tarvo::host
