#include "failure.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "caller.h"
#include "host.h"
#include "placed_error.h"

// The texts follow in the same block of memory.
struct tarvo_error {
    tarvo_status status = TARVO_OK;
    std::int32_t code = 0;
    tarvo_limit limit = TARVO_NO_LIMIT;
    const char* message = "";
    const char* operation = "";
    const char* argument = "";
    const char* reason = "";
    const char* refusal = "";
    const char* file = "";
};

namespace tarvo::library {
namespace {

// Stands for every error that there is no memory for. Nobody writes to an error.
constexpr tarvo_error kNoMemory = {.status = TARVO_MEMORY, .message = "not enough memory"};

tarvo_error* no_memory() { return const_cast<tarvo_error*>(&kNoMemory); }

// A text may hold a zero byte, at which it ends for the caller.
const char* put(char*& place, std::string_view text) {
    char* const begin = place;
    if (!text.empty()) std::memcpy(begin, text.data(), text.size());
    begin[text.size()] = '\0';
    place += text.size() + 1;
    return begin;
}

// An error to be made, without memory of its own.
struct Told {
    tarvo_status status;
    std::string_view message;
    std::int32_t code = 0;
    tarvo_limit limit = TARVO_NO_LIMIT;
    std::string_view operation = {}, argument = {}, reason = {}, refusal = {}, file = {};
};

Told told_by(const Failure& failure) {
    return {failure.status,   failure.what(), failure.code,    failure.limit, failure.operation,
            failure.argument, failure.reason, failure.refusal, failure.file};
}

Told told_by(const host::LimitedError& error, tarvo_status without_limit) {
    const tarvo_limit limit = limit_of(error);
    tarvo_status status = without_limit;
    if (limit != TARVO_NO_LIMIT) status = limit == TARVO_MAX_MEMORY ? TARVO_MEMORY : TARVO_LIMIT;
    return {.status = status, .message = error.what(), .limit = limit};
}

tarvo_error* made(const Told& told) noexcept {
    const std::string_view texts[] = {told.message, told.operation, told.argument,
                                      told.reason,  told.refusal,   told.file};
    std::size_t bytes = sizeof(tarvo_error);
    for (const std::string_view text : texts) bytes += text.size() + 1;
    void* const block = std::malloc(bytes);
    if (!block) return no_memory();
    auto* const error = new (block) tarvo_error{.status = told.status, .code = told.code, .limit = told.limit};
    char* place = static_cast<char*>(block) + sizeof(tarvo_error);
    error->message = put(place, told.message);
    error->operation = put(place, told.operation);
    error->argument = put(place, told.argument);
    error->reason = put(place, told.reason);
    error->refusal = put(place, told.refusal);
    error->file = put(place, told.file);
    return error;
}

tarvo_status give(tarvo_error** error, const Told& told) noexcept {
    if (!error) return told.status;
    *error = made(told);
    return (*error)->status;
}

}  // namespace

tarvo_limit limit_of(const host::LimitedError& error) {
    if (!error.limit()) return TARVO_NO_LIMIT;
    switch (*error.limit()) {
        case host::Limit::pixels: return TARVO_MAX_PIXELS;
        case host::Limit::memory: return TARVO_MAX_MEMORY;
        case host::Limit::sides: break;
    }
    return TARVO_MAX_SIDES;
}

Failure file_failure(const host::FileError& error, const std::string& path) {
    const Told told = told_by(error, TARVO_FILE);
    Failure failure(told.status, error.what());
    failure.limit = told.limit;
    failure.file = path;
    return failure;
}

void require(const void* pointer, const char* name) {
    if (!pointer) throw wrong_use(std::string(name) + " is NULL");
}

KeptError error_of(const Failure& failure) noexcept { return KeptError(made(told_by(failure))); }

tarvo_status report(tarvo_error** error) noexcept {
    try {
        throw;
    } catch (const Failure& failure) {
        return give(error, told_by(failure));
    } catch (const host::Cancelled&) {
        return give(error, {TARVO_CANCELLED, "stopped by the caller"});
    } catch (const host::FileError& failure) {
        return give(error, told_by(failure, TARVO_FILE));
    } catch (const host::LimitedError& failure) {
        Told told = told_by(failure, TARVO_LIMIT);
        told.refusal = told.message;
        return give(error, told);
    } catch (const host::CallError& failure) {
        return give(error, {TARVO_USE, failure.what()});
    } catch (const language::PlacedError& failure) {
        return give(error, {TARVO_USE, failure.what()});
    } catch (const std::bad_alloc&) {
        if (error) *error = no_memory();
        return TARVO_MEMORY;
    } catch (const std::length_error&) {
        if (error) *error = no_memory();
        return TARVO_MEMORY;
    } catch (const std::exception& failure) {
        return give(error, {TARVO_OPERATION, failure.what()});
    } catch (...) {
        return give(error, {TARVO_OPERATION, "an unknown failure"});
    }
}

}  // namespace tarvo::library

using tarvo::library::kNoMemory;

tarvo_status tarvo_error_status(const tarvo_error* error) { return error ? error->status : TARVO_OK; }
int32_t tarvo_error_code(const tarvo_error* error) { return error ? error->code : 0; }
tarvo_limit tarvo_error_limit(const tarvo_error* error) { return error ? error->limit : TARVO_NO_LIMIT; }
const char* tarvo_error_message(const tarvo_error* error) { return error ? error->message : ""; }
const char* tarvo_error_operation(const tarvo_error* error) { return error ? error->operation : ""; }
const char* tarvo_error_argument(const tarvo_error* error) { return error ? error->argument : ""; }
const char* tarvo_error_reason(const tarvo_error* error) { return error ? error->reason : ""; }
const char* tarvo_error_refusal(const tarvo_error* error) { return error ? error->refusal : ""; }
const char* tarvo_error_file(const tarvo_error* error) { return error ? error->file : ""; }

void tarvo_error_free(tarvo_error* error) {
    if (error != &kNoMemory) std::free(error);
}
