// Everything that the plugin registers, in order, written out.

#include <gtest/gtest.h>

#include "client_picture_data.h"
#include "session.h"

namespace tarvo::test {
namespace {

// clang-format off
const std::vector<std::string> kErrorMethods = {
    R"(TRV_GetLastError() as integer)",
    R"(TRV_GetErrorMessage(error_code as integer) as String)",
};

const std::vector<std::string> kRectangleMethods = {
    R"(IsValid() as Boolean)",
    R"(Equals(rect as TRV_Rectangle) as Boolean)",
    R"(CopyFrom(rect as TRV_Rectangle))",
    R"(OffsetBy(h as integer, v as integer))",
    R"(MoveTo(left as integer, top as integer))",
    R"(Resize(width as integer, height as integer))",
    R"(InsetBy(h as integer, v as integer))",
    R"(ScaleBy(factor as double))",
    R"(Area() as integer)",
    R"(UnionWith(rect as TRV_Rectangle))",
    R"(IntersectWith(rect as TRV_Rectangle))",
    R"(Contains(rect as TRV_Rectangle) as Boolean)",
    R"(Intersects(rect as TRV_Rectangle) as Boolean)",
    R"(MessageBox())",
};

const std::vector<std::string> kColorMatrixMethods = {
    R"(Value(i as integer, j as integer) as double)",
    R"(CopyFrom(source as TRV_ColorMatrix))",
    R"(Multiply(factor as double) as TRV_ColorMatrix)",
    R"(Multiply(source as TRV_ColorMatrix) as TRV_ColorMatrix)",
    R"(Invert() as TRV_ColorMatrix)",
    R"(MessageBox())",
};

const std::vector<std::string> kConvolutionMethods = {
    R"(SetCoefficients(coeffs() as integer))",
    R"(MessageBox())",
};

const std::vector<std::string> kClientPictureMembers = {
    R"(operator_convert(p as picture))",
    R"(operator_convert() as picture)",
};

const std::vector<std::string> kExtensionMethods = {
    R"(TRV_FreeRotateDirect(rotation as double, frame_color as color) as picture)",
    R"(TRV_Compare(compare as picture, rect as TRV_Rectangle) as boolean)",
    R"(TRV_Difference(compare as picture) as picture)",
    R"(TRV_AdjustRGB(rect as TRV_Rectangle, red_delta as integer, green_delta as integer, blue_delta as integer) as picture)",
    R"(TRV_AdjustRGB_InPlace(rect as TRV_Rectangle, red_delta as integer, green_delta as integer, blue_delta as integer))",
    R"(TRV_AdjustRGBWithMask(mask as picture, red_delta as integer, green_delta as integer, blue_delta as integer) as picture)",
    R"(TRV_AdjustRGB(rect as TRV_Rectangle, cm as TRV_ColorMatrix) as picture)",
    R"(TRV_AdjustRGBWithMask(mask as picture, cm as TRV_ColorMatrix) as picture)",
    R"(TRV_GetAverageRGB(rect as TRV_Rectangle, ByRef red as integer, ByRef green as integer, ByRef blue as integer))",
};

const std::vector<std::string> kPictureMethods = {
    R"(TRV_Add(extends p as picture, addend as picture, yield as integer) as picture)",
    R"(TRV_Subtract(extends p as picture, subtractend as picture, yield as integer) as picture)",
    R"(TRV_AdjustContrast(extends p as picture, rect as TRV_Rectangle, center as color, red_factor as double, green_factor as double, blue_factor as double, yield as integer) as picture)",
    R"(TRV_AdjustContrastWithMask(extends p as picture, mask as picture, center as color, red_factor as double, green_factor as double, blue_factor as double, yield as integer) as picture)",
    R"(TRV_GetAverageContrast(extends p as picture, rect as TRV_Rectangle, center as color, ByRef red_contrast as integer, ByRef green_contrast as integer, ByRef blue_contrast as integer, yield as integer))",
    R"(TRV_AdjustGamma(extends p as picture, rect as TRV_Rectangle, center as color, red_factor as double, green_factor as double, blue_factor as double, yield as integer) as picture)",
    R"(TRV_AdjustGammaWithMask(extends p as picture, mask as picture, center as color, red_factor as double, green_factor as double, blue_factor as double, yield as integer) as picture)",
    R"(TRV_AdjustHSV(extends p as picture, rect as TRV_Rectangle, hue_degrees as double, saturation_factor as double, brightness_factor as double, negative as boolean, yield as integer) as picture)",
    R"(TRV_AdjustHSVWithMask(extends p as picture, mask as picture, hue_degrees as double, saturation_factor as double, brightness_factor as double, yield as integer) as picture)",
    R"(TRV_GetAverageHSV(extends p as picture, rect as TRV_Rectangle, ByRef hue_degrees as double, ByRef saturation as double, ByRef brightness as double, yield as integer))",
    R"(TRV_AdjustRGB(rect as TRV_Rectangle, red_delta as integer, green_delta as integer, blue_delta as integer) as picture)",
    R"(TRV_AdjustRGB_InPlace(rect as TRV_Rectangle, red_delta as integer, green_delta as integer, blue_delta as integer))",
    R"(TRV_AdjustRGBWithMask(mask as picture, red_delta as integer, green_delta as integer, blue_delta as integer) as picture)",
    R"(TRV_AdjustRGB(rect as TRV_Rectangle, cm as TRV_ColorMatrix) as picture)",
    R"(TRV_AdjustRGBWithMask(mask as picture, cm as TRV_ColorMatrix) as picture)",
    R"(TRV_GetAverageRGB(rect as TRV_Rectangle, ByRef red as integer, ByRef green as integer, ByRef blue as integer))",
    R"(TRV_AverageRGB(extends p as picture, rect as TRV_Rectangle, center as color, red_weight as double, green_weight as double, blue_weight as double, yield as integer) as picture)",
    R"(TRV_AverageRGBWithMask(extends p as picture, mask as picture, center as color, red_weight as double, green_weight as double, blue_weight as double, yield as integer) as picture)",
    R"(TRV_FlipRotate(extends p as picture, flip_h as boolean, flip_v as boolean, rotation as integer, yield as integer) as picture)",
    R"(TRV_Composite(extends p as picture, overlay as picture, overlay_fraction as double, left as integer, top as integer, yield as integer) as picture)",
    R"(TRV_Composite(extends p as picture, rect as TRV_Rectangle, overlay_color as color, overlay_fraction as double, yield as integer) as picture)",
    R"(TRV_CompositeWithMask(extends p as picture, overlay as picture, mask as picture, left as integer, top as integer, yield as integer) as picture)",
    R"(TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, yield as integer) as picture)",
    R"(TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, frame_color as color, yield as integer) as picture)",
    R"(TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, yield as integer) as picture)",
    R"(TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, frame_color as color, yield as integer) as picture)",
    R"(TRV_FreeRotateByShear(extends p as picture, rotation as double, yield as integer) as picture)",
    R"(TRV_FreeRotateByShear(extends p as picture, rotation as double, frame_color as color, yield as integer) as picture)",
    R"(TRV_Convolute(extends p as picture, rect as TRV_Rectangle, horiz_convolution as TRV_Convolution,vert_convolution as TRV_Convolution) as picture)",
    R"(TRV_CrawlingAnts(extends p as picture, rect as TRV_Rectangle, ant_color as color, shadow_color as color, ant_size as integer, ant_state as integer) as picture)",
    R"(TRV_Downsample(extends p as picture, bits_per_channel as integer) as picture)",
    R"(TRV_MakeMemoryBlock(extends p as picture, rect as TRV_Rectangle, mask_to_alpha as boolean, ByRef row_bytes as integer) as MemoryBlock)",
    R"(TRV_Pixelate(extends p as picture, rect as TRV_Rectangle, pixelation as integer) as picture)",
    R"(TRV_Stretch(extends p as picture, width as integer, height as integer, yield as integer) as picture)",
    R"(TRV_Threshold(extends p as picture, rect as TRV_Rectangle, darker as boolean, and_threshold as boolean, threshold as color, target as color) as picture)",
    R"(TRV_ThresholdWithMask(extends p as picture, mask as picture, darker as boolean, and_threshold as boolean, threshold as color, target as color) as picture)",
    R"(TRV_Transition(extends p as picture, overlay_a as picture, overlay_b as picture, overlay_a_fraction as double) as picture)",
    R"(TRV_Trim(extends p as picture, trim_rect as TRV_Rectangle, frame_color as color) as picture)",
    R"(TRV_ConvertToPicture(extends s as string) as picture)",
    R"(TRV_ConvertToString(extends p as picture) as string)",
    R"(TRV_RowBytes(extends source as picture) as integer)",
    R"(TRV_Info(extends source as picture) as string)",
};

const std::vector<std::string> kClientPictureMethods = {
    R"(TRV_Add(extends cp as TRV_ClientPicture, addend as TRV_ClientPicture, yield as integer, as_picture as boolean) as TRV_ClientPicture)",
    R"(TRV_Subtract(extends cp as TRV_ClientPicture, subtractend as TRV_ClientPicture, yield as integer, as_picture as boolean) as TRV_ClientPicture)",
    R"(TRV_AdjustContrast(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_factor as double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as TRV_ClientPicture)",
    R"(TRV_AdjustContrastWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, red_factor as double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as TRV_ClientPicture)",
    R"(TRV_GetAverageContrast(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, ByRef red_contrast as integer, ByRef green_contrast as integer, ByRef blue_contrast as integer, yield as integer))",
    R"(TRV_AdjustGamma(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_factor as double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as picture)",
    R"(TRV_AdjustGammaWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, red_factor as double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as picture)",
    R"(TRV_AdjustHSV(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, hue_degrees as double, saturation_factor as double, brightness_factor as double, negative as boolean, yield as integer, as_picture as boolean) as picture)",
    R"(TRV_AdjustHSVWithMask(extends cp as TRV_ClientPicture, mask as picture, hue_degrees as double, saturation_factor as double, brightness_factor as double, yield as integer, as_picture as boolean) as picture)",
    R"(TRV_GetAverageHSV(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, ByRef hue_degrees as double, ByRef saturation as double, ByRef brightness as double, yield as integer))",
    R"(TRV_AverageRGB(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_weight as double, green_weight as double, blue_weight as double, yield as integer, as_picture as boolean) as picture)",
    R"(TRV_AverageRGBWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, red_weight as double, green_weight as double, blue_weight as double, yield as integer, as_picture as boolean) as picture)",
    R"(TRV_Composite(extends cp as TRV_ClientPicture, overlay as TRV_ClientPicture, overlay_fraction as double, left as integer, top as integer, as_picture as boolean = false) as TRV_ClientPicture)",
    R"(TRV_Stretch(extends cp as TRV_ClientPicture, width as integer, height as integer, yield as integer, as_picture as boolean) as TRV_ClientPicture)",
    R"(TRV_Trim(extends cp as TRV_ClientPicture, trim_rect as TRV_Rectangle, frame_color as color) as TRV_ClientPicture)",
};

const std::vector<std::string> kScreenMethods = {
    R"(TRV_ScreenCapture(extends s as screen, capture_rect as TRV_Rectangle) as picture)",
};

const std::vector<std::string> kGradientMethods = {
    R"(TRV_MakeGradient(width as integer, height as integer, color1 as color, color2 as color, yield as integer) as picture)",
    R"(TRV_MakeDoubleGradient(width as integer, height as integer, color1 as color, color2 as color, color3 as color, yield as integer) as picture)",
};
// clang-format on

std::vector<std::string> expected_log() {
    std::vector<std::string> log;
    const auto methods = [&log](const std::vector<std::string>& declarations) {
        for (const std::string& declaration : declarations) log.push_back("method " + declaration);
    };
    methods(kErrorMethods);
    for (const char* cls : {"TRV_Rectangle", "TRV_ColorMatrix", "TRV_Convolution", "TRV_ClientPicture"})
        log.push_back(std::string("class ") + cls);
    log.push_back("extension picture");
    methods(kPictureMethods);
    methods(kClientPictureMethods);
    methods(kScreenMethods);
    methods(kGradientMethods);
    return log;
}

struct ExpectedProperty {
    const char *group, *name, *type;
    int parameter;
    bool writable;
};

struct ExpectedClass {
    const char* name;
    std::size_t data_size;
    int flags;  // of the class and of each of its members
    std::vector<std::string> methods;
    std::vector<ExpectedProperty> properties;
    const char* assignable;  // the one method with a setter
};

std::vector<ExpectedClass> expected_classes() {
    return {
        {"TRV_Rectangle",
         16,
         4,
         kRectangleMethods,
         {{"Rectangle", "left", "integer", 1, true},
          {"Rectangle", "top", "integer", 2, true},
          {"Rectangle", "width", "integer", 3, true},
          {"Rectangle", "height", "integer", 4, true},
          {"Rectangle", "right", "integer", 5, true},
          {"Rectangle", "bottom", "integer", 6, true}},
         ""},
        {"TRV_ColorMatrix", 72, 0, kColorMatrixMethods, {}, "Value(i as integer, j as integer) as double"},
        {"TRV_Convolution",
         92,
         0,
         kConvolutionMethods,
         {{"Convolution", "sum", "integer", 2, false}, {"Convolution", "width", "integer", 3, false}},
         ""},
        {"TRV_ClientPicture",
         sizeof(TRV_ClientPicture_Data),
         0,
         kClientPictureMembers,
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

    void expect_members(const std::vector<host::RegisteredMethod>& methods, const std::vector<std::string>& expected,
                        int flags, const std::string& assignable) {
        ASSERT_EQ(methods.size(), expected.size());
        for (std::size_t i = 0; i < methods.size(); ++i) {
            EXPECT_EQ(methods[i].declaration, expected[i]);
            EXPECT_TRUE(methods[i].function);
            EXPECT_EQ(methods[i].setter != nullptr, methods[i].declaration == assignable) << expected[i];
            EXPECT_EQ(methods[i].has_flags, !old_records());
            EXPECT_EQ(methods[i].flags, old_records() ? 0 : flags) << expected[i];
        }
    }

    host::Host host{{.version = GetParam()}};
};

INSTANTIATE_TEST_SUITE_P(Hosts, Registration, ::testing::Values(5.5, 2005.0));

TEST_P(Registration, Log) { EXPECT_EQ(host.registry().log(), expected_log()); }

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
    expect_members(extensions[0].methods, kExtensionMethods, 0, "");
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

}  // namespace
}  // namespace tarvo::test
