#include "failure.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "caller.h"
#include "file_error.h"
#include "host.h"
#include "placed_error.h"

// The texts follow in the same block of memory.
struct tarvo_error {
    tarvo_status status;
    std::int32_t code;
    const char* message;
    const char* operation;
    const char* argument;
};

namespace tarvo::library {
namespace {

// Stands for every error that there is no memory for. Nobody writes to an error.
constexpr tarvo_error kNoMemory = {TARVO_MEMORY, 0, "not enough memory", "", ""};

// A text may hold a zero byte, at which it ends for the caller.
const char* put(char*& place, std::string_view text) {
    char* const begin = place;
    if (!text.empty()) std::memcpy(begin, text.data(), text.size());
    begin[text.size()] = '\0';
    place += text.size() + 1;
    return begin;
}

tarvo_status give(tarvo_error** error, tarvo_status status, std::string_view message, std::int32_t code = 0,
                  std::string_view operation = {}, std::string_view argument = {}) noexcept {
    if (!error) return status;
    const std::size_t texts = message.size() + operation.size() + argument.size() + 3;
    void* const block = std::malloc(sizeof(tarvo_error) + texts);
    if (!block) {
        *error = const_cast<tarvo_error*>(&kNoMemory);
        return TARVO_MEMORY;
    }
    char* place = static_cast<char*>(block) + sizeof(tarvo_error);
    const char* const first = put(place, message);
    const char* const second = put(place, operation);
    *error = new (block) tarvo_error{status, code, first, second, put(place, argument)};
    return status;
}

tarvo_status status_of(const host::LimitedError& error, tarvo_status without_limit) {
    if (!error.limit()) return without_limit;
    return *error.limit() == host::Limit::memory ? TARVO_MEMORY : TARVO_LIMIT;
}

}  // namespace

void require(const void* pointer, const char* name) {
    if (!pointer) throw wrong_use(std::string(name) + " is NULL");
}

tarvo_status report(tarvo_error** error) noexcept {
    try {
        throw;
    } catch (const Failure& failure) {
        return give(error, failure.status, failure.what(), failure.code, failure.operation, failure.argument);
    } catch (const host::Cancelled&) {
        return give(error, TARVO_CANCELLED, "stopped by the caller");
    } catch (const host::FileError& failure) {
        return give(error, status_of(failure, TARVO_FILE), failure.what());
    } catch (const host::LimitedError& failure) {
        return give(error, status_of(failure, TARVO_LIMIT), failure.what());
    } catch (const host::CallError& failure) {
        return give(error, TARVO_USE, failure.what());
    } catch (const language::PlacedError& failure) {
        return give(error, TARVO_USE, failure.what());
    } catch (const std::bad_alloc&) {
        if (error) *error = const_cast<tarvo_error*>(&kNoMemory);
        return TARVO_MEMORY;
    } catch (const std::length_error&) {
        if (error) *error = const_cast<tarvo_error*>(&kNoMemory);
        return TARVO_MEMORY;
    } catch (const std::exception& failure) {
        return give(error, TARVO_OPERATION, failure.what());
    } catch (...) {
        return give(error, TARVO_OPERATION, "an unknown failure");
    }
}

}  // namespace tarvo::library

using tarvo::library::kNoMemory;

tarvo_status tarvo_error_status(const tarvo_error* error) { return error ? error->status : TARVO_OK; }
int32_t tarvo_error_code(const tarvo_error* error) { return error ? error->code : 0; }
const char* tarvo_error_message(const tarvo_error* error) { return error ? error->message : ""; }
const char* tarvo_error_operation(const tarvo_error* error) { return error ? error->operation : ""; }
const char* tarvo_error_argument(const tarvo_error* error) { return error ? error->argument : ""; }

void tarvo_error_free(tarvo_error* error) {
    if (error != &kNoMemory) std::free(error);
}
