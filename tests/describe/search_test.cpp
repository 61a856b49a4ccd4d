// How people find an operation.

#include <gtest/gtest.h>

#include <algorithm>

#include "search.h"
#include "session.h"

namespace tarvo::test {
namespace {

using Names = std::vector<std::string>;

class Search : public testing::Test {
protected:
    Session session;
    reference::Reference reference{session.caller};

    std::string_view operation(std::string_view name) {
        const auto* const found = reference::find_operation(reference, name);
        return found ? found->about->name : "nothing";
    }
};

TEST_F(Search, NamesAreFoundHoweverTheyAreSpelled) {
    EXPECT_EQ(operation("TRV_Stretch"), "TRV_Stretch");
    EXPECT_EQ(operation("stretch"), "TRV_Stretch");
    EXPECT_EQ(operation("trv_ADJUSTRGB_inplace"), "TRV_AdjustRGB_InPlace");
    EXPECT_EQ(operation("rectangle.scaleby"), "ScaleBy");
    EXPECT_EQ(operation("TRV_ClientPicture.operator_convert"), "operator_convert");
    for (const char* none : {"", "trv_", "stretc", "resize", "ScaleBy", "Rectangle.", "none.Area", "Rectangle.None"})
        EXPECT_EQ(operation(none), "nothing") << none;
    ASSERT_NE(reference::find_class(reference, "colorMATRIX"), nullptr);
    EXPECT_EQ(reference::find_class(reference, "colorMATRIX")->about->name, "TRV_ColorMatrix");
    EXPECT_EQ(reference::find_class(reference, "picture"), nullptr);
}

TEST_F(Search, MethodsOfOneNameAreTheirClasses) {
    for (const reference::Class& cls : reference.classes())
        for (const reference::Operation& method : cls.methods)
            EXPECT_EQ(reference::find_operation(reference,
                                                std::string(cls.about->name) + "." + std::string(method.about->name)),
                      &method);
}

TEST_F(Search, WordsCountFromTheirBeginnings) {
    const describe::Text words[] = {"black and white", "threshold"};
    for (const char* text : {"black", "WHITE", "and w", "thresh", "black and white"})
        EXPECT_TRUE(reference::have_word(words, text)) << text;
    for (const char* text : {"lack", "hold", "white and", "blackand"})
        EXPECT_FALSE(reference::have_word(words, text)) << text;
}

TEST_F(Search, PeopleFindWhatTheyLookFor) {
    const std::pair<const char*, const char*> asked[] = {
        {"blur", "TRV_Convolute"},    {"sharpen", "TRV_Convolute"}, {"resize", "TRV_Stretch"},
        {"thumbnail", "TRV_Stretch"}, {"crop", "TRV_Trim"},         {"merge", "TRV_Composite"},
        {"mirror", "TRV_FlipRotate"}, {"sepia", "TRV_AdjustRGB"},   {"screenshot", "TRV_ScreenCapture"},
    };
    for (const auto& [word, name] : asked)
        EXPECT_TRUE(reference::have_word(reference::find_operation(reference, name)->about->words, word)) << word;
}

TEST_F(Search, NearNamesAreOffered) {
    EXPECT_EQ(reference::near_names(reference, "Strech"), Names{"TRV_Stretch"});
    EXPECT_EQ(reference::near_names(reference, "trv_tirm"), Names{"TRV_Trim"});
    EXPECT_EQ(reference::near_names(reference, "resize"), Names{"TRV_Stretch"});
    EXPECT_EQ(reference::near_names(reference, "rectangel"), Names{"TRV_Rectangle"});
    EXPECT_EQ(reference::near_names(reference, "xyzzy"), Names{});
    EXPECT_EQ(reference::near_names(reference, ""), Names{});
    EXPECT_EQ(reference::near_names(reference, std::string(1 << 20, 'x')), Names{});
    EXPECT_LE(reference::near_names(reference, "mask").size(), 4u);
    // Another of its words is nearly so, and the nearest counts.
    const Names bright = reference::near_names(reference, "brightness");
    EXPECT_NE(std::find(bright.begin(), bright.end(), "TRV_AdjustGamma"), bright.end());
}

}  // namespace
}  // namespace tarvo::test
