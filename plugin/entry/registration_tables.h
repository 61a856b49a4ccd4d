#pragma once

#include "real_interface.h"

// Registers the plugin's methods and classes with the host, in the order of the tables.
void RegisterEverything();

// The groups, in that order, behind the two error methods.
void InstallClasses();
void InstallPictureExtensions();
void InstallClientPictureExtensions();
void InstallScreenExtensions();
void InstallGradientMethods();

// What no host ever sees: a second entry routine, which nothing calls, and a class extension and two methods, which
// nothing registers.
void PluginEntryXX();
extern REALclassDefinition TRV_Screen_Extension;
extern const REALmethodDefinition TRV_CopyPicture_Method;
extern const REALmethodDefinition TRV_MakeFolderItem_Method;
