// Calls bound to methods that a test declares, and the values that their parameters get.

#include "call_binding.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "argument_values.h"
#include "caller.h"
#include "declared_plugin.h"
#include "host.h"
#include "placed_error.h"

namespace tarvo::language {
namespace {

using host::Nil;
using host::Value;

const test::Declared kDeclared = {
    .methods = {"Nothing()",
                "One(i as integer)",
                "Two(i as integer, j as integer)",
                "Flag(b as boolean)",
                "Text(s as string)",
                "Texts(s() as string)",
                "Numbers(i as integer, d as double)",
                "Which(i as integer)",
                "Which(d as double)",
                "Image(p as picture)",
                "Region(r as TRV_Rectangle)",
                "Kernel(c as TRV_Convolution)",
                "Back(ByRef i as integer, ByRef b as boolean)",
                "Frame(width as integer, height as integer)",
                "TRV_GetLastError(unknown as integer)",
                "Mixed(i as integer, j as integer)",
                "Mixed(b as boolean)",
                "Sized(extends p as picture, width as integer, height as integer)",
                "Deep(extends p as picture, width as integer, depth as integer)",
                "Tall(extends p as picture, height as integer, width as integer)",
                "Real(extends p as picture, width as double, height as integer)",
                "Listed(extends p as picture, width() as integer, height as integer)",
                "Wide(extends p as picture, width as integer)"},
    .classes = {{"TRV_Convolution", {"SetCoefficients(coeffs() as integer)"}},
                {"Other", {"SetCoefficients(coeffs() as integer)"}}},
};

class CallBinding : public testing::Test {
protected:
    CallBinding() { test::start_plugin(host, kDeclared); }

    Binding bind(const CallExpression& call, const std::string& text, const std::string& in_hand = "") {
        return bind_call(caller(), call, text, in_hand);
    }
    // The message of a call that is refused.
    std::string refusal(const std::string& text, const std::string& in_hand = "") {
        try {
            bind(parse_call(text), text, in_hand);
        } catch (const PlacedError& error) {
            return error.what();
        }
        return "(taken)";
    }
    ArgumentValues made(const CallExpression& call, const std::string& text) {
        const Binding binding = bind(call, text);
        return make_values(caller(), call, binding, Nil{}, [&](const std::string& path) {
            files.push_back(path);
            return Value(host.new_picture({.width = 1, .height = 1}));
        });
    }
    ArgumentValues made(const std::string& text) { return made(parse_call(text), text); }
    // A call with values that a program has.
    static CallExpression given(const std::string& name, const std::vector<Value>& values) {
        CallExpression call{name, 0, {}};
        for (const Value& value : values) call.arguments.push_back({"", Given{value}, 0, 0, 0});
        return call;
    }

    host::Caller& caller() {
        if (!caller_) caller_.emplace(host);
        return *caller_;
    }

    host::Host host;
    std::vector<std::string> files;

private:
    std::optional<host::Caller> caller_;
};

TEST_F(CallBinding, FormulasFitNumbersAlone) {
    EXPECT_EQ(made("Numbers(1 + 2, 1 + 2)").values, (std::vector<Value>{3, 3.0}));
    EXPECT_EQ(made("Numbers(1.5 + 2, 1.5 + 2)").values, (std::vector<Value>{4, 3.5}));
    EXPECT_EQ(made("Which(1 + 1)").values, (std::vector<Value>{2}));
    EXPECT_EQ(made("Which(1 + 1.0)").values, (std::vector<Value>{2.0}));
    EXPECT_EQ(refusal("Flag(1 + 1)"), "b: expected true or false, found 1 + 1");
    EXPECT_EQ(refusal("Text(1 + 1)"), "s: expected a text in quotes, found 1 + 1");
}

TEST_F(CallBinding, TextsFitNoArrays) {
    EXPECT_EQ(refusal("Texts(\"a\")"), "s: expected nil, found the text \"a\"");
    EXPECT_EQ(refusal("Text(\"a\")"), "(taken)");
    EXPECT_EQ(made("Texts(nil)").values, std::vector<Value>{Nil{}});
}

TEST_F(CallBinding, WhatWasFoundIsToldWithoutTheBlanksBehindIt) {
    EXPECT_EQ(refusal("Flag(7 \t)"), "b: expected true or false, found 7");
    EXPECT_EQ(refusal("Flag(7\t )"), "b: expected true or false, found 7");
}

TEST_F(CallBinding, GivenValuesAreToldByTheirTypes) {
    EXPECT_EQ(made(given("Numbers", {7, 8}), "Numbers").values, (std::vector<Value>{7, 8}));
    const auto refused = [&](const Value& value) {
        try {
            bind(given("One", {value}), "One");
        } catch (const PlacedError& error) {
            return std::string(error.what());
        }
        return std::string("(taken)");
    };
    EXPECT_EQ(refused(Nil{}), "i: expected integer, found nil");
    EXPECT_EQ(refused(host.new_string("1")), "i: expected integer, found string");
}

TEST_F(CallBinding, VariablesBeginWithWhatIsGivenIfItFits) {
    EXPECT_EQ(made("Back()").values, (std::vector<Value>{0, false}));
    EXPECT_EQ(made("Back(7, true)").values, (std::vector<Value>{7, true}));
    EXPECT_EQ(made(given("Back", {7, true}), "Back").values, (std::vector<Value>{7, true}));
    EXPECT_EQ(made(given("Back", {host.new_string("7"), 1}), "Back").values, (std::vector<Value>{0, false}));
}

TEST_F(CallBinding, CountsAreTold) {
    EXPECT_EQ(refusal("One(1, 2)"), "it takes at most 1 argument, found 2\n    One(i)");
    EXPECT_EQ(refusal("Two(1, 2, 3)"), "it takes at most 2 arguments, found 3\n    Two(i, j)");
    EXPECT_EQ(refusal("Nothing(1)"), "it takes at most 0 arguments, found 1\n    Nothing()");
}

TEST_F(CallBinding, WhatIsNotDescribedCannotBeLeftOut) {
    EXPECT_EQ(refusal("TRV_GetLastError()"), "missing: unknown\n    TRV_GetLastError(unknown)");
}

TEST_F(CallBinding, OfSeveralMethodsThoseThatTakeMostAreTold) {
    EXPECT_EQ(refusal("Mixed(1)"), "missing: j\n    Mixed(i, j)");
    EXPECT_EQ(refusal("Mixed(\"a\")"), "i or b: expected an integer or true or false, found the text \"a\"");
    EXPECT_EQ(refusal("Mixed()"),
              "none of these takes the call:\n    Mixed(i, j): missing: i, j\n    Mixed(b): missing: b");
    EXPECT_EQ(refusal("Which()"), "none of these takes the call:\n    Which(i): missing: i\n    Which(d): missing: d");
}

TEST_F(CallBinding, FitStandsForWholeSidesInTheirOrder) {
    const std::string text = "Sized(fit(10))";
    const Binding binding = bind(parse_call(text), text, "picture");
    ASSERT_EQ(binding.fillings.size(), 3u);
    EXPECT_TRUE(binding.has_object());
    EXPECT_EQ(binding.fillings[1].source, Filling::Source::fitted_width);
    EXPECT_EQ(binding.fillings[2].source, Filling::Source::fitted_height);
    for (const std::string name : {"Deep", "Tall", "Real", "Listed", "Wide"})
        EXPECT_TRUE(refusal(name + "(fit(10))", "picture")
                        .starts_with("fit(...) stands for a width and a height, in their place"))
            << name;
    EXPECT_TRUE(refusal("Sized(width = fit(10))", "picture")
                    .starts_with("fit(...) stands for a width and a height, in their place"));
    EXPECT_EQ(refusal("Sized(fit(10))"), "it needs a picture: name a file before the calls");
}

TEST_F(CallBinding, WhatNeedsNoPictureIsTakenWithoutOne) {
    EXPECT_EQ(refusal("Image(a.png)"), "(taken)");
    EXPECT_EQ(refusal("Region(rect(1, 2, 3, 4))"), "(taken)");
    EXPECT_EQ(refusal("Region(rect(1, 2, width, 4))"), "r: there is no picture in hand to measure");
    EXPECT_EQ(refusal("Region(border())"), "r: there is no picture in hand to measure");
    EXPECT_EQ(refusal("Frame(fit(10))"), "width: there is no picture in hand to measure");
    EXPECT_EQ(refusal("One(width)"), "i: there is no picture in hand to measure");
    made("Image(width)");
    EXPECT_EQ(files, std::vector<std::string>{"width"});
}

TEST_F(CallBinding, MethodsWithoutParametersHaveNoObject) {
    EXPECT_FALSE(bind(parse_call("Nothing()"), "Nothing()").has_object());
    EXPECT_FALSE(bind(parse_call("One(1)"), "One(1)").has_object());
}

TEST_F(CallBinding, ClassesThatAreNotThereCannotBeWritten) {
    EXPECT_THROW(made("Region(rect(1, 2, 3, 4))"), PlacedError);
}

TEST_F(CallBinding, CautionsAreThoseOfTheClassThatIsMade) {
    const ArgumentValues values = made("Kernel(convolution(0, 0, 0, 0))");
    ASSERT_EQ(values.notes.size(), 1u);
    EXPECT_TRUE(values.notes[0].starts_with("c: ")) << values.notes[0];
}

TEST_F(CallBinding, NilIsNoOddText) { EXPECT_EQ(made("Text(nil)").notes, std::vector<std::string>{}); }

}  // namespace
}  // namespace tarvo::language
