// Which calls need no more of a picture than a smaller one has.

#include "draft.h"

#include <gtest/gtest.h>

#include <string_view>

#include "caller.h"
#include "declared_plugin.h"
#include "host.h"

namespace tarvo::language {
namespace {

const test::Declared kDeclared = {
    .methods = {
        "TRV_Stretch(extends p as picture, width as integer, height as integer, mode as integer = 0) as picture",
        "TRV_Trim(extends p as picture, width as integer, height as integer) as picture",
        "Unheard(extends p as picture, width as integer, height as integer) as picture"}};

class SmallerPictures : public testing::Test {
protected:
    SmallerPictures() { test::start_plugin(host, kDeclared); }

    bool suit(std::string_view call, const Size& smaller = {50, 40}) {
        const host::Caller caller(host);
        return suits_smaller(caller, call, {400, 320}, smaller);
    }

    host::Host host;
};

TEST_F(SmallerPictures, SuitCallsThatTellASizeNoLarger) {
    EXPECT_TRUE(suit("Stretch(50, 40)"));
    EXPECT_TRUE(suit("Stretch(2 * 10, 40, mode = 1)"));
    EXPECT_TRUE(suit("Stretch(fit(40, 40))"));
    EXPECT_FALSE(suit("Stretch(51, 40)"));
    EXPECT_FALSE(suit("Stretch(50, 41)"));
    EXPECT_FALSE(suit("Stretch(fit(45, 45))", {40, 40})) << "which is of another shape";
}

TEST_F(SmallerPictures, SuitNothingThatTheTextDoesNotTell) {
    for (const char* call : {"Stretch(width, 40)", "Stretch(50, height)", "Stretch(&c000010, 40)",
                             "Stretch(50, &c000010)", "Stretch(fit(width))", "Trim(50, 40)", "Unheard(50, 40)",
                             "Stretch(50", "Stretch(50)", "NothingOfThatName(50, 40)", ""})
        EXPECT_FALSE(suit(call)) << call;
}

}  // namespace
}  // namespace tarvo::language
