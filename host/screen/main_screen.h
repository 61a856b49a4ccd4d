#pragma once

// The screen of an X display as the platform's main device.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform.h"
#include "x11_root.h"

namespace tarvo::host {

// While it lives, each GetMainDevice takes a new snapshot of all that the display's default screen shows, on all of its
// monitors. GetMainDevice returns null when the server has gone or does not give its pixels. There can be one
// MainScreen at a time.
//
//     const auto screen = MainScreen::open();
//     if (!screen) ...  // no display; there is no main device
class MainScreen {
public:
    // Opens a display, such as ":0" or "host:1.0"; the one that the environment variable DISPLAY names if the name is
    // empty. Returns null when there is none, or none with 16, 24 or 32 bits a pixel that hold red, green and blue.
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
    std::vector<std::uint8_t> pixels_;  // the pixels of `world_`
    X11Root::Size size_{};              // its size
    GWorldPtr world_ = nullptr;
};

}  // namespace tarvo::host
