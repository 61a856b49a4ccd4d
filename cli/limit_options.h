#pragma once

// The options that bound what the tool takes, and errors that name them.

#include <CLI/App.hpp>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "tarvo.h"

namespace tarvo::cli {

struct Limits {
    std::uint64_t max_pixels = TARVO_USUAL_MAX_PIXELS;
    std::optional<std::uint64_t> max_memory = {};  // none: the library's own

    // Sets those of a record of the library, where 0 stands for the usual one.
    template <class Options>
    void put_into(Options& options) const {
        options.max_pixels = std::max<std::uint64_t>(max_pixels, 1);
        put_memory_into(options);
    }
    template <class Options>
    void put_memory_into(Options& options) const {
        if (max_memory) options.max_memory = std::max<std::uint64_t>(*max_memory, 1);
    }
};

void add_limit_options(CLI::App& command, Limits& limits);

// Returns the message with the option that raises the limit, if there is one.
std::string with_option(const std::string& message, tarvo_limit limit);

}  // namespace tarvo::cli
