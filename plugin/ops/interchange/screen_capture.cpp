#include "screen_capture.h"

#include "error_state.h"
#include "host_services.h"
#include "picture.h"
#include "platform.h"

namespace tarvo::plugin {
namespace {

// The host copies the device's rectangle from the pixel map, four bytes a pixel, so all of it must be there.
bool holds(const TRV_Picture& screen, std::int32_t width, std::int32_t height) {
    return screen.isLocked() && screen.depth() == 32 && screen.width() >= width && screen.height() >= height;
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

REALpictureStruct* TRV_ScreenCapture(REALobjectStruct*, REALobjectStruct*) {
    clear_error();
    const GDHandle device = GetMainDevice();
    if (!device || !*device) return nullptr;
    const Rect bounds = (*device)->gdRect;
    const std::int32_t width = bounds.right - bounds.left;
    const std::int32_t height = bounds.bottom - bounds.top;
    const TRV_Picture screen((*device)->gdPMap);
    if (!holds(screen, width, height)) return nullptr;
    return REALBuildPictureFromBuffer(width, height, pixelTypeXRGB32, screen.baseAddress(), screen.rowBytes());
}
