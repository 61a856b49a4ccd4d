#include "library_errors.h"

#include "limit_options.h"

namespace tarvo::cli {

CommandError command_error(const Error& error) {
    const bool of_file = error.status() == TARVO_FILE || !error.file().empty();
    return {of_file ? ExitStatus::file_error : ExitStatus::operation_failed, with_option(error.what(), error.limit()),
            error.code()};
}

std::string operation_failure(const std::string& label, const Error& error) {
    std::string why;
    if (!error.refusal().empty())
        why += "; the host made no room for it: " + with_option(error.refusal(), error.limit());
    else if (error.code() == 0)
        why += " and no error code";
    if (!error.reason().empty()) why += "\n    " + error.reason();
    if (error.code() == 0) return label + " gave no result" + why;
    return label + ": error " + std::to_string(error.code()) + ": " + code_message(error.code()) + why;
}

}  // namespace tarvo::cli
