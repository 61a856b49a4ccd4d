#pragma once

// Which files a batch reads, and which it writes.

#include <cstddef>
#include <string>
#include <vector>

namespace tarvo::cli {

struct PlannedFile {
    std::string input, output;  // no output: nothing is written
};

struct OutputRule {
    std::string into;     // a folder that takes files of the same names
    std::string pattern;  // has {name}, {ext}, {dir} and {n} of each input
    bool in_place = false;
};

// One part of several, from 1; all unless told.
struct Shard {
    std::size_t part = 1, parts = 1;
};

// Whether a name of an output depends on that of the input.
bool is_pattern(const std::string& output);
// "3/8". Throws CommandError.
Shard shard_of(const std::string& text);

// The files of a shard, in the order of the inputs; what shard a file is in depends on its place among all in sorted
// order. Throws CommandError, which names both, when two files of all the shards have one output, or an output is an
// input.
std::vector<PlannedFile> plan(const std::vector<std::string>& inputs, const OutputRule& rule, const Shard& shard);

}  // namespace tarvo::cli
