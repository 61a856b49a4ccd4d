#pragma once

#include "resource_limits.h"

namespace tarvo::host {

// A file that cannot be read or written, in one line. Where a file is known the line begins with its name.
class FileError : public LimitedError {
public:
    using LimitedError::LimitedError;
};

}  // namespace tarvo::host
