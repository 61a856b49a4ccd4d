// Every declaration that Tarvo Graphics has, with what the parser must make of it.

#include <gtest/gtest.h>

#include "shape.h"

namespace tarvo::host {
namespace {

struct Row {
    const char* text;
    const char* shape;
};

constexpr Row kRows[] = {
    {"TRV_GetLastError() as integer", "TRV_GetLastError -> <integer>"},
    {"TRV_GetErrorMessage(error_code as integer) as String", "TRV_GetErrorMessage error_code:<integer> -> <string>"},
    {"TRV_FreeRotateDirect(rotation as double, frame_color as color) as picture",
     "TRV_FreeRotateDirect rotation:<double> frame_color:<color> -> picture"},
    {"TRV_Compare(compare as picture, rect as TRV_Rectangle) as boolean",
     "TRV_Compare compare:picture rect:TRV_Rectangle -> <boolean>"},
    {"TRV_Difference(compare as picture) as picture", "TRV_Difference compare:picture -> picture"},
    {"TRV_AdjustRGB(rect as TRV_Rectangle, red_delta as integer, green_delta as integer, blue_delta as integer) as "
     "picture",
     "TRV_AdjustRGB rect:TRV_Rectangle red_delta:<integer> green_delta:<integer> blue_delta:<integer> -> picture"},
    {"TRV_AdjustRGB_InPlace(rect as TRV_Rectangle, red_delta as integer, green_delta as integer, blue_delta as "
     "integer)",
     "TRV_AdjustRGB_InPlace rect:TRV_Rectangle red_delta:<integer> green_delta:<integer> blue_delta:<integer>"},
    {"TRV_AdjustRGBWithMask(mask as picture, red_delta as integer, green_delta as integer, blue_delta as integer) as "
     "picture",
     "TRV_AdjustRGBWithMask mask:picture red_delta:<integer> green_delta:<integer> blue_delta:<integer> -> picture"},
    {"TRV_AdjustRGB(rect as TRV_Rectangle, cm as TRV_ColorMatrix) as picture",
     "TRV_AdjustRGB rect:TRV_Rectangle cm:TRV_ColorMatrix -> picture"},
    {"TRV_AdjustRGBWithMask(mask as picture, cm as TRV_ColorMatrix) as picture",
     "TRV_AdjustRGBWithMask mask:picture cm:TRV_ColorMatrix -> picture"},
    {"TRV_GetAverageRGB(rect as TRV_Rectangle, ByRef red as integer, ByRef green as integer, ByRef blue as integer)",
     "TRV_GetAverageRGB rect:TRV_Rectangle &red:<integer> &green:<integer> &blue:<integer>"},
    {"TRV_Add(extends p as picture, addend as picture, yield as integer) as picture",
     "TRV_Add ^p:picture addend:picture yield:<integer> -> picture"},
    {"TRV_Subtract(extends p as picture, subtractend as picture, yield as integer) as picture",
     "TRV_Subtract ^p:picture subtractend:picture yield:<integer> -> picture"},
    {"TRV_AdjustContrast(extends p as picture, rect as TRV_Rectangle, center as color, red_factor as double, "
     "green_factor as double, blue_factor as double, yield as integer) as picture",
     "TRV_AdjustContrast ^p:picture rect:TRV_Rectangle center:<color> red_factor:<double> green_factor:<double> "
     "blue_factor:<double> yield:<integer> -> picture"},
    {"TRV_AdjustContrastWithMask(extends p as picture, mask as picture, center as color, red_factor as double, "
     "green_factor as double, blue_factor as double, yield as integer) as picture",
     "TRV_AdjustContrastWithMask ^p:picture mask:picture center:<color> red_factor:<double> green_factor:<double> "
     "blue_factor:<double> yield:<integer> -> picture"},
    {"TRV_GetAverageContrast(extends p as picture, rect as TRV_Rectangle, center as color, ByRef red_contrast as "
     "integer, ByRef green_contrast as integer, ByRef blue_contrast as integer, yield as integer)",
     "TRV_GetAverageContrast ^p:picture rect:TRV_Rectangle center:<color> &red_contrast:<integer> "
     "&green_contrast:<integer> &blue_contrast:<integer> yield:<integer>"},
    {"TRV_AdjustGamma(extends p as picture, rect as TRV_Rectangle, center as color, red_factor as double, "
     "green_factor as double, blue_factor as double, yield as integer) as picture",
     "TRV_AdjustGamma ^p:picture rect:TRV_Rectangle center:<color> red_factor:<double> green_factor:<double> "
     "blue_factor:<double> yield:<integer> -> picture"},
    {"TRV_AdjustGammaWithMask(extends p as picture, mask as picture, center as color, red_factor as double, "
     "green_factor as double, blue_factor as double, yield as integer) as picture",
     "TRV_AdjustGammaWithMask ^p:picture mask:picture center:<color> red_factor:<double> green_factor:<double> "
     "blue_factor:<double> yield:<integer> -> picture"},
    {"TRV_AdjustHSV(extends p as picture, rect as TRV_Rectangle, hue_degrees as double, saturation_factor as double, "
     "brightness_factor as double, negative as boolean, yield as integer) as picture",
     "TRV_AdjustHSV ^p:picture rect:TRV_Rectangle hue_degrees:<double> saturation_factor:<double> "
     "brightness_factor:<double> negative:<boolean> yield:<integer> -> picture"},
    {"TRV_AdjustHSVWithMask(extends p as picture, mask as picture, hue_degrees as double, saturation_factor as "
     "double, brightness_factor as double, yield as integer) as picture",
     "TRV_AdjustHSVWithMask ^p:picture mask:picture hue_degrees:<double> saturation_factor:<double> "
     "brightness_factor:<double> yield:<integer> -> picture"},
    {"TRV_GetAverageHSV(extends p as picture, rect as TRV_Rectangle, ByRef hue_degrees as double, ByRef saturation "
     "as double, ByRef brightness as double, yield as integer)",
     "TRV_GetAverageHSV ^p:picture rect:TRV_Rectangle &hue_degrees:<double> &saturation:<double> "
     "&brightness:<double> yield:<integer>"},
    {"TRV_AverageRGB(extends p as picture, rect as TRV_Rectangle, center as color, red_weight as double, "
     "green_weight as double, blue_weight as double, yield as integer) as picture",
     "TRV_AverageRGB ^p:picture rect:TRV_Rectangle center:<color> red_weight:<double> green_weight:<double> "
     "blue_weight:<double> yield:<integer> -> picture"},
    {"TRV_AverageRGBWithMask(extends p as picture, mask as picture, center as color, red_weight as double, "
     "green_weight as double, blue_weight as double, yield as integer) as picture",
     "TRV_AverageRGBWithMask ^p:picture mask:picture center:<color> red_weight:<double> green_weight:<double> "
     "blue_weight:<double> yield:<integer> -> picture"},
    {"TRV_FlipRotate(extends p as picture, flip_h as boolean, flip_v as boolean, rotation as integer, yield as "
     "integer) as picture",
     "TRV_FlipRotate ^p:picture flip_h:<boolean> flip_v:<boolean> rotation:<integer> yield:<integer> -> picture"},
    {"TRV_Composite(extends p as picture, overlay as picture, overlay_fraction as double, left as integer, top as "
     "integer, yield as integer) as picture",
     "TRV_Composite ^p:picture overlay:picture overlay_fraction:<double> left:<integer> top:<integer> "
     "yield:<integer> -> picture"},
    {"TRV_Composite(extends p as picture, rect as TRV_Rectangle, overlay_color as color, overlay_fraction as double, "
     "yield as integer) as picture",
     "TRV_Composite ^p:picture rect:TRV_Rectangle overlay_color:<color> overlay_fraction:<double> yield:<integer> -> "
     "picture"},
    {"TRV_CompositeWithMask(extends p as picture, overlay as picture, mask as picture, left as integer, top as "
     "integer, yield as integer) as picture",
     "TRV_CompositeWithMask ^p:picture overlay:picture mask:picture left:<integer> top:<integer> yield:<integer> -> "
     "picture"},
    {"TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, yield as "
     "integer) as picture",
     "TRV_ShearHorizontal ^p:picture width:<integer> height:<integer> shear:<double> yield:<integer> -> picture"},
    {"TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, frame_color as "
     "color, yield as integer) as picture",
     "TRV_ShearHorizontal ^p:picture width:<integer> height:<integer> shear:<double> frame_color:<color> "
     "yield:<integer> -> picture"},
    {"TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, yield as "
     "integer) as picture",
     "TRV_ShearVertical ^p:picture width:<integer> height:<integer> shear:<double> yield:<integer> -> picture"},
    {"TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, frame_color as "
     "color, yield as integer) as picture",
     "TRV_ShearVertical ^p:picture width:<integer> height:<integer> shear:<double> frame_color:<color> "
     "yield:<integer> -> picture"},
    {"TRV_FreeRotateByShear(extends p as picture, rotation as double, yield as integer) as picture",
     "TRV_FreeRotateByShear ^p:picture rotation:<double> yield:<integer> -> picture"},
    {"TRV_FreeRotateByShear(extends p as picture, rotation as double, frame_color as color, yield as integer) as "
     "picture",
     "TRV_FreeRotateByShear ^p:picture rotation:<double> frame_color:<color> yield:<integer> -> picture"},
    {"TRV_Convolute(extends p as picture, rect as TRV_Rectangle, horiz_convolution as "
     "TRV_Convolution,vert_convolution as TRV_Convolution) as picture",
     "TRV_Convolute ^p:picture rect:TRV_Rectangle horiz_convolution:TRV_Convolution vert_convolution:TRV_Convolution "
     "-> picture"},
    {"TRV_CrawlingAnts(extends p as picture, rect as TRV_Rectangle, ant_color as color, shadow_color as color, "
     "ant_size as integer, ant_state as integer) as picture",
     "TRV_CrawlingAnts ^p:picture rect:TRV_Rectangle ant_color:<color> shadow_color:<color> ant_size:<integer> "
     "ant_state:<integer> -> picture"},
    {"TRV_Downsample(extends p as picture, bits_per_channel as integer) as picture",
     "TRV_Downsample ^p:picture bits_per_channel:<integer> -> picture"},
    {"TRV_MakeMemoryBlock(extends p as picture, rect as TRV_Rectangle, mask_to_alpha as boolean, ByRef row_bytes as "
     "integer) as MemoryBlock",
     "TRV_MakeMemoryBlock ^p:picture rect:TRV_Rectangle mask_to_alpha:<boolean> &row_bytes:<integer> -> MemoryBlock"},
    {"TRV_Pixelate(extends p as picture, rect as TRV_Rectangle, pixelation as integer) as picture",
     "TRV_Pixelate ^p:picture rect:TRV_Rectangle pixelation:<integer> -> picture"},
    {"TRV_Stretch(extends p as picture, width as integer, height as integer, yield as integer) as picture",
     "TRV_Stretch ^p:picture width:<integer> height:<integer> yield:<integer> -> picture"},
    {"TRV_Threshold(extends p as picture, rect as TRV_Rectangle, darker as boolean, and_threshold as boolean, "
     "threshold as color, target as color) as picture",
     "TRV_Threshold ^p:picture rect:TRV_Rectangle darker:<boolean> and_threshold:<boolean> threshold:<color> "
     "target:<color> -> picture"},
    {"TRV_ThresholdWithMask(extends p as picture, mask as picture, darker as boolean, and_threshold as boolean, "
     "threshold as color, target as color) as picture",
     "TRV_ThresholdWithMask ^p:picture mask:picture darker:<boolean> and_threshold:<boolean> threshold:<color> "
     "target:<color> -> picture"},
    {"TRV_Transition(extends p as picture, overlay_a as picture, overlay_b as picture, overlay_a_fraction as double) "
     "as picture",
     "TRV_Transition ^p:picture overlay_a:picture overlay_b:picture overlay_a_fraction:<double> -> picture"},
    {"TRV_Trim(extends p as picture, trim_rect as TRV_Rectangle, frame_color as color) as picture",
     "TRV_Trim ^p:picture trim_rect:TRV_Rectangle frame_color:<color> -> picture"},
    {"TRV_ConvertToPicture(extends s as string) as picture", "TRV_ConvertToPicture ^s:<string> -> picture"},
    {"TRV_ConvertToString(extends p as picture) as string", "TRV_ConvertToString ^p:picture -> <string>"},
    {"TRV_RowBytes(extends source as picture) as integer", "TRV_RowBytes ^source:picture -> <integer>"},
    {"TRV_Info(extends source as picture) as string", "TRV_Info ^source:picture -> <string>"},
    {"TRV_Add(extends cp as TRV_ClientPicture, addend as TRV_ClientPicture, yield as integer, as_picture as boolean) "
     "as TRV_ClientPicture",
     "TRV_Add ^cp:TRV_ClientPicture addend:TRV_ClientPicture yield:<integer> as_picture:<boolean> -> "
     "TRV_ClientPicture"},
    {"TRV_Subtract(extends cp as TRV_ClientPicture, subtractend as TRV_ClientPicture, yield as integer, as_picture "
     "as boolean) as TRV_ClientPicture",
     "TRV_Subtract ^cp:TRV_ClientPicture subtractend:TRV_ClientPicture yield:<integer> as_picture:<boolean> -> "
     "TRV_ClientPicture"},
    {"TRV_AdjustContrast(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_factor as "
     "double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as "
     "TRV_ClientPicture",
     "TRV_AdjustContrast ^cp:TRV_ClientPicture rect:TRV_Rectangle center:<color> red_factor:<double> "
     "green_factor:<double> blue_factor:<double> yield:<integer> as_picture:<boolean> -> TRV_ClientPicture"},
    {"TRV_AdjustContrastWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, red_factor as "
     "double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as "
     "TRV_ClientPicture",
     "TRV_AdjustContrastWithMask ^cp:TRV_ClientPicture mask:picture center:<color> red_factor:<double> "
     "green_factor:<double> blue_factor:<double> yield:<integer> as_picture:<boolean> -> TRV_ClientPicture"},
    {"TRV_GetAverageContrast(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, ByRef "
     "red_contrast as integer, ByRef green_contrast as integer, ByRef blue_contrast as integer, yield as integer)",
     "TRV_GetAverageContrast ^cp:TRV_ClientPicture rect:TRV_Rectangle center:<color> &red_contrast:<integer> "
     "&green_contrast:<integer> &blue_contrast:<integer> yield:<integer>"},
    {"TRV_AdjustGamma(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_factor as double, "
     "green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as picture",
     "TRV_AdjustGamma ^cp:TRV_ClientPicture rect:TRV_Rectangle center:<color> red_factor:<double> "
     "green_factor:<double> blue_factor:<double> yield:<integer> as_picture:<boolean> -> picture"},
    {"TRV_AdjustGammaWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, red_factor as "
     "double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as picture",
     "TRV_AdjustGammaWithMask ^cp:TRV_ClientPicture mask:picture center:<color> red_factor:<double> "
     "green_factor:<double> blue_factor:<double> yield:<integer> as_picture:<boolean> -> picture"},
    {"TRV_AdjustHSV(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, hue_degrees as double, saturation_factor "
     "as double, brightness_factor as double, negative as boolean, yield as integer, as_picture as boolean) as "
     "picture",
     "TRV_AdjustHSV ^cp:TRV_ClientPicture rect:TRV_Rectangle hue_degrees:<double> saturation_factor:<double> "
     "brightness_factor:<double> negative:<boolean> yield:<integer> as_picture:<boolean> -> picture"},
    {"TRV_AdjustHSVWithMask(extends cp as TRV_ClientPicture, mask as picture, hue_degrees as double, "
     "saturation_factor as double, brightness_factor as double, yield as integer, as_picture as boolean) as picture",
     "TRV_AdjustHSVWithMask ^cp:TRV_ClientPicture mask:picture hue_degrees:<double> saturation_factor:<double> "
     "brightness_factor:<double> yield:<integer> as_picture:<boolean> -> picture"},
    {"TRV_GetAverageHSV(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, ByRef hue_degrees as double, ByRef "
     "saturation as double, ByRef brightness as double, yield as integer)",
     "TRV_GetAverageHSV ^cp:TRV_ClientPicture rect:TRV_Rectangle &hue_degrees:<double> &saturation:<double> "
     "&brightness:<double> yield:<integer>"},
    {"TRV_AverageRGB(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_weight as double, "
     "green_weight as double, blue_weight as double, yield as integer, as_picture as boolean) as picture",
     "TRV_AverageRGB ^cp:TRV_ClientPicture rect:TRV_Rectangle center:<color> red_weight:<double> "
     "green_weight:<double> blue_weight:<double> yield:<integer> as_picture:<boolean> -> picture"},
    {"TRV_AverageRGBWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, red_weight as "
     "double, green_weight as double, blue_weight as double, yield as integer, as_picture as boolean) as picture",
     "TRV_AverageRGBWithMask ^cp:TRV_ClientPicture mask:picture center:<color> red_weight:<double> "
     "green_weight:<double> blue_weight:<double> yield:<integer> as_picture:<boolean> -> picture"},
    {"TRV_Composite(extends cp as TRV_ClientPicture, overlay as TRV_ClientPicture, overlay_fraction as double, left "
     "as integer, top as integer, as_picture as boolean = false) as TRV_ClientPicture",
     "TRV_Composite ^cp:TRV_ClientPicture overlay:TRV_ClientPicture overlay_fraction:<double> left:<integer> "
     "top:<integer> as_picture:<boolean>=false -> TRV_ClientPicture"},
    {"TRV_Stretch(extends cp as TRV_ClientPicture, width as integer, height as integer, yield as integer, as_picture "
     "as boolean) as TRV_ClientPicture",
     "TRV_Stretch ^cp:TRV_ClientPicture width:<integer> height:<integer> yield:<integer> as_picture:<boolean> -> "
     "TRV_ClientPicture"},
    {"TRV_Trim(extends cp as TRV_ClientPicture, trim_rect as TRV_Rectangle, frame_color as color) as "
     "TRV_ClientPicture",
     "TRV_Trim ^cp:TRV_ClientPicture trim_rect:TRV_Rectangle frame_color:<color> -> TRV_ClientPicture"},
    {"TRV_MakeGradient(width as integer, height as integer, color1 as color, color2 as color, yield as integer) as "
     "picture",
     "TRV_MakeGradient width:<integer> height:<integer> color1:<color> color2:<color> yield:<integer> -> picture"},
    {"TRV_MakeDoubleGradient(width as integer, height as integer, color1 as color, color2 as color, color3 as color, "
     "yield as integer) as picture",
     "TRV_MakeDoubleGradient width:<integer> height:<integer> color1:<color> color2:<color> color3:<color> "
     "yield:<integer> -> picture"},
    {"IsValid() as Boolean", "IsValid -> <boolean>"},
    {"Equals(rect as TRV_Rectangle) as Boolean", "Equals rect:TRV_Rectangle -> <boolean>"},
    {"CopyFrom(rect as TRV_Rectangle)", "CopyFrom rect:TRV_Rectangle"},
    {"OffsetBy(h as integer, v as integer)", "OffsetBy h:<integer> v:<integer>"},
    {"MoveTo(left as integer, top as integer)", "MoveTo left:<integer> top:<integer>"},
    {"Resize(width as integer, height as integer)", "Resize width:<integer> height:<integer>"},
    {"InsetBy(h as integer, v as integer)", "InsetBy h:<integer> v:<integer>"},
    {"ScaleBy(factor as double)", "ScaleBy factor:<double>"},
    {"Area() as integer", "Area -> <integer>"},
    {"UnionWith(rect as TRV_Rectangle)", "UnionWith rect:TRV_Rectangle"},
    {"IntersectWith(rect as TRV_Rectangle)", "IntersectWith rect:TRV_Rectangle"},
    {"Contains(rect as TRV_Rectangle) as Boolean", "Contains rect:TRV_Rectangle -> <boolean>"},
    {"Intersects(rect as TRV_Rectangle) as Boolean", "Intersects rect:TRV_Rectangle -> <boolean>"},
    {"MessageBox()", "MessageBox"},
    {"operator_convert(p as picture)", "operator_convert p:picture"},
    {"operator_convert() as picture", "operator_convert -> picture"},
    {"SetCoefficients(coeffs() as integer)", "SetCoefficients coeffs[]:<integer>"},
    {"Value(i as integer, j as integer) as double", "Value i:<integer> j:<integer> -> <double>"},
    {"CopyFrom(source as TRV_ColorMatrix)", "CopyFrom source:TRV_ColorMatrix"},
    {"Multiply(factor as double) as TRV_ColorMatrix", "Multiply factor:<double> -> TRV_ColorMatrix"},
    {"Multiply(source as TRV_ColorMatrix) as TRV_ColorMatrix", "Multiply source:TRV_ColorMatrix -> TRV_ColorMatrix"},
    {"Invert() as TRV_ColorMatrix", "Invert -> TRV_ColorMatrix"},
    {"TRV_ScreenCapture(extends s as screen, capture_rect as TRV_Rectangle) as picture",
     "TRV_ScreenCapture ^s:screen capture_rect:TRV_Rectangle -> picture"},
    {"TRV_CopyPicture(extends p as picture) as picture", "TRV_CopyPicture ^p:picture -> picture"},
    {"TRV_MakeFolderItem(vRefNum as integer, parID as integer, name as string) as FolderItem",
     "TRV_MakeFolderItem vRefNum:<integer> parID:<integer> name:<string> -> FolderItem"},
    {"CurrentArchitecture() as Integer", "CurrentArchitecture -> <integer>"},
};

TEST(TarvoDeclarations, AllParse) {
    for (const Row& row : kRows) {
        try {
            const Declaration parsed = parse_declaration(row.text);
            EXPECT_EQ(shape_of(parsed), row.shape);
            EXPECT_EQ(parsed.text, row.text);
        } catch (const DeclarationError& error) {
            ADD_FAILURE() << error.what();
        }
    }
}

}  // namespace
}  // namespace tarvo::host
