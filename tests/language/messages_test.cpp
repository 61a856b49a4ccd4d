// The pieces that messages are made of.

#include <gtest/gtest.h>

#include <vector>

#include "call_expression.h"
#include "excerpt.h"
#include "suggestions.h"

namespace tarvo::language {
namespace {

TEST(Excerpt, ShortTextsAreShownWhole) {
    EXPECT_EQ(excerpt("F(1)", 2), "  F(1)\n    ^");
    EXPECT_EQ(excerpt("F(1", 3), "  F(1\n     ^");
    EXPECT_EQ(excerpt("", 0), "  \n  ^");
    EXPECT_EQ(excerpt("\u00E4\u20AC(1)", 6), "  \u00E4\u20AC(1)\n     ^");
    EXPECT_EQ(excerpt("F(\x1B, 1)", 3), "  F(\\x1B, 1)\n        ^");
}

TEST(Excerpt, LongTextsAreCutAroundThePlace) {
    const std::string text = std::string(1000, 'a') + "?" + std::string(1000, 'b');
    const std::string as(40, 'a'), blanks(43, ' ');
    EXPECT_EQ(excerpt(text, 1000), "  ..." + as + "?" + std::string(49, 'b') + "...\n  " + blanks + "^");
    EXPECT_EQ(excerpt(text, 0), "  " + std::string(50, 'a') + "...\n  ^");
    EXPECT_EQ(excerpt(text, text.size()), "  ..." + std::string(40, 'b') + "\n  " + blanks + "^");
    std::string wide;
    for (int i = 0; i < 500; ++i) wide += "\u20AC";
    const std::string shown = excerpt(wide, 300 * 3);
    EXPECT_EQ(shown.substr(0, 8), "  ...\u20AC");  // characters stay whole
    EXPECT_EQ(shown.find("\\x"), std::string::npos);
}

TEST(Excerpt, ACallOf700KilobytesGivesAShortMessage) {
    std::string text = "F(1";
    while (text.size() < 700'000) text += ", 1";
    try {
        parse_call(text + "?");
        ADD_FAILURE() << "taken";
    } catch (const ExpressionError& error) {
        EXPECT_EQ(error.what(), "column " + std::to_string(text.size() + 1) + ": expected \",\" or \")\", found \"?\"");
        EXPECT_LT(excerpt(text, error.position()).size(), 200u);
    }
    EXPECT_GT(parse_call(text + ")").arguments.size(), 200'000u);
}

TEST(Suggestion, IsTheNearestName) {
    const std::vector<std::string_view> names = {"Stretch", "Trim", "Transition", "Add", "center"};
    EXPECT_EQ(closest_name("Strech", names), "Stretch");
    EXPECT_EQ(closest_name("stretchh", names), "Stretch");
    EXPECT_EQ(closest_name("Tirm", names), "Trim");  // neighbours swapped
    EXPECT_EQ(closest_name("centre", names), "center");
    EXPECT_EQ(closest_name("ad", names), "Add");
    EXPECT_EQ(closest_name("transitoin", names), "Transition");
    EXPECT_EQ(closest_name("ABC", names), "");
    EXPECT_EQ(closest_name("Trimm", std::vector<std::string_view>{"Trims", "Trim", "Trimms"}), "Trims");  // the first
    EXPECT_EQ(closest_name("Trimming", std::vector<std::string_view>{"Trimmxxg", "Trimmin"}), "Trimmin");
    EXPECT_EQ(closest_name("", names), "");
    EXPECT_EQ(closest_name(std::string(100000, 'a'), names), "");
    EXPECT_EQ(did_you_mean({"Trim"}), "; did you mean Trim?");
    EXPECT_EQ(did_you_mean({"Trim", "Add"}), "; did you mean Trim or Add?");
    EXPECT_EQ(did_you_mean({""}), "");
}

}  // namespace
}  // namespace tarvo::language
