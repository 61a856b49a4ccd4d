// The last error's code, and the texts of all codes.

#include <gtest/gtest.h>

#include "session.h"

namespace tarvo::test {
namespace {

TEST(Errors, TextsOfAllCodes) {
    const std::pair<int, const char*> texts[] = {
        {0, "General Error: No Error"},
        {2, "General Error: \"source\" parameter is nil"},
        {4, "General Error: can't lock \"source\" picture"},
        {5, "General Error: can't lock intermediate picture"},
        {6, "General Error: can't lock result picture"},
        {7, "General Error: can't get DIB object"},
        {8, "General Error: \"mask\" parameter is nil"},
        {9, "General Error: can't lock \"mask\" picture"},
        {10, "General Error: \"mask\" is not same size as \"source\""},
        {11, "General Error: \"mask\" is not greyscale (1, 2, 4, or 8 bit)"},
        {12, "General Error: \"mask\" is not black and white (1 bit)"},
        {13, "General Error: \"overlay\" parameter is nil"},
        {14, "General Error: can't lock \"overlay\" picture"},
        {15, "General Error: \"overlay_fraction\" positioned out of bounds"},
        {16, "General Error: \"overlay\" positioned out of bounds"},
        {17, "General Error: \"overlay\" is wrong size"},
        {18, "General Error: \"addend\" is nil"},
        {19, "General Error: can't lock \"addend\" picture"},
        {20, "General Error: \"addend\" is wrong size"},
        {21, "General Error: \"subtractend\" is nil"},
        {22, "General Error: can't lock \"subtractend\" picture"},
        {23, "General Error: \"subtractend\" is wrong size"},
        {24, "General Error: \"color_matrix\" parameter is nil"},
        {25, "General Error: \"convolution\" parameter is nil"},
        {26, "TRV_Pixelate Error: \"start_row\" parameter is out of bounds"},
        {27, "TRV_Pixelate Error: \"start_col\" parameter is out of bounds"},
        {28, "TRV_Pixelate Error: \"row_count\" parameter is out of bounds"},
        {29, "TRV_Pixelate Error: \"col_count\" parameter is out of bounds"},
        {30, "TRV_Pixelate Error: \"pixelation\" parameter is out of bounds"},
        {31, "Rotate Error: \"rotation\" parameter is out of bounds"},
        {32, "Rotate Error: \"rotation_oversample\" parameter is out of bounds"},
        {33, "Shear Error: \"shear_pixels\" parameter is out of bounds"},
        {34, "Stretch Error: \"width\" parameter is out of bounds"},
        {35, "Stretch Error: \"height\" parameter is out of bounds"},
        {36, "Stretch Error: \"oversample\" parameter is out of bounds"},
        {37, "Stretch Error: \"blur\" parameter is out of bounds"},
        {38, "Color Error: invalid selection"},
        {39, "Color Error: invalid trim area"},
        {40, "Color Error: red parameter out of bounds"},
        {41, "Color Error: green parameter out of bounds"},
        {42, "Color Error: blue parameter out of bounds"},
        {43, "Color Error: degrees out of bounds"},
        {44, "Color Error: saturation factor out of bounds"},
        {45, "Color Error: brightness factor out of bounds"},
        {46, "Color Error: ant size out of bounds"},
        {47, "Color Error: ant state out of bounds"},
        {48, "Color Error: bits per channel out of bounds"},
        {49, "Compare Error: \"compare\" parameter is nil"},
        {50, "Compare Error: can't lock \"compare\" picture"},
    };
    Session session;
    EXPECT_EQ(std::size(texts), 49u);
    for (const auto& [code, text] : texts) EXPECT_EQ(session.error_message(code), text) << code;
    for (const int code : {1, 3, 51, 52, -1, -2147483647 - 1, 2147483647})
        EXPECT_EQ(session.error_message(code), "Unknown Error") << code;
}

TEST(Errors, TheCodeStaysUntilTheNextOperation) {
    Session session;
    const ObjectRef small = session.picture(10, 10), large = session.picture(10, 11);
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_FALSE(picture_in(session.call(small, "TRV_Add", large, 0)));
    EXPECT_EQ(session.last_error(), 20);
    EXPECT_EQ(session.last_error(), 20);
    EXPECT_EQ(session.error_message(3), "Unknown Error");  // asking for a text changes nothing
    EXPECT_EQ(session.last_error(), 20);
    EXPECT_TRUE(picture_in(session.call(small, "TRV_Add", small, 0)));
    EXPECT_EQ(session.last_error(), 0);
}

TEST(Errors, AHostThatCannotMakeTheTextGivesNil) {
    Session session;
    session.host.faults.fail_at("REALBuildString", 1);
    const Value text = session.invoke("TRV_GetErrorMessage", 2);
    EXPECT_FALSE(object_in(text));
}

}  // namespace
}  // namespace tarvo::test
