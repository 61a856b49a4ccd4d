#pragma once

// Failures of the library's functions, and the errors that callers get of them.

#include <memory>
#include <stdexcept>
#include <string>

#include "file_error.h"
#include "tarvo.h"

namespace tarvo::library {

// Ends a function of the library with an error.
class Failure : public std::runtime_error {
public:
    Failure(tarvo_status its_status, const std::string& message) : std::runtime_error(message), status(its_status) {}

    tarvo_status status;
    std::int32_t code = 0;
    tarvo_limit limit = TARVO_NO_LIMIT;
    std::string operation = {}, argument = {};
    std::string reason = {}, refusal = {}, file = {};
};

inline Failure wrong_use(const std::string& message) { return {TARVO_USE, message}; }
tarvo_limit limit_of(const host::LimitedError& error);
Failure file_failure(const host::FileError& error, const std::string& path);

// Throws wrong_use: "picture is NULL".
void require(const void* pointer, const char* name);

// Runs the work on one file, which its errors then tell.
template <class Work>
auto on_file(const std::string& path, Work work) {
    try {
        return work();
    } catch (const host::FileError& error) {
        throw file_failure(error, path);
    }
}

struct ErrorEnd {
    void operator()(tarvo_error* error) const { tarvo_error_free(error); }
};
using KeptError = std::unique_ptr<tarvo_error, ErrorEnd>;

// What is told of a failure; never null.
KeptError error_of(const Failure& failure) noexcept;

// Makes the error of the exception that is being handled, if somebody wants it, and returns its status.
tarvo_status report(tarvo_error** error) noexcept;

// Runs the work of a function. Nothing that is thrown leaves it.
template <class Work>
tarvo_status guarded(tarvo_error** error, Work work) noexcept {
    try {
        work();
        return TARVO_OK;
    } catch (...) {
        return report(error);
    }
}

}  // namespace tarvo::library
