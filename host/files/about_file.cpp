#include "about_file.h"

#include <algorithm>

namespace tarvo::host {

FileError error_about(const std::string& path, std::string_view reason) {
    std::string line = path + ": " + std::string(reason);
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return FileError(line);
}

}  // namespace tarvo::host
