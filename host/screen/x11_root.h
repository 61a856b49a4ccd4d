#pragma once

// The root window of an X display, with its pixels as the server delivers them.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "screen_pixels.h"

struct xcb_connection_t;

namespace tarvo::host {

class X11Root {
public:
    // Connects to the default screen of a display; the one that the environment names if the name is empty. Returns
    // null when there is no such display, or its pixels are not understood.
    static std::unique_ptr<X11Root> connect(const std::string& display);
    ~X11Root();
    X11Root(const X11Root&) = delete;
    X11Root& operator=(const X11Root&) = delete;

    struct Size {
        int width, height;
    };
    // The screen's size now; none when the server has gone.
    std::optional<Size> size();

    // Returns all pixels as they are now, in rows of `row_bytes`, valid until the next call; null when the server does
    // not give them.
    const std::uint8_t* take_image(Size size);
    std::size_t row_bytes(Size size) const;
    const ScreenPixels& pixels() const { return pixels_; }

private:
    class SharedMemory;
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };
    struct FreeReply {
        void operator()(void* reply) const;
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    X11Root(Connection connection, std::uint32_t window, const ScreenPixels& pixels, int row_alignment,
            bool has_shared_memory);
    const std::uint8_t* take_shared_image(Size size);
    const std::uint8_t* take_sent_image(Size size);

    Connection connection_;
    std::uint32_t window_;
    ScreenPixels pixels_;
    int row_alignment_;                      // in bits
    bool has_shared_memory_;                 // true until sharing fails, as it does with a display on another machine
    std::unique_ptr<SharedMemory> shared_;   // holds the latest image
    std::unique_ptr<void, FreeReply> sent_;  // holds it if there is no shared memory
};

}  // namespace tarvo::host
