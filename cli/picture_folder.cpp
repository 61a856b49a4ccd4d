#include "picture_folder.h"

#include <filesystem>
#include <system_error>

#include "command_error.h"
#include "format.h"

namespace tarvo::cli {

namespace fs = std::filesystem;

bool is_picture_name(const std::string& name) {
    if (host::has_ending(name, ".trv")) return true;
    try {
        host::format_of_name(name);
        return true;
    } catch (const host::FileError&) {
        return false;
    }
}

std::set<std::string> picture_names(const std::string& folder) {
    std::set<std::string> names;
    try {
        for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
            const std::string name = entry->path().filename().string();
            if (name.starts_with('.')) {
                entry.disable_recursion_pending();
            } else if (!entry->is_directory() && is_picture_name(name)) {
                names.insert(entry->path().lexically_relative(folder).generic_string());
            }
        }
    } catch (const fs::filesystem_error& error) {
        throw CommandError(ExitStatus::file_error, folder + ": cannot be read: " + error.code().message());
    }
    return names;
}

}  // namespace tarvo::cli
