#include "folder_item.h"

#include <algorithm>
#include <cstring>

#include "host_services.h"

FSSpec PrivMakeFSSpec(int vRefNum, int parID, const char* name) {
    FSSpec file{};
    const std::size_t length = std::min(std::strlen(name), sizeof file.name - 1);
    file.vRefNum = static_cast<std::int16_t>(vRefNum);
    file.parID = parID;
    file.name[0] = static_cast<std::uint8_t>(length);
    std::memcpy(file.name + 1, name, length);
    return file;
}

REALobjectStruct* TRV_MakeFolderItem(int vRefNum, int parID, REALstringStruct* name) {
    const char* const text = REALCString(name);
    if (!text) return nullptr;
    const FSSpec file = PrivMakeFSSpec(vRefNum, parID, text);
    return REALFolderItemFromFSSpec(&file);
}
