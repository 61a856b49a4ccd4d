#include "about_file.h"

#include <algorithm>

namespace tarvo::host {

FileError error_about(const std::string& path, const LimitedError& reason) {
    std::string line = path + ": " + reason.what();
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return FileError(line, reason.limit());
}

}  // namespace tarvo::host
