#include "error_state.h"

#include <cstring>

#include "host_services.h"

namespace tarvo::plugin {

const char* error_message(std::int32_t code) {
    switch (code) {
#define TRV_ERROR_TEXT(number, name, text) \
    case number: return text;
        TRV_ERRORS(TRV_ERROR_TEXT)
#undef TRV_ERROR_TEXT
    }
    return kUnknownError;
}

}  // namespace tarvo::plugin

using namespace tarvo::plugin;

constinit thread_local std::int32_t gTRV_Error = 0;

int TRV_GetLastError() { return gTRV_Error; }

REALstringStruct* TRV_GetErrorMessage(int error_code) {
    const char* const text = error_message(error_code);
    return REALBuildString(text, static_cast<int>(std::strlen(text)));
}
