// What the library says of itself, and memory that it gave out.

#include <cstdlib>
#include <string>

#include "engine.h"
#include "json.h"
#include "tarvo.h"

namespace {

std::string description() {
    tarvo::library::CallHost call({});
    return tarvo::reference::description_json(tarvo::reference::Reference(call.caller()));
}

}  // namespace

const char* tarvo_version() { return TARVO_VERSION; }

const char* tarvo_description() {
    try {
        static const std::string& text = *new std::string(description());
        return text.c_str();
    } catch (...) {
        return nullptr;
    }
}

void tarvo_free(void* bytes) { std::free(bytes); }

const char* tarvo_code_message(int32_t code) { return code == 0 ? "" : tarvo::library::message_of_code(code); }
