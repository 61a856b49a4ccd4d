#pragma once

#include "real_interface.h"

namespace tarvo::plugin {

// Registers all methods and classes with the host: the two error methods, then the groups below in their order.
void register_everything();

}  // namespace tarvo::plugin

void InstallClasses();
void InstallPictureExtensions();
void InstallClientPictureExtensions();
void InstallScreenExtensions();
void InstallGradientMethods();

// No host ever sees these: a second entry routine that nothing calls and its method, a class extension and two methods
// that nothing registers.
void PluginEntryXX();
int CurrentArchitecture();
extern REALclassDefinition TRV_Screen_Extension;
extern const REALmethodDefinition TRV_CopyPicture_Method;
extern const REALmethodDefinition TRV_MakeFolderItem_Method;
