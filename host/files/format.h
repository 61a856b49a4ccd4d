#pragma once

// The file formats: one row of the table each.

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "byte_sink.h"
#include "byte_source.h"
#include "compression.h"
#include "file_error.h"
#include "image.h"
#include "metadata.h"

namespace tarvo::host {

struct EncodeOptions {
    JpegMaking jpeg = {};
    std::optional<int> quality = {};  // what was told; 1 to 100
    Compression compression = Compression::normal;
    Metadata metadata = {};  // all of it fits
};

struct Format {
    std::string_view name;
    std::span<const std::string_view> endings;  // of file names, in lower case
    bool keeps_alpha;
    MetadataRoom room;
    bool (*stores_grey)(const ImageForm& form);  // true when the file's colours would be greys
    bool (*recognises)(std::span<const std::uint8_t> file);
    // Null in a build without the library for it. Both throw FileError, without a file's name, std::bad_alloc, and what
    // they are given throws. `encode` returns what it has written, but for alpha.
    void (*decode)(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target);
    FilePixels (*encode)(const PixelSource& image, const EncodeOptions& options, ByteSink& file);
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
void check_size(std::uint64_t width, std::uint64_t height, std::uint64_t max_pixels);
// The error of a file that ends too early, after that many rows.
FileError cut_short(int rows);

}  // namespace tarvo::host
