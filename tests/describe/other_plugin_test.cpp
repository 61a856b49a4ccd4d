// What is told of a plugin that registers less than there is, or the same twice.

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "call_numbers.h"
#include "declared_plugin.h"
#include "search.h"
#include "session.h"

namespace tarvo::test {
namespace {

class OtherPlugin : public testing::Test {
protected:
    reference::Reference reference_of(const Declared& declared) {
        start_plugin(host, declared);
        caller_.emplace(host);
        return reference::Reference(*caller_);
    }
    const host::Callable& callable(std::size_t index) const { return caller_->callables()[index]; }

    host::Host host;

private:
    std::optional<host::Caller> caller_;
};

TEST_F(OtherPlugin, WithoutDescribedOperationsHasNone) {
    const reference::Reference reference = reference_of({.methods = {"Unknown()"}, .classes = {{"Unknown", {}}}});
    EXPECT_TRUE(reference.operations().empty());
    EXPECT_TRUE(reference.classes().empty());
    EXPECT_TRUE(reference.codes().empty()) << "nobody is there to ask for their texts";
}

TEST_F(OtherPlugin, ThatGivesNoTextsHasEmptyOnes) {
    const reference::Reference reference =
        reference_of({.methods = {"TRV_GetErrorMessage(error_code as integer) as String"}});
    ASSERT_FALSE(reference.codes().empty());
    for (const reference::Code& code : reference.codes()) EXPECT_EQ(code.text, "");
}

TEST_F(OtherPlugin, ThatGivesNumbersForTextsHasEmptyOnes) {
    const reference::Reference reference =
        reference_of({.methods = {"TRV_GetErrorMessage(error_code as integer) as integer"}});
    ASSERT_FALSE(reference.codes().empty());
    for (const reference::Code& code : reference.codes()) EXPECT_EQ(code.text, "");
}

TEST_F(OtherPlugin, DeclarationsAreToldOnce) {
    const reference::Reference reference =
        reference_of({.methods = {"TRV_GetLastError() as integer", "TRV_GetLastError() as integer"}});
    const auto* const found = reference::find_operation(reference, "TRV_GetLastError");
    ASSERT_NE(found, nullptr);
    ASSERT_EQ(found->forms.size(), 1u);
    EXPECT_EQ(found->forms[0].callable, &callable(0));
}

TEST_F(OtherPlugin, ArgumentsThatComeBackAreOthers) {
    const reference::Reference reference =
        reference_of({.methods = {"TRV_GetAverageRGB(extends p as picture, ByRef red as integer)",
                                  "TRV_GetAverageRGB(extends p as picture, red as integer)",
                                  "TRV_GetAverageRGB(extends p as picture, red as double)",
                                  "TRV_GetAverageRGB(extends cp as TRV_ClientPicture, red as integer)"}});
    const auto* const found = reference::find_operation(reference, "TRV_GetAverageRGB");
    ASSERT_NE(found, nullptr);
    std::multiset<std::tuple<std::string, bool, std::size_t>> arguments;
    for (const reference::Argument& each : found->arguments)
        if (each.about->name == "red") arguments.insert({each.type, each.by_ref, each.forms.size()});
    EXPECT_EQ(arguments, (std::multiset<std::tuple<std::string, bool, std::size_t>>{
                             {"integer", true, 1}, {"integer", false, 2}, {"double", false, 1}}));
}

TEST_F(OtherPlugin, CautionsAreOfWhatIsGiven) {
    reference_of({.methods = {"TRV_AdjustGamma(extends p as picture, center as color, red_factor as double)",
                              "TRV_AdjustGamma(extends p as picture, red_factor as double)",
                              "TRV_AdjustGamma(extends p as picture, center as color)"}});
    const auto cautions = [&](std::size_t index, const std::vector<Value>& values) {
        return reference::CallNumbers(callable(index), values).cautions().size();
    };
    EXPECT_EQ(cautions(0, {Nil{}, Color{0xF00000}, 100.0}), 1u);
    EXPECT_EQ(cautions(0, {Nil{}, 0xF00000, 100.0}), 1u) << "an integer is taken for a colour";
    EXPECT_EQ(cautions(0, {Nil{}, true, 100.0}), 0u) << "no colour";
    EXPECT_EQ(cautions(0, {Nil{}, Color{0xF00000}, true}), 0u) << "no number";
    EXPECT_EQ(cautions(1, {Nil{}, 100.0}), 0u);
    EXPECT_EQ(cautions(2, {Nil{}, Color{0xF00000}}), 0u);
}

TEST(Ranges, HaveEndsOfBothKinds) {
    using describe::excluding, describe::including;
    host::Host host;
    start_plugin(host, {.methods = {"F(times as integer)"}});
    const host::Callables callables(host.registry());
    const std::vector<Value> values = {3};
    const reference::CallNumbers numbers(callables.all().front(), values);
    const auto within = [&](describe::Bound low, describe::Bound high, double value) {
        return numbers.is_within({.name = "x", .minimum = low, .maximum = high}, value);
    };
    EXPECT_TRUE(within(including(1), {}, 1));
    EXPECT_FALSE(within(including(1), {}, 0.5));
    EXPECT_TRUE(within(excluding(1), {}, 1.5));
    EXPECT_FALSE(within(excluding(1), {}, 1));
    EXPECT_TRUE(within({}, including(1), 1));
    EXPECT_FALSE(within({}, including(1), 1.5));
    EXPECT_TRUE(within({}, excluding(1), 0.5));
    EXPECT_FALSE(within({}, excluding(1), 1));
    EXPECT_TRUE(within({}, excluding(2, "times"), 5));
    EXPECT_FALSE(within({}, excluding(2, "times"), 6));
    EXPECT_FALSE(within({}, excluding(2, "none"), 0)) << "twice what is not there is 0";
    EXPECT_TRUE(within({}, {}, 1e300));
}

}  // namespace
}  // namespace tarvo::test
