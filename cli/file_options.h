#pragma once

// The options of commands that read and write picture files.

#include <CLI/App.hpp>

#include <cstdint>
#include <string>

#include "limit_options.h"

namespace tarvo::cli {

// Standard input or output, where a file's name is expected.
inline constexpr const char* kStandardStream = "-";

enum class LossRule { warn, error, ignore };

struct FileOptions {
    Limits limits = {};
    bool srgb = false;
    bool draft = false;
    int quality = 0;  // 0: the library's choice
    tarvo_compression compression = TARVO_COMPRESSION_NORMAL;
    std::uint32_t strip = 0;  // kinds of metadata, as the library takes them
    std::string format = {};  // of standard output
    LossRule losses = LossRule::warn;
};

void add_file_options(CLI::App& command, FileOptions& options);

}  // namespace tarvo::cli
