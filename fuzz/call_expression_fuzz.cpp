// The parser of calls as the tool takes them.

#include <string_view>

#include "call_expression.h"
#include "fuzz_check.h"

using namespace tarvo::cli;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const CallExpression call = parse_call(text);
        FUZZ_CHECK(!call.name.empty());
        std::size_t column = 0;
        for (const ArgumentExpression& argument : call.arguments) {
            FUZZ_CHECK(argument.column > column && argument.column <= size);
            column = argument.column;
        }
    } catch (const ExpressionError& error) {
        FUZZ_CHECK(error.column() >= 1 && error.column() <= size + 1);
        FUZZ_CHECK(std::string_view(error.what()).find('\n') == std::string_view::npos);
    }
    return 0;
}
