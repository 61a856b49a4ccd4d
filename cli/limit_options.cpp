#include "limit_options.h"

#include <CLI/Option.hpp>
#include <CLI/Validators.hpp>

namespace tarvo::cli {

namespace {

constexpr const char* kMaxPixels = "--max-pixels";
constexpr const char* kMaxMemory = "--max-memory";

}  // namespace

void add_limit_options(CLI::App& command, Limits& limits) {
    command.add_option(kMaxPixels, limits.max_pixels, "the most pixels that a picture may have")
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option(kMaxMemory, limits.max_memory,
                    "the most memory for pictures: bytes, or a number with K, M or G; half of the machine's unless "
                    "told otherwise")
        ->type_name("N")
        ->transform(CLI::AsSizeValue(false));
}

std::string with_option(const std::string& message, tarvo_limit limit) {
    switch (limit) {
        case TARVO_MAX_PIXELS: return message + " (" + kMaxPixels + ")";
        case TARVO_MAX_MEMORY: return message + " (" + kMaxMemory + ")";
        default: return message;
    }
}

}  // namespace tarvo::cli
