#pragma once

#include <stdexcept>
#include <string>

namespace tarvo::cli {

enum class ExitStatus : int {
    fine = 0,
    operation_failed = 1,  // an operation returned nothing, or the plugin refused the host
    wrong_usage = 2,       // the command line or the text of a call is wrong; nothing was read or written
    file_error = 3,        // a file cannot be read or written; the plugin's is one of them
    interrupted = 130,     // what shells make of a program that SIGINT ended
};

// Ends a command; the message is for people.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitStatus status, const std::string& message) : std::runtime_error(message), status_(status) {}
    ExitStatus status() const { return status_; }

private:
    ExitStatus status_;
};

}  // namespace tarvo::cli
