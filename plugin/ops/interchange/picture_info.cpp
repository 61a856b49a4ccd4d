#include "picture_info.h"

#include <cstdio>
#include <cstring>

#include "error_state.h"
#include "host_services.h"
#include "picture.h"

namespace tarvo::plugin {
namespace {

// Has room for the longest text, whatever its numbers are.
struct InfoText {
    char bytes[120];
};

InfoText facts(const TRV_Picture& picture) {
    InfoText text;
    std::snprintf(text.bytes, sizeof text.bytes, "OK! width: %ld, height: %ld, depth: %ld",
                  static_cast<long>(picture.width()), static_cast<long>(picture.height()),
                  static_cast<long>(picture.depth()));
    return text;
}

// Says which kind of lock the host grants for a picture. Only one that it granted is ended.
InfoText diagnosis(REALpictureStruct* picture) {
    InfoText text;
    REALpictureDescription description{};
    bool locked = true;
    if (REALLockPictureDescription(picture, &description, pictureMacintoshGWorld)) {
        std::snprintf(text.bytes, sizeof text.bytes, "Locked a pictureMacintoshGWorld.");
    } else if (REALLockPictureDescription(picture, &description, pictureCGBitmapContext)) {
        std::snprintf(text.bytes, sizeof text.bytes, "Locked a pictureCGBitmapContext.");
    } else {
        locked = REALLockPictureDescription(picture, &description) != 0;
        std::snprintf(text.bytes, sizeof text.bytes, "Could not lock picture. %d.", static_cast<int>(description.kind));
    }
    if (locked) REALUnlockPictureDescription(picture);
    return text;
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

int TRV_RowBytes(REALpictureStruct* source) {
    clear_error();
    if (!source) return set_error(ErrorCode::source_nil), 0;
    TRV_Picture picture(source, kAsImage);
    if (!picture.Lock()) return set_error(ErrorCode::source_lock), 0;
    return picture.rowBytes();
}

REALstringStruct* TRV_Info(REALpictureStruct* source) {
    clear_error();
    if (!source) return fail(ErrorCode::source_nil);
    TRV_Picture picture(source, kAsImage);
    const InfoText text = picture.Lock() ? facts(picture) : diagnosis(source);
    picture.Release();
    return REALBuildString(text.bytes, static_cast<int>(std::strlen(text.bytes)));
}
