// The parser of declarations.

#include <string_view>

#include "declaration.h"
#include "fuzz_check.h"

using namespace tarvo::host;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const Declaration declaration = parse_declaration(text);
        FUZZ_CHECK(declaration.text == text);
        FUZZ_CHECK(!declaration.name.empty());
        for (const Parameter& parameter : declaration.parameters) {
            FUZZ_CHECK(!parameter.name.empty() && !to_string(parameter.type).empty());
            FUZZ_CHECK(!parameter.extends || &parameter == &declaration.parameters.front());
        }
    } catch (const DeclarationError& error) {
        FUZZ_CHECK(error.column() >= 1 && error.column() <= size + 1);
    }
    return 0;
}
