#pragma once

// Failures of the library's functions, and the errors that callers get of them.

#include <stdexcept>
#include <string>

#include "tarvo.h"

namespace tarvo::library {

// Ends a function of the library with an error.
class Failure : public std::runtime_error {
public:
    Failure(tarvo_status its_status, const std::string& message) : std::runtime_error(message), status(its_status) {}

    tarvo_status status;
    std::int32_t code = 0;
    std::string operation = {};
    std::string argument = {};
};

inline Failure wrong_use(const std::string& message) { return {TARVO_USE, message}; }

// Throws wrong_use: "picture is NULL".
void require(const void* pointer, const char* name);

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
