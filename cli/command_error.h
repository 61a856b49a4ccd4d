#pragma once

#include <stdexcept>
#include <string>

namespace tarvo::cli {

enum class ExitStatus : int {
    fine = 0,
    operation_failed = 1,  // an operation gave nothing, or the plugin refused the host
    wrong_usage = 2,       // of the command line, or in the text of a call; found before anything is read or written
    file_error = 3,        // a file that cannot be read or written, the plugin's included
    interrupted = 130,     // as shells tell of a program that was interrupted
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
