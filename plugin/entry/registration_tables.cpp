#include "registration_tables.h"

#include <span>

#include "add_subtract.h"
#include "average_rgb.h"
#include "client_picture.h"
#include "color_matrix.h"
#include "color_matrix_transform.h"
#include "compare.h"
#include "composite.h"
#include "contrast.h"
#include "convolute.h"
#include "convolution_class.h"
#include "copy.h"
#include "crawling_ants.h"
#include "downsample.h"
#include "error_state.h"
#include "flip_rotate.h"
#include "folder_item.h"
#include "free_rotate_by_shear.h"
#include "free_rotate_direct.h"
#include "gamma.h"
#include "gradient.h"
#include "host_services.h"
#include "hsv.h"
#include "memory_block.h"
#include "picture_info.h"
#include "picture_string.h"
#include "pixelate.h"
#include "rectangle.h"
#include "registration.h"
#include "rgb_offsets.h"
#include "screen_capture.h"
#include "shear.h"
#include "stretch.h"
#include "threshold.h"
#include "transition.h"
#include "trim.h"

namespace tarvo::plugin {
namespace {

const REALmethodDefinition kErrorMethods[] = {
    TRV_METHOD(TRV_GetLastError, "TRV_GetLastError() as integer"),
    TRV_METHOD(TRV_GetErrorMessage, "TRV_GetErrorMessage(error_code as integer) as String"),
};

// These are registered twice: as methods of the picture class, and as plain functions, to which the host passes each
// argument one place too early because the declarations lack `extends`.
constexpr const char* kAdjustRGB =
    "TRV_AdjustRGB(rect as TRV_Rectangle, red_delta as integer, green_delta as integer, blue_delta as integer) as "
    "picture";
constexpr const char* kAdjustRGB_InPlace =
    "TRV_AdjustRGB_InPlace(rect as TRV_Rectangle, red_delta as integer, green_delta as integer, blue_delta as integer)";
constexpr const char* kAdjustRGBWithMask =
    "TRV_AdjustRGBWithMask(mask as picture, red_delta as integer, green_delta as integer, blue_delta as integer) as "
    "picture";
constexpr const char* kAdjustRGB_Matrix = "TRV_AdjustRGB(rect as TRV_Rectangle, cm as TRV_ColorMatrix) as picture";
constexpr const char* kAdjustRGBWithMask_Matrix =
    "TRV_AdjustRGBWithMask(mask as picture, cm as TRV_ColorMatrix) as picture";
constexpr const char* kGetAverageRGB =
    "TRV_GetAverageRGB(rect as TRV_Rectangle, ByRef red as integer, ByRef green as integer, ByRef blue as integer)";

const REALmethodDefinition kPictureMembers[] = {
    TRV_PICTURE_MEMBER(TRV_FreeRotateDirect,
                       "TRV_FreeRotateDirect(rotation as double, frame_color as color) as picture"),
    TRV_PICTURE_MEMBER(TRV_Compare, "TRV_Compare(compare as picture, rect as TRV_Rectangle) as boolean"),
    TRV_PICTURE_MEMBER(TRV_Difference, "TRV_Difference(compare as picture) as picture"),
    TRV_PICTURE_MEMBER(TRV_AdjustRGB, kAdjustRGB),
    TRV_PICTURE_MEMBER(TRV_AdjustRGB_InPlace, kAdjustRGB_InPlace),
    TRV_PICTURE_MEMBER(TRV_AdjustRGBWithMask, kAdjustRGBWithMask),
    TRV_PICTURE_MEMBER(TRV_AdjustRGB_Matrix, kAdjustRGB_Matrix),
    TRV_PICTURE_MEMBER(TRV_AdjustRGBWithMask_Matrix, kAdjustRGBWithMask_Matrix),
    TRV_PICTURE_MEMBER(TRV_GetAverageRGB, kGetAverageRGB),
};

REALclassDefinition TRV_Picture_Extension = {
    .version = kREALinterfaceVersion,
    .name = "picture",
    .methods = kPictureMembers,
    .methodCount = std::size(kPictureMembers),
};

const REALmethodDefinition kPictureMethods[] = {
    TRV_METHOD(TRV_Add, "TRV_Add(extends p as picture, addend as picture, yield as integer) as picture"),
    TRV_METHOD(TRV_Subtract, "TRV_Subtract(extends p as picture, subtractend as picture, yield as integer) as picture"),
    TRV_METHOD(TRV_AdjustContrast,
               "TRV_AdjustContrast(extends p as picture, rect as TRV_Rectangle, center as color, red_factor as double, "
               "green_factor as double, blue_factor as double, yield as integer) as picture"),
    TRV_METHOD(TRV_AdjustContrastWithMask,
               "TRV_AdjustContrastWithMask(extends p as picture, mask as picture, center as color, red_factor as "
               "double, green_factor as double, blue_factor as double, yield as integer) as picture"),
    TRV_METHOD(TRV_GetAverageContrast,
               "TRV_GetAverageContrast(extends p as picture, rect as TRV_Rectangle, center as color, ByRef "
               "red_contrast as integer, ByRef green_contrast as integer, ByRef blue_contrast as integer, yield as "
               "integer)"),
    TRV_METHOD(TRV_AdjustGamma,
               "TRV_AdjustGamma(extends p as picture, rect as TRV_Rectangle, center as color, red_factor as double, "
               "green_factor as double, blue_factor as double, yield as integer) as picture"),
    TRV_METHOD(TRV_AdjustGammaWithMask,
               "TRV_AdjustGammaWithMask(extends p as picture, mask as picture, center as color, red_factor as "
               "double, green_factor as double, blue_factor as double, yield as integer) as picture"),
    TRV_METHOD(TRV_AdjustHSV,
               "TRV_AdjustHSV(extends p as picture, rect as TRV_Rectangle, hue_degrees as double, saturation_factor "
               "as double, brightness_factor as double, negative as boolean, yield as integer) as picture"),
    TRV_METHOD(TRV_AdjustHSVWithMask,
               "TRV_AdjustHSVWithMask(extends p as picture, mask as picture, hue_degrees as double, "
               "saturation_factor as double, brightness_factor as double, yield as integer) as picture"),
    TRV_METHOD(TRV_GetAverageHSV,
               "TRV_GetAverageHSV(extends p as picture, rect as TRV_Rectangle, ByRef hue_degrees as double, ByRef "
               "saturation as double, ByRef brightness as double, yield as integer)"),
    TRV_MISMATCHED_METHOD(TRV_AdjustRGB, kAdjustRGB),
    TRV_MISMATCHED_METHOD(TRV_AdjustRGB_InPlace, kAdjustRGB_InPlace),
    TRV_MISMATCHED_METHOD(TRV_AdjustRGBWithMask, kAdjustRGBWithMask),
    TRV_MISMATCHED_METHOD(TRV_AdjustRGB_Matrix, kAdjustRGB_Matrix),
    TRV_MISMATCHED_METHOD(TRV_AdjustRGBWithMask_Matrix, kAdjustRGBWithMask_Matrix),
    TRV_MISMATCHED_METHOD(TRV_GetAverageRGB, kGetAverageRGB),
    TRV_METHOD(TRV_AverageRGB,
               "TRV_AverageRGB(extends p as picture, rect as TRV_Rectangle, center as color, red_weight as double, "
               "green_weight as double, blue_weight as double, yield as integer) as picture"),
    TRV_METHOD(TRV_AverageRGBWithMask,
               "TRV_AverageRGBWithMask(extends p as picture, mask as picture, center as color, red_weight as double, "
               "green_weight as double, blue_weight as double, yield as integer) as picture"),
    TRV_METHOD(
        TRV_FlipRotate,
        "TRV_FlipRotate(extends p as picture, flip_h as boolean, flip_v as boolean, rotation as integer, yield as "
        "integer) as picture"),
    TRV_METHOD(TRV_Composite,
               "TRV_Composite(extends p as picture, overlay as picture, overlay_fraction as double, left as integer, "
               "top as integer, yield as integer) as picture"),
    TRV_METHOD(TRV_Composite_Color,
               "TRV_Composite(extends p as picture, rect as TRV_Rectangle, overlay_color as color, overlay_fraction as "
               "double, yield as integer) as picture"),
    TRV_METHOD(TRV_CompositeWithMask,
               "TRV_CompositeWithMask(extends p as picture, overlay as picture, mask as picture, left as integer, top "
               "as integer, yield as integer) as picture"),
    TRV_METHOD(
        TRV_ShearHorizontal,
        "TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, yield as "
        "integer) as picture"),
    TRV_METHOD(TRV_ShearHorizontal_Frame,
               "TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, "
               "frame_color as color, yield as integer) as picture"),
    TRV_METHOD(TRV_ShearVertical,
               "TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, yield as "
               "integer) as picture"),
    TRV_METHOD(TRV_ShearVertical_Frame,
               "TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, "
               "frame_color as color, yield as integer) as picture"),
    TRV_METHOD(TRV_FreeRotateByShear,
               "TRV_FreeRotateByShear(extends p as picture, rotation as double, yield as integer) as picture"),
    TRV_METHOD(
        TRV_FreeRotateByShear_Frame,
        "TRV_FreeRotateByShear(extends p as picture, rotation as double, frame_color as color, yield as integer) "
        "as picture"),
    TRV_METHOD(TRV_Convolute,
               "TRV_Convolute(extends p as picture, rect as TRV_Rectangle, horiz_convolution as "
               "TRV_Convolution,vert_convolution as TRV_Convolution) as picture"),
    TRV_METHOD(TRV_CrawlingAnts,
               "TRV_CrawlingAnts(extends p as picture, rect as TRV_Rectangle, ant_color as color, shadow_color as "
               "color, ant_size as integer, ant_state as integer) as picture"),
    TRV_METHOD(TRV_Downsample, "TRV_Downsample(extends p as picture, bits_per_channel as integer) as picture"),
    TRV_METHOD(TRV_MakeMemoryBlock,
               "TRV_MakeMemoryBlock(extends p as picture, rect as TRV_Rectangle, mask_to_alpha as boolean, ByRef "
               "row_bytes as integer) as MemoryBlock"),
    TRV_METHOD(TRV_Pixelate,
               "TRV_Pixelate(extends p as picture, rect as TRV_Rectangle, pixelation as integer) as picture"),
    TRV_METHOD(TRV_Stretch,
               "TRV_Stretch(extends p as picture, width as integer, height as integer, yield as integer) as picture"),
    TRV_METHOD(TRV_Threshold,
               "TRV_Threshold(extends p as picture, rect as TRV_Rectangle, darker as boolean, and_threshold as "
               "boolean, threshold as color, target as color) as picture"),
    TRV_METHOD(TRV_ThresholdWithMask,
               "TRV_ThresholdWithMask(extends p as picture, mask as picture, darker as boolean, and_threshold as "
               "boolean, threshold as color, target as color) as picture"),
    TRV_METHOD(TRV_Transition,
               "TRV_Transition(extends p as picture, overlay_a as picture, overlay_b as picture, overlay_a_fraction as "
               "double) as picture"),
    TRV_METHOD(TRV_Trim, "TRV_Trim(extends p as picture, trim_rect as TRV_Rectangle, frame_color as color) as picture"),
    TRV_METHOD(TRV_ConvertToPicture, "TRV_ConvertToPicture(extends s as string) as picture"),
    TRV_METHOD(TRV_ConvertToString, "TRV_ConvertToString(extends p as picture) as string"),
    TRV_METHOD(TRV_RowBytes, "TRV_RowBytes(extends source as picture) as integer"),
    TRV_METHOD(TRV_Info, "TRV_Info(extends source as picture) as string"),
};

const REALmethodDefinition kClientPictureMethods[] = {
    TRV_METHOD(TRV_ClientPicture_Add,
               "TRV_Add(extends cp as TRV_ClientPicture, addend as TRV_ClientPicture, yield as integer, as_picture as "
               "boolean) as TRV_ClientPicture"),
    TRV_METHOD(TRV_ClientPicture_Subtract,
               "TRV_Subtract(extends cp as TRV_ClientPicture, subtractend as TRV_ClientPicture, yield as integer, "
               "as_picture as boolean) as TRV_ClientPicture"),
    TRV_METHOD(TRV_ClientPicture_AdjustContrast,
               "TRV_AdjustContrast(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_factor "
               "as double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as "
               "TRV_ClientPicture"),
    TRV_METHOD(TRV_ClientPicture_AdjustContrastWithMask,
               "TRV_AdjustContrastWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, "
               "red_factor as double, green_factor as double, blue_factor as double, yield as integer, as_picture as "
               "boolean) as TRV_ClientPicture"),
    TRV_METHOD(TRV_ClientPicture_GetAverageContrast,
               "TRV_GetAverageContrast(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, ByRef "
               "red_contrast as integer, ByRef green_contrast as integer, ByRef blue_contrast as integer, yield as "
               "integer)"),
    TRV_METHOD_DECLARED_AS_PICTURE(
        TRV_ClientPicture_AdjustGamma,
        "TRV_AdjustGamma(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_factor as "
        "double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as picture"),
    TRV_METHOD_DECLARED_AS_PICTURE(
        TRV_ClientPicture_AdjustGammaWithMask,
        "TRV_AdjustGammaWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, red_factor as "
        "double, green_factor as double, blue_factor as double, yield as integer, as_picture as boolean) as picture"),
    TRV_METHOD_DECLARED_AS_PICTURE(
        TRV_ClientPicture_AdjustHSV,
        "TRV_AdjustHSV(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, hue_degrees as double, "
        "saturation_factor as double, brightness_factor as double, negative as boolean, yield as integer, as_picture "
        "as boolean) as picture"),
    TRV_METHOD_DECLARED_AS_PICTURE(
        TRV_ClientPicture_AdjustHSVWithMask,
        "TRV_AdjustHSVWithMask(extends cp as TRV_ClientPicture, mask as picture, hue_degrees as double, "
        "saturation_factor as double, brightness_factor as double, yield as integer, as_picture as boolean) as "
        "picture"),
    TRV_METHOD(TRV_ClientPicture_GetAverageHSV,
               "TRV_GetAverageHSV(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, ByRef hue_degrees as "
               "double, ByRef saturation as double, ByRef brightness as double, yield as integer)"),
    TRV_METHOD_DECLARED_AS_PICTURE(
        TRV_ClientPicture_AverageRGB,
        "TRV_AverageRGB(extends cp as TRV_ClientPicture, rect as TRV_Rectangle, center as color, red_weight as "
        "double, green_weight as double, blue_weight as double, yield as integer, as_picture as boolean) as picture"),
    TRV_METHOD_DECLARED_AS_PICTURE(
        TRV_ClientPicture_AverageRGBWithMask,
        "TRV_AverageRGBWithMask(extends cp as TRV_ClientPicture, mask as picture, center as color, red_weight as "
        "double, green_weight as double, blue_weight as double, yield as integer, as_picture as boolean) as picture"),
    TRV_METHOD(TRV_ClientPicture_Composite,
               "TRV_Composite(extends cp as TRV_ClientPicture, overlay as TRV_ClientPicture, overlay_fraction as "
               "double, left as integer, top as integer, as_picture as boolean = false) as TRV_ClientPicture"),
    TRV_METHOD(TRV_ClientPicture_Stretch,
               "TRV_Stretch(extends cp as TRV_ClientPicture, width as integer, height as integer, yield as integer, "
               "as_picture as boolean) as TRV_ClientPicture"),
    TRV_METHOD(TRV_ClientPicture_Trim_OwnMemory,
               "TRV_Trim(extends cp as TRV_ClientPicture, trim_rect as TRV_Rectangle, frame_color as color) as "
               "TRV_ClientPicture"),
};

const REALmethodDefinition kScreenMethods[] = {
    TRV_METHOD(TRV_ScreenCapture, "TRV_ScreenCapture(extends s as screen, capture_rect as TRV_Rectangle) as picture"),
};

const REALmethodDefinition kGradientMethods[] = {
    TRV_METHOD(TRV_MakeGradient,
               "TRV_MakeGradient(width as integer, height as integer, color1 as color, color2 as color, yield as "
               "integer) as picture"),
    TRV_METHOD(TRV_MakeDoubleGradient,
               "TRV_MakeDoubleGradient(width as integer, height as integer, color1 as color, color2 as color, color3 "
               "as color, yield as integer) as picture"),
};

const REALmethodDefinition kArchitectureMethods[] = {
    TRV_METHOD(CurrentArchitecture, "CurrentArchitecture() as Integer"),
};

void register_all(std::span<const REALmethodDefinition> methods) {
    for (const REALmethodDefinition& method : methods) REALRegisterMethod(&method);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

// These are never registered. The host knows the screen's method as a global one that `extends` screens.
REALclassDefinition TRV_Screen_Extension = {
    .version = kREALinterfaceVersion,
    .name = "screen",
    .methods = kScreenMethods,
    .methodCount = std::size(kScreenMethods),
};
const REALmethodDefinition TRV_CopyPicture_Method =
    TRV_METHOD(TRV_CopyPicture, "TRV_CopyPicture(extends p as picture) as picture");
const REALmethodDefinition TRV_MakeFolderItem_Method = TRV_METHOD(
    TRV_MakeFolderItem, "TRV_MakeFolderItem(vRefNum as integer, parID as integer, name as string) as FolderItem");

void InstallClasses() {
    REALRegisterClass(&TRV_Rectangle_Class);
    REALRegisterClass(&TRV_ColorMatrix_Class);
    REALRegisterClass(&TRV_Convolution_Class);
    REALRegisterClass(&TRV_ClientPicture_Class);
}

void InstallPictureExtensions() {
    REALRegisterClassExtension(&TRV_Picture_Extension);
    register_all(kPictureMethods);
}

void InstallClientPictureExtensions() { register_all(kClientPictureMethods); }

void InstallScreenExtensions() { register_all(kScreenMethods); }

void InstallGradientMethods() { register_all(kGradientMethods); }

namespace tarvo::plugin {

void register_everything() {
    register_all(kErrorMethods);
    InstallClasses();
    InstallPictureExtensions();
    InstallClientPictureExtensions();
    InstallScreenExtensions();
    InstallGradientMethods();
}

}  // namespace tarvo::plugin

int CurrentArchitecture() { return 0; }

void PluginEntryXX() { register_all(kArchitectureMethods); }
