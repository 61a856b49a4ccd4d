#include "library_errors.h"

#include <new>

#include "limit_options.h"

namespace tarvo::cli {

CommandError command_error(const Error& error) {
    const bool of_file = error.status() == TARVO_FILE || !error.file().empty();
    return {of_file ? ExitStatus::file_error : ExitStatus::operation_failed, with_option(error.what(), error.limit()),
            error.code()};
}

void check_memory(const Error& error) {
    if (error.status() == TARVO_MEMORY) throw command_error(error);
}

CommandError handled_error() {
    try {
        throw;
    } catch (const CommandError& error) {
        return error;
    } catch (const Error& error) {
        return command_error(error);
    } catch (const std::bad_alloc&) {
        return {ExitStatus::operation_failed, "not enough memory"};
    } catch (const std::exception& error) {
        return {ExitStatus::operation_failed, error.what()};
    }
}

std::string refusal_text(const Error& error) {
    if (error.refusal().empty()) return "";
    return "; the host made no room for it: " + with_option(error.refusal(), error.limit());
}

std::string operation_failure(const std::string& label, const Error& error) {
    std::string why = refusal_text(error);
    if (why.empty() && error.code() == 0) why = " and no error code";
    if (!error.reason().empty()) why += "\n    " + error.reason();
    if (error.code() == 0) return label + " gave no result" + why;
    return label + ": error " + std::to_string(error.code()) + ": " + code_message(error.code()) + why;
}

}  // namespace tarvo::cli
