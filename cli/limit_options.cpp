#include "limit_options.h"

#include <unistd.h>

#include <CLI/Option.hpp>
#include <CLI/Validators.hpp>

namespace tarvo::cli {

namespace {

constexpr const char* kMaxPixels = "--max-pixels";
constexpr const char* kMaxMemory = "--max-memory";

}  // namespace

host::Limits default_limits() {
    host::Limits limits{.max_pixels = std::uint64_t{1} << 28};
    const long pages = ::sysconf(_SC_PHYS_PAGES), page = ::sysconf(_SC_PAGESIZE);
    if (pages > 0 && page > 0)
        limits.max_memory = static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page) / 2;
    return limits;
}

void add_limit_options(CLI::App& command, host::Limits& limits) {
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

std::string with_option(const host::LimitedError& error) {
    if (!error.limit()) return error.what();
    const char* const option = *error.limit() == host::Limit::pixels ? kMaxPixels : kMaxMemory;
    return std::string(error.what()) + " (" + option + ")";
}

}  // namespace tarvo::cli
