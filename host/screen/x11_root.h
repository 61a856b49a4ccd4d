#pragma once

// The root window of an X display, and its pixels as the server hands them out.

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
    // The default screen of a display; of the one that the environment names if the name is empty. Null when there is
    // no such display, or its pixels are not understood.
    static std::unique_ptr<X11Root> connect(const std::string& display);
    ~X11Root();
    X11Root(const X11Root&) = delete;
    X11Root& operator=(const X11Root&) = delete;

    struct Size {
        int width, height;
    };
    // As it is now. None when the server has gone.
    std::optional<Size> size();

    // All pixels as they are now, rows of `row_bytes`; valid until the next call. Null when the server does not give
    // them.
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
    int row_alignment_;                      // bits
    bool has_shared_memory_;                 // as far as is known: a display far away has not
    std::unique_ptr<SharedMemory> shared_;   // holds the latest image
    std::unique_ptr<void, FreeReply> sent_;  // so does this, without shared memory
};

}  // namespace tarvo::host
