#pragma once

// An X server without hardware, for the length of a test.

#include <sys/types.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tarvo::test {

class TestServer {
public:
    // Waits until the server is ready. Throws std::runtime_error when that takes too long.
    TestServer(int width, int height, int depth, std::vector<std::string> more_arguments = {});
    ~TestServer();
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    // ":7".
    const std::string& display() const { return display_; }
    void stop();

private:
    pid_t process_ = -1;
    std::string display_;
};

// A client that draws on the server's root window.
class Painter {
public:
    explicit Painter(const TestServer& server);

    // Fills a rectangle with a pixel value of the server's.
    void fill(std::uint32_t pixel, int left, int top, int width, int height);
    // Maps a window of one colour that stays until the painter goes.
    void show_window(std::uint32_t pixel, int left, int top, int width, int height);
    // The screen gets smaller.
    void resize_screen(int width, int height);

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    // Until the server has done everything it was asked for.
    void finish();

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    const xcb_screen_t* screen_;
    xcb_gcontext_t context_;
};

}  // namespace tarvo::test
