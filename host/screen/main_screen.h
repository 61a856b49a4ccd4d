#pragma once

// The screen of an X display as the platform's main device.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform.h"
#include "x11_root.h"

namespace tarvo::host {

// While it lives, each GetMainDevice answers with a new snapshot of the screen: everything that the display's default
// screen shows, on all of its monitors. It answers null when the server has gone or does not give its pixels. One at a
// time.
//
//     const auto screen = MainScreen::open();
//     if (!screen) ...  // no display; there is no main device
class MainScreen {
public:
    // Of the display ":0", "host:1.0" and so on; of the one that the environment variable DISPLAY names if the name is
    // empty. Null when there is none, or none with 16, 24 or 32 bits a pixel that hold red, green and blue.
    static std::unique_ptr<MainScreen> open(const std::string& display = {});
    ~MainScreen();
    MainScreen(const MainScreen&) = delete;
    MainScreen& operator=(const MainScreen&) = delete;

private:
    explicit MainScreen(std::unique_ptr<X11Root> root);
    static void refresh(void* screen) noexcept;
    bool take_snapshot();
    bool fit_world(X11Root::Size size);

    std::unique_ptr<X11Root> root_;
    std::vector<std::uint8_t> pixels_;  // of `world_`
    X11Root::Size size_{};              // likewise
    GWorldPtr world_ = nullptr;
};

}  // namespace tarvo::host
