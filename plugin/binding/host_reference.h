#pragma once

#include <memory>

#include "host_services.h"

namespace tarvo::plugin {

struct DropReference {
    void operator()(REALobjectStruct* object) const { REALUnlockObject(object); }
    void operator()(REALpictureStruct* picture) const { REALUnlockObject(picture); }
    void operator()(REALstringStruct* string) const { REALUnlockString(string); }
    void operator()(REALmemoryBlockStruct* block) const {
        REALUnlockObject(reinterpret_cast<REALobjectStruct*>(block));
    }
};

// Holds one reference to a host object, and drops it unless `release` hands it on.
template <class Struct>
using HostReference = std::unique_ptr<Struct, DropReference>;

}  // namespace tarvo::plugin
