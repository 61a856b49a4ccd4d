#pragma once

// The list of what pictures are to be: a line each, with the hash of the pixels.
//
//     tarvo-manifest 1: SHA-256 of pixels, as tarvo hash prints it
//     HASH  640x480 rgb  coffee.png
//     HASH  640x480 rgba tolerance=12:3  photos/rocket.png
//
//     @ Stretch(fit(300))
//     @ Downsample(4)
//     HASH  300x200 rgb  coffee.png
//
// With a tolerance that many pixels may differ, by up to so much in a channel; sides may not. A recipe stands above the
// lines of what it makes of the pictures of these names; one that makes its picture of nothing has one line, whose name
// is no file's. Groups are sorted by their recipes, the one without a recipe being the first, and lines by name.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "chain.h"
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
using Entries = std::map<std::string, PictureEntry>;

// The texts of calls. Without any, pictures are listed as they are.
using Recipe = std::vector<std::string>;

// What one recipe makes.
struct PictureGroup {
    // Throws as Chain does.
    explicit PictureGroup(const Recipe& recipe) : chain(recipe_chain(recipe)) {}

    Chain chain;
    Entries entries = {};
};

using Manifest = std::map<Recipe, PictureGroup>;
// A group, below its recipe.
using ListedGroup = Manifest::value_type;

// What a line is called: "coffee.png", or "coffee.png @ Stretch(fit(300)) @ Downsample(4)".
std::string title(const std::string& name, const Recipe& recipe);

// These throw CommandError.
Manifest read_manifest(const std::string& path);
void write_manifest(const std::string& path, const Manifest& manifest, WholeFile::Old old, Listener& listener);

}  // namespace tarvo::cli
