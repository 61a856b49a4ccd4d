#pragma once

// The file formats: one row of the table each.

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "file_error.h"
#include "image.h"

namespace tarvo::host {

using Bytes = std::vector<std::uint8_t>;

struct Limits {
    std::size_t max_pixels;
};

struct EncodeOptions {
    int jpeg_quality;  // 1 to 100
};

struct Format {
    std::string_view name;
    std::span<const std::string_view> endings;  // of file names, in lower case
    bool keeps_alpha;
    bool (*recognises)(std::span<const std::uint8_t> file);
    // Null in a build without the library for it. Both throw FileError, without a file's name, and std::bad_alloc.
    Image (*decode)(std::span<const std::uint8_t> file, const Limits& limits);
    Bytes (*encode)(const Image& image, const EncodeOptions& options);
};

// By the first bytes. Throws FileError.
const Format& format_of_bytes(std::span<const std::uint8_t> file);
// True when a file's name has that ending (".png") behind something else, in letters of either case.
bool has_ending(std::string_view path, std::string_view ending);
// By the name's ending. Throws FileError, also when this build cannot write the format. `own_ending`: one that the
// message names with the known ones.
const Format& format_of_name(std::string_view path, std::string_view own_ending = {});

// For decoders, before they make an image. Throws FileError when a side is 0 or above kLongestSide, or there are too
// many pixels.
void check_size(std::uint64_t width, std::uint64_t height, const Limits& limits);
// The error of a file that ends too early, after that many rows.
FileError cut_short(int rows);

}  // namespace tarvo::host
