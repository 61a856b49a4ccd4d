#pragma once

// Metadata in PNG files' chunks. There are three ways to have it: chunks of its own, international text, and "raw
// profile" text of hexadecimal digits.

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "metadata.h"

namespace tarvo::host {

inline constexpr MetadataRoom kPngRoom = {.exif = kMostMetadataBytes,
                                          .xmp = kMostMetadataBytes,
                                          .iptc = kMostMetadataBytes,
                                          .icc = kMostMetadataBytes,
                                          .most_resolution = 0x7FFFFFFF,
                                          .resolution_unit = Resolution::Unit::metre};

// The most compressed chunks of metadata that are unpacked, each up to what its kind may have.
inline constexpr int kMostPngStreams = 16;

// Collects metadata from a file's chunks, as they come. Of several of a kind the first counts.
class PngChunks {
public:
    // Takes a chunk; others than those of metadata are ignored. Throws std::bad_alloc.
    void add(std::string_view name, std::span<const std::uint8_t> data);
    // Tells of a chunk that was not read.
    void leave_out() { too_large_ = true; }

    // The Exif block so far; the orientation is needed before the pixels come.
    std::span<const std::uint8_t> exif() const;

    // The colour profile so far.
    std::span<const std::uint8_t> profile() const;

    // To be called after the last chunk.
    Metadata finish(Losses& losses);

private:
    void add_profile(std::span<const std::uint8_t> data);
    void add_text(std::span<const std::uint8_t> data, bool compressed);
    void add_international_text(std::span<const std::uint8_t> data);
    void add_raw_profile(std::string_view type, std::string_view text);
    void add_resolution(std::span<const std::uint8_t> data);
    void keep(Bytes& to, std::span<const std::uint8_t> bytes);
    Bytes unpacked(std::span<const std::uint8_t> stream, std::size_t most);

    Metadata found_;
    Metadata raw_;  // what came as text of digits, and counts where nothing else came
    int streams_ = 0;
    bool damaged_ = false, too_large_ = false;
};

struct PngChunk {
    std::string_view name;
    Bytes data;
};

// Metadata that fits, as chunks that go between the header and the palette.
std::vector<PngChunk> chunks_of(const Metadata& metadata);

}  // namespace tarvo::host
