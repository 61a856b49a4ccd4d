#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tarvo::cli {

enum class ExitStatus : int {
    fine = 0,
    operation_failed = 1,  // an operation returned nothing
    wrong_usage = 2,       // the command line or the text of a call is wrong; nothing was read or written
    file_error = 3,        // a file cannot be read or written
    interrupted = 130,     // what shells make of a program that SIGINT ended
};

// Ends a command; the message is for people. The code is the operation's, 0 if there is none.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitStatus status, const std::string& message, std::int32_t code = 0)
        : std::runtime_error(message), status_(status), code_(code) {}
    ExitStatus status() const { return status_; }
    std::int32_t code() const { return code_; }

private:
    ExitStatus status_;
    std::int32_t code_;
};

}  // namespace tarvo::cli
