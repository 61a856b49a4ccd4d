#pragma once

#include <stdexcept>

namespace tarvo::host {

// A file that cannot be read or written, in one line. Where a file is known the line begins with its name.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tarvo::host
