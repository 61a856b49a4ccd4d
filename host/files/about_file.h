#pragma once

// Errors of work on one file, told with its name.

#include <new>
#include <string>

#include "file_error.h"
#include "host.h"

namespace tarvo::host {

// "PATH: REASON" in one line, whatever is in the name.
FileError error_about(const std::string& path, const LimitedError& reason);

// Runs `work`. Its FileError, HostError or std::bad_alloc becomes a FileError that names the file.
template <class Work>
auto about_file(const std::string& path, Work work) {
    try {
        return work();
    } catch (const LimitedError& error) {
        throw error_about(path, error);
    } catch (const std::bad_alloc&) {
        throw error_about(path, LimitedError("not enough memory", Limit::memory));
    }
}

}  // namespace tarvo::host
