#include "registration_tables.h"

#include <span>

#include "add_subtract.h"
#include "client_picture.h"
#include "contrast.h"
#include "error_state.h"
#include "host_services.h"
#include "rectangle.h"
#include "registration.h"

namespace {

const REALmethodDefinition kErrorMethods[] = {
    TRV_METHOD(TRV_GetLastError, "TRV_GetLastError() as integer"),
    TRV_METHOD(TRV_GetErrorMessage, "TRV_GetErrorMessage(error_code as integer) as String"),
};

const REALmethodDefinition kPictureMethods[] = {
    TRV_METHOD(TRV_Add, "TRV_Add(extends p as picture, addend as picture, yield as integer) as picture"),
    TRV_METHOD(TRV_Subtract,
               "TRV_Subtract(extends p as picture, subtractend as picture, yield as integer) as picture"),
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
};

int CurrentArchitecture() { return 0; }

const REALmethodDefinition kArchitectureMethods[] = {
    TRV_METHOD(CurrentArchitecture, "CurrentArchitecture() as Integer"),
};

void register_all(std::span<const REALmethodDefinition> methods) {
    for (const REALmethodDefinition& method : methods) REALRegisterMethod(&method);
}

}  // namespace

// Declared and never registered: the screen's methods are global ones with `extends`.
REALclassDefinition TRV_Screen_Extension = {
    .version = kREALinterfaceVersion,
    .name = "screen",
};

void InstallClasses() {
    REALRegisterClass(&TRV_Rectangle_Class);
    REALRegisterClass(&TRV_ClientPicture_Class);
}

void InstallPictureExtensions() { register_all(kPictureMethods); }

void InstallClientPictureExtensions() { register_all(kClientPictureMethods); }

void InstallScreenExtensions() {}

void InstallGradientMethods() {}

void RegisterEverything() {
    register_all(kErrorMethods);
    InstallClasses();
    InstallPictureExtensions();
    InstallClientPictureExtensions();
    InstallScreenExtensions();
    InstallGradientMethods();
}

void PluginEntryXX() { register_all(kArchitectureMethods); }
