// The plugin and what is told of it, which share no file, know the same codes by the same names.

#include <gtest/gtest.h>

#include "error_state.h"
#include "tables.h"

namespace tarvo::test {
namespace {

TEST(ErrorNames, AreThoseOfThePlugin) {
    std::vector<std::pair<int, std::string_view>> known, described;
#define TRV_NAMED_CODE(code, name, text) known.emplace_back(code, #name);
    TRV_ERRORS(TRV_NAMED_CODE)
#undef TRV_NAMED_CODE
    for (const describe::ErrorName& each : describe::error_names()) described.emplace_back(each.code, each.name);
    EXPECT_EQ(described, known);
}

}  // namespace
}  // namespace tarvo::test
