#pragma once

// Option records, which begin with their size.

#include <algorithm>
#include <cstring>
#include <string>

#include "failure.h"
#include "resource_limits.h"

namespace tarvo::library {

// Returns the caller's options over the defaults. An older caller's record is smaller; one of a newer caller may not
// ask for what this library does not know.
template <class Options>
Options given_options(const Options* given, Options options = {}) {
    if (!given) return options;
    std::size_t size;
    std::memcpy(&size, given, sizeof size);
    if (size < sizeof size) throw wrong_use("the size of the options is " + std::to_string(size));
    const auto* bytes = reinterpret_cast<const unsigned char*>(given);
    if (std::any_of(bytes + std::min(size, sizeof options), bytes + size, [](unsigned char byte) { return byte != 0; }))
        throw wrong_use("the options ask for what only a newer library has");
    std::memcpy(&options, given, std::min(size, sizeof options));
    return options;
}

// Returns the usual limits where the caller tells none.
inline host::Limits limits_of(std::uint64_t max_pixels, std::uint64_t max_memory) {
    host::Limits limits = host::default_limits();
    if (max_pixels != 0) limits.max_pixels = max_pixels;
    if (max_memory != 0) limits.max_memory = max_memory;
    return limits;
}

}  // namespace tarvo::library
