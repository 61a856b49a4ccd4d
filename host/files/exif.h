#pragma once

// The few numbers of an Exif block that a picture's file needs, with the places where they stand: a block is never
// written anew, which makers' own notes do not survive, but patched.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "metadata.h"

namespace tarvo::host {

// A whole number of 16 or 32 bits.
struct ExifNumber {
    std::uint32_t value;
    std::size_t place;  // its first byte in the block
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
    std::optional<ExifNumber> orientation;  // any number may be there
    std::optional<ExifFraction> x_resolution, y_resolution;
    std::optional<ExifNumber> resolution_unit;  // 2: inch, 3: centimetre
    // The sizes of the picture as it is stored. Its own directory, the one for what cameras add, or both have them.
    std::optional<ExifNumber> width, height;
    std::optional<ExifNumber> camera_width, camera_height;
    std::optional<ExifNumber> color_space;  // 1: sRGB
    // The preview, in one part or in strips, and the first directory's link to the directory that tells of it.
    std::vector<ExifRange> thumbnail;
    std::optional<ExifNumber> thumbnail_link;
    // The other directories that the reader knows, and values that stand outside of them.
    std::vector<ExifRange> others;

    // Returns 1 to 8; 1 if the block has no such number.
    int shown_orientation() const;
};

// The reader stops after so many bytes, and after so many entries.
inline constexpr std::size_t kMostExifBytes = kMostMetadataBytes;
inline constexpr int kMostExifEntries = 512;

// Reads a block that begins with its TIFF header. Whatever the bytes are, it reads only within them, and no directory
// twice. What cannot be understood is left out. If a number stands there twice, the first counts.
Exif read_exif(std::span<const std::uint8_t> block);

// Says of colours that they are those of sRGB, where the block says something of them.
void make_exif_srgb(Bytes& block);

// Makes a block true of a picture that is shown upright and of that size. Numbers are changed where they stand, the
// preview is no longer linked to and its bytes are 0; all else stays as and where it is.
void make_exif_true(Bytes& block, int width, int height);

}  // namespace tarvo::host
