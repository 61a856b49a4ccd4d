#pragma once

// Folder items for files that are known by volume, directory and name.

#include "platform.h"
#include "real_interface.h"

// Returns the host's folder item; null when there is no name or the host knows no such place. The error code stays as
// it is.
REALobjectStruct* TRV_MakeFolderItem(int vRefNum, int parID, REALstringStruct* name);

// Returns the record for the host: the volume in 16 bits, and at most 63 bytes of the name, padded with zeros.
FSSpec PrivMakeFSSpec(int vRefNum, int parID, const char* name);
