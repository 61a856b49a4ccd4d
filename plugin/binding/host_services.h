#pragma once

// The host's services as functions. Each looks its entry point up by name on the first call and keeps it. While the
// host has no service of that name, the call does nothing, returns 0 or null, and the next call looks again.

#include <cstdint>

#include "platform.h"
#include "real_interface.h"

// gResolver is the callback that the host passes to REALPluginMain; gResolverPPC, obtained through it, finds every
// service. REALPluginMain sets both, once.
extern REALresolver gResolver;
extern REALresolver gResolverPPC;

// Returns the host's entry point of that name; null when the host has none, or before there is a resolver.
void* HCallResolver(const char* name);

// Strings.
REALstringStruct* REALBuildString(const char* text, int length);
const char* REALCString(REALstringStruct* string);
void REALLockString(REALstringStruct* string);
void REALUnlockString(REALstringStruct* string);

// Objects. Pictures are objects too.
void REALLockObject(REALobjectStruct* object);
void REALUnlockObject(REALobjectStruct* object);
void REALLockObject(REALpictureStruct* picture);
void REALUnlockObject(REALpictureStruct* picture);

// Pictures. The lock calls return 0 when the host refuses; the three-argument one asks for a kind of backing store.
int REALLockPictureDescription(REALpictureStruct* picture, REALpictureDescription* description);
int REALLockPictureDescription(REALpictureStruct* picture, REALpictureDescription* description, long kind);
void REALUnlockPictureDescription(REALpictureStruct* picture);
REALpictureStruct* REALNewPicture(long width, long height, long depth);
REALpictureStruct* REALGetPictureMask(REALpictureStruct* picture, unsigned char create);
void REALDrawPicturePrimitive(REALpictureStruct* picture, const Rect* where, int transparent);
REALpictureStruct* REALBuildPictureFromBuffer(long width, long height, RBPixelType type, void* pixels, long rowBytes);

// Memory blocks, files, arrays.
REALmemoryBlockStruct* REALNewMemoryBlock(int size);
void* REALMemoryBlockGetPtr(REALmemoryBlockStruct* block);
REALobjectStruct* REALFolderItemFromFSSpec(const FSSpec* file);
long REALGetArrayUBound(void* array);
long REALGetArrayInt(REALintArrayStruct* array, int index);

// Classes and instances. A new instance's one reference is the caller's.
REALclassRefStruct* REALGetClassRef(const char* className);
REALobjectStruct* REALnewInstance(REALclassRefStruct* classRef);
REALobjectStruct* REALnewInstance(const char* className);
// Returns the plugin data of an instance; null for a null object.
void* REALGetClassData(REALobjectStruct* object, const REALclassDefinition* definition);

// The running program: control for its other work, message boxes, the host's version.
void REALYieldToRB();
void REALMessageBox(REALstringStruct* text);
double REALGetRBVersion();

// Registration.
void REALRegisterMethod(const REALmethodDefinition* method);
void REALRegisterClass(REALclassDefinition* definition);
void REALRegisterClassExtension(REALclassDefinition* definition);
// Hosts below version 5.9 read method records without flags. This copies the definition's methods into such records,
// which live as long as the process, and points the definition at them.
void ConvertCurrentMethodsToV6(REALclassDefinition* definition);
void SetClassConsoleSafe(REALclassDefinition* definition);

namespace tarvo::plugin {

// Shows a message box with the text.
void show_message(const char* text);

}  // namespace tarvo::plugin
