#pragma once

// The list of what pictures are to be: a line each, with the hash of the pixels.
//
//     tarvo-manifest 1: SHA-256 of pixels, as tarvo hash prints it
//     HASH  640x480 rgb  coffee.png
//     HASH  640x480 rgba tolerance=12:3  photos/rocket.png
//
// Lines are sorted by name. With a tolerance that many pixels may differ, by up to so much in a channel; sides may not.

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "tarvo.hpp"
#include "whole_file.h"

namespace tarvo::cli {

struct Tolerance {
    std::uint64_t pixels;
    int difference;  // 0 to 255
};

struct PictureEntry {
    std::string hash;
    int width = 0, height = 0;
    bool masked = false;
    std::optional<Tolerance> tolerance = {};

    static PictureEntry of(const Picture& picture);
    // The same but for what is allowed.
    bool is_same(const PictureEntry& other) const;
    // "rgb", or "rgba" with a mask.
    const char* kind() const { return masked ? "rgba" : "rgb"; }
};

// By name: a path from the folder of the pictures, with slashes.
using Manifest = std::map<std::string, PictureEntry>;

// These throw CommandError.
Manifest read_manifest(const std::string& path);
void write_manifest(const std::string& path, const Manifest& manifest, WholeFile::Old old, Listener& listener);

}  // namespace tarvo::cli
