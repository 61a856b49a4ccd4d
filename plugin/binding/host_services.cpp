#include "host_services.h"

#include <atomic>
#include <cstring>
#include <limits>

#include "band_check.h"
#include "host_reference.h"

namespace tarvo::plugin {
namespace {

template <class Signature>
class HostService;

// One entry point of the host, found on first use. After a lookup that fails, the next call tries again. All threads
// find the same one.
template <class Result, class... Arguments>
class HostService<Result(Arguments...)> {
public:
    constexpr explicit HostService(const char* name) : name_(name) {}

    bool found() { return entry() != nullptr; }
    Result operator()(Arguments... arguments) {
        check_outside_bands();
        const Entry known = entry();
        return known ? known(arguments...) : Result();
    }

private:
    using Entry = Result (*)(Arguments...);

    Entry entry() {
        Entry known = entry_.load(std::memory_order_relaxed);
        if (!known && (known = reinterpret_cast<Entry>(HCallResolver(name_))))
            entry_.store(known, std::memory_order_relaxed);
        return known;
    }

    const char* name_;
    std::atomic<Entry> entry_ = nullptr;
};

constexpr double kFirstVersionWithMethodFlags = 5.9;

void register_definition(HostService<void(REALclassDefinition*)>& service, REALclassDefinition* definition) {
    if (!service.found()) return;
    if (REALGetRBVersion() < kFirstVersionWithMethodFlags) ConvertCurrentMethodsToV6(definition);
    service(definition);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

REALresolver gResolver = nullptr;
REALresolver gResolverPPC = nullptr;

void* HCallResolver(const char* name) { return gResolverPPC ? gResolverPPC(name) : nullptr; }

REALstringStruct* REALBuildString(const char* text, int length) {
    static constinit HostService<REALstringStruct*(const char*, int)> service("REALBuildString");
    return service(text, length);
}

const char* REALCString(REALstringStruct* string) {
    static constinit HostService<const char*(REALstringStruct*)> service("StringGetCString");
    return service(string);
}

void REALLockString(REALstringStruct* string) {
    static constinit HostService<void(REALstringStruct*)> service("REALLockString");
    service(string);
}

void REALUnlockString(REALstringStruct* string) {
    static constinit HostService<void(REALstringStruct*)> service("REALUnlockString");
    service(string);
}

void REALLockObject(REALobjectStruct* object) {
    static constinit HostService<void(REALobjectStruct*)> service("REALLockObject");
    service(object);
}

void REALUnlockObject(REALobjectStruct* object) {
    static constinit HostService<void(REALobjectStruct*)> service("REALUnlockObject");
    service(object);
}

void REALLockObject(REALpictureStruct* picture) { REALLockObject(reinterpret_cast<REALobjectStruct*>(picture)); }

void REALUnlockObject(REALpictureStruct* picture) { REALUnlockObject(reinterpret_cast<REALobjectStruct*>(picture)); }

int REALLockPictureDescription(REALpictureStruct* picture, REALpictureDescription* description) {
    static constinit HostService<int(REALpictureStruct*, REALpictureDescription*)> service("lockPictureDescription");
    return service(picture, description);
}

int REALLockPictureDescription(REALpictureStruct* picture, REALpictureDescription* description, long kind) {
    static constinit HostService<int(REALpictureStruct*, REALpictureDescription*, long)> service(
        "REALLockPictureDescription");
    return service(picture, description, kind);
}

void REALUnlockPictureDescription(REALpictureStruct* picture) {
    static constinit HostService<void(REALpictureStruct*)> service("unlockPictureDescription");
    service(picture);
}

REALpictureStruct* REALNewPicture(long width, long height, long depth) {
    static constinit HostService<REALpictureStruct*(long, long, long)> service("newPicture");
    return service(width, height, depth);
}

REALpictureStruct* REALGetPictureMask(REALpictureStruct* picture, unsigned char create) {
    static constinit HostService<REALpictureStruct*(REALpictureStruct*, unsigned char)> service("REALGetPictureMask");
    return service(picture, create);
}

void REALDrawPicturePrimitive(REALpictureStruct* picture, const Rect* where, int transparent) {
    static constinit HostService<void(REALpictureStruct*, const Rect*, int)> service("drawPicturePrimitive");
    service(picture, where, transparent);
}

REALpictureStruct* REALBuildPictureFromBuffer(long width, long height, RBPixelType type, void* pixels, long rowBytes) {
    static constinit HostService<REALpictureStruct*(long, long, RBPixelType, void*, long)> service(
        "REALBuildPictureFromBuffer");
    return service(width, height, type, pixels, rowBytes);
}

REALmemoryBlockStruct* REALNewMemoryBlock(int size) {
    static constinit HostService<REALmemoryBlockStruct*(int)> service("newMemoryBlock");
    return service(size);
}

void* REALMemoryBlockGetPtr(REALmemoryBlockStruct* block) {
    static constinit HostService<void*(REALmemoryBlockStruct*)> service("memoryBlockGetPtr");
    return service(block);
}

REALobjectStruct* REALFolderItemFromFSSpec(const FSSpec* file) {
    static constinit HostService<REALobjectStruct*(const FSSpec*)> service("FolderItemFromFSSpec");
    return service(file);
}

long REALGetArrayUBound(void* array) {
    static constinit HostService<long(void*)> service("RuntimeUBound");
    return service(array);
}

long REALGetArrayInt(REALintArrayStruct* array, int index) {
    static constinit HostService<long(REALintArrayStruct*, int)> service("RuntimeDirectReadIntArray");
    return service(array, index);
}

REALclassRefStruct* REALGetClassRef(const char* className) {
    static constinit HostService<REALclassRefStruct*(const char*)> service("pluginObjectType");
    return service(className);
}

REALobjectStruct* REALnewInstance(REALclassRefStruct* classRef) {
    static constinit HostService<REALobjectStruct*(REALclassRefStruct*)> service("CreateInstance");
    return classRef ? service(classRef) : nullptr;
}

REALobjectStruct* REALnewInstance(const char* className) {
    static constinit HostService<REALobjectStruct*(const char*)> service("PluginNewInstance");
    return service(className);
}

void* REALGetClassData(REALobjectStruct* object, const REALclassDefinition* definition) {
    return object ? reinterpret_cast<char*>(object) + definition->dataOffset : nullptr;
}

void REALYieldToRB() {
    static constinit HostService<void()> service("REALYieldToRB");
    service();
}

void REALMessageBox(REALstringStruct* text) {
    static constinit HostService<void(REALstringStruct*)> service("RuntimeMsgBox");
    service(text);
}

double REALGetRBVersion() {
    static constinit HostService<double()> service("REALGetRBVersion");
    return service();
}

void REALRegisterMethod(const REALmethodDefinition* method) {
    static constinit HostService<void(const REALmethodDefinition*)> service("PluginRegisterMethod");
    service(method);
}

void REALRegisterClass(REALclassDefinition* definition) {
    static constinit HostService<void(REALclassDefinition*)> service("PluginRegisterClass");
    register_definition(service, definition);
}

void REALRegisterClassExtension(REALclassDefinition* definition) {
    static constinit HostService<void(REALclassDefinition*)> service("PluginRegisterClassExtension");
    register_definition(service, definition);
}

void ConvertCurrentMethodsToV6(REALclassDefinition* definition) {
    const REALword count = definition->methodCount;
    if (count <= 0) return;
    const auto* current = static_cast<const REALmethodDefinition*>(definition->methods);
    const std::int64_t bytes = std::int64_t{count} * static_cast<std::int64_t>(sizeof(REALmethodDefinitionV6));
    const bool fits = bytes <= std::numeric_limits<std::int32_t>::max();
    char* const block = fits ? NewPtr(static_cast<std::int32_t>(bytes)) : nullptr;
    auto* const old = reinterpret_cast<REALmethodDefinitionV6*>(block);
    definition->methods = old;
    definition->methodCount = old ? count : 0;  // a host that reads short records must never see long ones
    for (REALword i = 0; i < definition->methodCount; ++i)
        old[i] = {current[i].function, current[i].setter, current[i].declaration};
}

void SetClassConsoleSafe(REALclassDefinition* definition) { definition->flags |= REALconsoleSafe; }

namespace tarvo::plugin {

void show_message(const char* text) {
    const HostReference<REALstringStruct> string(REALBuildString(text, static_cast<int>(std::strlen(text))));
    REALMessageBox(string.get());
}

}  // namespace tarvo::plugin
