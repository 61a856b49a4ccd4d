#pragma once

// A plugin inside the test program: every service as it is typed for plugins, found through the resolver.

#include <string>
#include <string_view>
#include <vector>

#include "host.h"
#include "platform.h"
#include "real_interface.h"

namespace tarvo::host {

class TestPlugin {
public:
    explicit TestPlugin(Host& host) { host.start_plugin(&TestPlugin::entry); }

    static void* resolve(const char* name) { return resolver_(name); }

    template <class Result, class... Arguments>
    static Result call(const char* name, Arguments... arguments) {
        return reinterpret_cast<Result (*)(Arguments...)>(resolve(name))(arguments...);
    }

    REALstringStruct* build_string(std::string_view text) {
        return call<REALstringStruct*>("REALBuildString", text.data(), static_cast<int>(text.size()));
    }
    const char* c_string(REALstringStruct* string) { return call<const char*>("StringGetCString", string); }
    void lock_string(REALstringStruct* string) { call<void>("REALLockString", string); }
    void unlock_string(REALstringStruct* string) { call<void>("REALUnlockString", string); }

    void lock(void* object) { call<void>("REALLockObject", static_cast<REALobjectStruct*>(object)); }
    void unlock(void* object) { call<void>("REALUnlockObject", static_cast<REALobjectStruct*>(object)); }

    REALpictureStruct* new_picture(long width, long height, long depth) {
        return call<REALpictureStruct*>("newPicture", width, height, depth);
    }
    int lock_description(void* picture, REALpictureDescription* description) {
        return call<int>("lockPictureDescription", static_cast<REALpictureStruct*>(picture), description);
    }
    int lock_description(void* picture, REALpictureDescription* description, long kind) {
        return call<int>("REALLockPictureDescription", static_cast<REALpictureStruct*>(picture), description, kind);
    }
    void unlock_description(void* picture) {
        call<void>("unlockPictureDescription", static_cast<REALpictureStruct*>(picture));
    }
    REALpictureStruct* mask(void* picture, bool create) {
        return call<REALpictureStruct*>("REALGetPictureMask", static_cast<REALpictureStruct*>(picture),
                                        static_cast<unsigned char>(create));
    }
    void draw(void* picture, const Rect* where) {
        call<void>("drawPicturePrimitive", static_cast<REALpictureStruct*>(picture), where, 0);
    }
    REALpictureStruct* from_buffer(long width, long height, int type, const void* pixels, long row_bytes) {
        return call<REALpictureStruct*>("REALBuildPictureFromBuffer", width, height, static_cast<RBPixelType>(type),
                                        const_cast<void*>(pixels), row_bytes);
    }

    REALmemoryBlockStruct* new_memory_block(int size) { return call<REALmemoryBlockStruct*>("newMemoryBlock", size); }
    void* block_bytes(void* block) {
        return call<void*>("memoryBlockGetPtr", static_cast<REALmemoryBlockStruct*>(block));
    }
    REALobjectStruct* folder_item(const FSSpec* file) { return call<REALobjectStruct*>("FolderItemFromFSSpec", file); }
    long upper_bound(void* array) { return call<long>("RuntimeUBound", array); }
    long element(void* array, int index) {
        return call<long>("RuntimeDirectReadIntArray", static_cast<REALintArrayStruct*>(array), index);
    }

    REALclassRefStruct* class_reference(const char* name) {
        return call<REALclassRefStruct*>("pluginObjectType", name);
    }
    REALobjectStruct* new_instance(REALclassRefStruct* reference) {
        return call<REALobjectStruct*>("CreateInstance", reference);
    }
    REALobjectStruct* new_instance(const char* name) { return call<REALobjectStruct*>("PluginNewInstance", name); }

    void yield() { call<void>("REALYieldToRB"); }
    void message_box(REALstringStruct* text) { call<void>("RuntimeMsgBox", text); }
    double version() { return call<double>("REALGetRBVersion"); }

    void register_version(int version) { call<void>("RegisterPluginVersion", version); }
    void register_method(REALmethodDefinition* method) { call<void>("PluginRegisterMethod", method); }
    void register_class(REALclassDefinition* cls) { call<void>("PluginRegisterClass", cls); }
    void register_extension(REALclassDefinition* cls) { call<void>("PluginRegisterClassExtension", cls); }

private:
    static int entry(REALresolver callback) {
        resolver_ = reinterpret_cast<REALresolver>(callback("ResolverPPC"));
        return resolver_ && !callback("REALBuildString") ? 1 : 0;
    }
    static inline REALresolver resolver_ = nullptr;
};

// The last complaint, or "" when there is none.
inline std::string last_complaint(const Host& host) {
    return host.complaints().empty() ? "" : host.complaints().back();
}

}  // namespace tarvo::host
