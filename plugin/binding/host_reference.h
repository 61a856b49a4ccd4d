#pragma once

#include <memory>

#include "host_services.h"

struct DropReference {
    void operator()(REALobjectStruct* object) const { REALUnlockObject(object); }
    void operator()(REALpictureStruct* picture) const { REALUnlockObject(picture); }
    void operator()(REALstringStruct* string) const { REALUnlockString(string); }
    void operator()(REALmemoryBlockStruct* block) const {
        REALUnlockObject(reinterpret_cast<REALobjectStruct*>(block));
    }
};

// A reference that is dropped unless it is handed on with `release`.
template <class Struct>
using HostReference = std::unique_ptr<Struct, DropReference>;
