// Everything that the plugin registers, and its order.

#include <gtest/gtest.h>

#include <algorithm>

#include "client_picture_data.h"
#include "session.h"

namespace tarvo::test {
namespace {

// --- the order ------------------------------------------------------------------------------------------------------

// A name, and where there are overloads a parameter that tells them apart. The letters of declarations stand on the
// pages, which tests hold them to.
using Entry = std::string_view;

// clang-format off
const std::vector<Entry> kRegistrations = {
    "TRV_GetLastError", "TRV_GetErrorMessage",
    "class TRV_Rectangle", "class TRV_ColorMatrix", "class TRV_Convolution", "class TRV_ClientPicture",
    "extension picture",

    "TRV_Add p", "TRV_Subtract p",
    "TRV_AdjustContrast p", "TRV_AdjustContrastWithMask p", "TRV_GetAverageContrast p",
    "TRV_AdjustGamma p", "TRV_AdjustGammaWithMask p",
    "TRV_AdjustHSV p", "TRV_AdjustHSVWithMask p", "TRV_GetAverageHSV p",
    "TRV_AdjustRGB red_delta", "TRV_AdjustRGB_InPlace", "TRV_AdjustRGBWithMask red_delta",
    "TRV_AdjustRGB cm", "TRV_AdjustRGBWithMask cm", "TRV_GetAverageRGB",
    "TRV_AverageRGB p", "TRV_AverageRGBWithMask p",
    "TRV_FlipRotate",
    "TRV_Composite p", "TRV_Composite overlay_color", "TRV_CompositeWithMask",
    "TRV_ShearHorizontal", "TRV_ShearHorizontal frame_color",
    "TRV_ShearVertical", "TRV_ShearVertical frame_color",
    "TRV_FreeRotateByShear", "TRV_FreeRotateByShear frame_color",
    "TRV_Convolute", "TRV_CrawlingAnts", "TRV_Downsample", "TRV_MakeMemoryBlock", "TRV_Pixelate", "TRV_Stretch p",
    "TRV_Threshold", "TRV_ThresholdWithMask", "TRV_Transition", "TRV_Trim p",
    "TRV_ConvertToPicture", "TRV_ConvertToString", "TRV_RowBytes", "TRV_Info",

    "TRV_Add cp", "TRV_Subtract cp",
    "TRV_AdjustContrast cp", "TRV_AdjustContrastWithMask cp", "TRV_GetAverageContrast cp",
    "TRV_AdjustGamma cp", "TRV_AdjustGammaWithMask cp",
    "TRV_AdjustHSV cp", "TRV_AdjustHSVWithMask cp", "TRV_GetAverageHSV cp",
    "TRV_AverageRGB cp", "TRV_AverageRGBWithMask cp",
    "TRV_Composite cp", "TRV_Stretch cp", "TRV_Trim cp",

    "TRV_ScreenCapture", "TRV_MakeGradient", "TRV_MakeDoubleGradient",
};

const std::vector<Entry> kPictureMembers = {
    "TRV_FreeRotateDirect", "TRV_Compare", "TRV_Difference",
    "TRV_AdjustRGB red_delta", "TRV_AdjustRGB_InPlace", "TRV_AdjustRGBWithMask red_delta",
    "TRV_AdjustRGB cm", "TRV_AdjustRGBWithMask cm", "TRV_GetAverageRGB",
};
// clang-format on

// Classes and extensions as they are, methods by name and the parameter where the entry names one.
bool is(std::string_view registered, Entry entry) {
    if (registered.find('(') == std::string_view::npos) return registered == entry;
    const auto blank = entry.find(' ');
    const host::Declaration declaration = host::parse_declaration(registered);
    if (declaration.name != entry.substr(0, blank)) return false;
    const auto has_name = [&](const host::Parameter& each) { return each.name == entry.substr(blank + 1); };
    return blank == entry.npos || std::ranges::any_of(declaration.parameters, has_name);
}

// Tells the first one that is out of place.
void expect_order(const std::vector<std::string>& registered, const std::vector<Entry>& expected) {
    const auto common = std::min(registered.size(), expected.size());
    std::size_t i = 0;
    while (i < common && is(registered[i], expected[i])) ++i;
    if (i == registered.size() && i == expected.size()) return;
    const auto told = [i](const auto& all) { return i < all.size() ? std::string(all[i]) : "nothing"; };
    ADD_FAILURE() << "expected " << told(expected) << " at position " << i + 1 << ", found " << told(registered);
}

// --- classes --------------------------------------------------------------------------------------------------------

struct ExpectedProperty {
    const char *group, *name, *type;
    int parameter;
    bool writable;
};

struct ExpectedClass {
    const char* name;
    std::size_t data_size;
    int flags;  // of the class and of each of its members
    std::vector<Entry> methods;
    std::vector<ExpectedProperty> properties;
    const char* assignable;  // the one method with a setter
};

std::vector<ExpectedClass> expected_classes() {
    return {
        {"TRV_Rectangle",
         16,
         4,
         {"IsValid", "Equals", "CopyFrom", "OffsetBy", "MoveTo", "Resize", "InsetBy", "ScaleBy", "Area", "UnionWith",
          "IntersectWith", "Contains", "Intersects", "MessageBox"},
         {{"Rectangle", "left", "integer", 1, true},
          {"Rectangle", "top", "integer", 2, true},
          {"Rectangle", "width", "integer", 3, true},
          {"Rectangle", "height", "integer", 4, true},
          {"Rectangle", "right", "integer", 5, true},
          {"Rectangle", "bottom", "integer", 6, true}},
         ""},
        {"TRV_ColorMatrix",
         72,
         0,
         {"Value", "CopyFrom", "Multiply factor", "Multiply source", "Invert", "MessageBox"},
         {},
         "Value"},
        {"TRV_Convolution",
         92,
         0,
         {"SetCoefficients", "MessageBox"},
         {{"Convolution", "sum", "integer", 2, false}, {"Convolution", "width", "integer", 3, false}},
         ""},
        {"TRV_ClientPicture",
         sizeof(TRV_ClientPicture_Data),
         0,
         {"operator_convert p", "operator_convert"},
         {{"ClientPicture", "width", "integer", 1, false},
          {"ClientPicture", "height", "integer", 2, false},
          {"ClientPicture", "depth", "integer", 3, false},
          {"ClientPicture", "rowBytes", "integer", 5, false},
          {"ClientPicture", "hasMask", "boolean", 6, false},
          {"ClientPicture", "maskDepth", "integer", 7, false},
          {"ClientPicture", "maskRowBytes", "integer", 9, false},
          {"ClientPicture", "pic", "picture", 10, false}},
         ""},
    };
}

// Both layouts of method records: with flags, and that of hosts below 5.9, without.
class Registration : public ::testing::TestWithParam<double> {
protected:
    Registration() { EXPECT_TRUE(host.load_plugin(plugin_path(), true)); }

    bool old_records() const { return GetParam() < 5.9; }

    void expect_members(const std::vector<host::RegisteredMethod>& methods, const std::vector<Entry>& expected,
                        int flags, Entry assignable) {
        std::vector<std::string> declarations;
        for (const host::RegisteredMethod& method : methods) {
            declarations.push_back(method.declaration);
            SCOPED_TRACE(method.declaration);
            EXPECT_TRUE(method.function);
            EXPECT_EQ(method.setter != nullptr, is(method.declaration, assignable));
            EXPECT_EQ(method.has_flags, !old_records());
            EXPECT_EQ(method.flags, old_records() ? 0 : flags);
        }
        expect_order(declarations, expected);
    }

    host::Host host{{.version = GetParam()}};
};

INSTANTIATE_TEST_SUITE_P(Hosts, Registration, ::testing::Values(5.5, 2005.0));

TEST_P(Registration, IsInOrder) {
    std::vector<std::string> log = host.registry().log();
    for (std::string& each : log)
        if (each.starts_with("method ")) each.erase(0, 7);
    expect_order(log, kRegistrations);
}

TEST_P(Registration, GlobalMethods) {
    for (const auto& method : host.registry().methods()) {
        EXPECT_TRUE(method.function) << method.declaration;
        EXPECT_FALSE(method.setter) << method.declaration;
        EXPECT_EQ(method.flags, 0) << method.declaration;
    }
}

TEST_P(Registration, Classes) {
    const auto& classes = host.registry().classes();
    const auto expected = expected_classes();
    ASSERT_EQ(classes.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(expected[i].name);
        EXPECT_EQ(classes[i].name, expected[i].name);
        EXPECT_FALSE(classes[i].is_extension);
        EXPECT_EQ(classes[i].version, 9);
        EXPECT_EQ(classes[i].data_size, expected[i].data_size);
        EXPECT_TRUE(classes[i].constructor);
        EXPECT_TRUE(classes[i].destructor);
        EXPECT_EQ(classes[i].flags, expected[i].flags);
        expect_members(classes[i].methods, expected[i].methods, expected[i].flags, expected[i].assignable);

        const auto& properties = classes[i].properties;
        ASSERT_EQ(properties.size(), expected[i].properties.size());
        for (std::size_t j = 0; j < properties.size(); ++j) {
            const ExpectedProperty& property = expected[i].properties[j];
            EXPECT_EQ(properties[j].group, property.group);
            EXPECT_EQ(properties[j].name, property.name);
            EXPECT_EQ(properties[j].type, property.type);
            EXPECT_EQ(properties[j].parameter, property.parameter);
            EXPECT_EQ(properties[j].flags, expected[i].flags);
            EXPECT_TRUE(properties[j].getter);
            EXPECT_EQ(properties[j].setter != nullptr, property.writable) << property.name;
        }
    }
}

TEST_P(Registration, PictureExtension) {
    const auto& extensions = host.registry().extensions();
    ASSERT_EQ(extensions.size(), 1u);
    EXPECT_EQ(extensions[0].name, "picture");
    EXPECT_TRUE(extensions[0].is_extension);
    EXPECT_EQ(extensions[0].version, 9);
    EXPECT_EQ(extensions[0].data_size, 0u);
    EXPECT_FALSE(extensions[0].constructor);
    EXPECT_FALSE(extensions[0].destructor);
    EXPECT_TRUE(extensions[0].properties.empty());
    EXPECT_EQ(extensions[0].flags, 0);
    expect_members(extensions[0].methods, kPictureMembers, 0, "");
}

// Registered once as methods of pictures and once more as global ones, with the same functions.
TEST_P(Registration, SixMethodsAreThereTwice) {
    int twice = 0;
    for (const auto& global : host.registry().methods())
        for (const auto& method : host.registry().extensions()[0].methods)
            if (global.declaration == method.declaration) {
                ++twice;
                EXPECT_EQ(global.function, method.function) << method.declaration;
            }
    EXPECT_EQ(twice, 6);
}

// --- declarations ---------------------------------------------------------------------------------------------------

std::string text_of(const host::Parameter& parameter) {
    std::string text = parameter.extends ? "extends " : parameter.by_ref ? "ByRef " : "";
    text += parameter.name + (parameter.type.array ? "() as " : " as ") + parameter.type.name;
    if (parameter.default_value) text += std::get<bool>(*parameter.default_value) ? " = true" : " = false";
    return text;
}

// A declaration as its parts say it.
std::string text_of(const host::Declaration& declaration) {
    std::string text = declaration.name + "(";
    for (const host::Parameter& parameter : declaration.parameters)
        text += (&parameter == &declaration.parameters.front() ? "" : ", ") + text_of(parameter);
    return text + ")" + (declaration.result ? " as " + declaration.result->name : "");
}

// One blank behind each comma.
std::string evenly_spaced(std::string text) {
    for (std::size_t at = text.find(','); at != text.npos; at = text.find(',', at + 1))
        if (text[at + 1] != ' ') text.insert(at + 1, " ");
    return text;
}

TEST_P(Registration, EveryDeclarationIsReadAsItIsWritten) {
    const host::Caller caller(host);
    ASSERT_GT(caller.callables().size(), kRegistrations.size());
    for (const host::Callable& method : caller.callables())
        EXPECT_EQ(text_of(method.declaration), evenly_spaced(method.declaration.text));
}

}  // namespace
}  // namespace tarvo::test
