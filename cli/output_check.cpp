#include "output_check.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "command_error.h"
#include "file_error.h"
#include "picture_io.h"
#include "shown_text.h"

namespace tarvo::cli {

namespace fs = std::filesystem;

void check_output(const std::string& path) {
    const auto wrong = [&](const std::string& what) {
        return CommandError(ExitStatus::wrong_usage, host::shown(path) + ": " + what);
    };
    try {
        check_output_name(path);
    } catch (const host::FileError& error) {
        throw CommandError(ExitStatus::wrong_usage, error.what());
    }
    std::error_code error;
    const fs::path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : fs::path(path);
    const fs::file_status status = fs::status(target, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) throw wrong("not a regular file");
    // A new file is made beside the old one and takes its place.
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, error)) throw wrong("there is no folder " + host::quoted(folder.string()));
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        throw wrong("its folder cannot be written in: " + std::string(std::strerror(errno)));
}

}  // namespace tarvo::cli
