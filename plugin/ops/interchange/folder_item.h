#pragma once

// Folder items for files that are known by volume, directory and name.

#include "platform.h"
#include "real_interface.h"

// The host's folder item; null when there is no name or the host knows no such place. The error code stays as it is.
REALobjectStruct* TRV_MakeFolderItem(int vRefNum, int parID, REALstringStruct* name);

// The record that the host is handed: the volume in 16 bits, and of the name at most 63 bytes, zeroes behind it.
FSSpec PrivMakeFSSpec(int vRefNum, int parID, const char* name);
