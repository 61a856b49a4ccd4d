#include "test_server.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/randr.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace tarvo::test {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kPatience = std::chrono::seconds(30);

// What the other end writes up to a line break, or up to its end.
std::string read_line(int descriptor) {
    std::string line;
    const auto deadline = Clock::now() + kPatience;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd waiting{descriptor, POLLIN, 0};
        if (left <= 0 || ::poll(&waiting, 1, static_cast<int>(left)) <= 0) return {};
        char next = 0;
        if (::read(descriptor, &next, 1) != 1 || next == '\n') return line;
        line += next;
    }
}

// Runs the server; it writes its display's number to the descriptor and goes when the test's process goes.
[[noreturn]] void become_server(std::vector<std::string> arguments, int number_out) {
    arguments.insert(arguments.begin(), TARVO_XVFB);
    arguments.insert(arguments.end(), {"-displayfd", std::to_string(number_out), "-nolisten", "tcp", "-noreset"});
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int nowhere = ::open("/dev/null", O_RDWR);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    ::execv(words.front(), words.data());
    ::_exit(127);
}

template <class T>
std::unique_ptr<T, decltype(&std::free)> owned(T* reply) {
    return {reply, &std::free};
}

}  // namespace

TestServer::TestServer(int width, int height, int depth, std::vector<std::string> more_arguments) {
    std::vector<std::string> arguments = {
        "-screen", "0", std::to_string(width) + "x" + std::to_string(height) + "x" + std::to_string(depth)};
    arguments.insert(arguments.end(), more_arguments.begin(), more_arguments.end());
    int ends[2];
    if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
        ::close(ends[0]);
        become_server(std::move(arguments), ends[1]);
    }
    ::close(ends[1]);
    const std::string number = process_ > 0 ? read_line(ends[0]) : std::string();
    ::close(ends[0]);
    if (number.empty()) {
        stop();
        throw std::runtime_error("the X server does not start");
    }
    display_ = ":" + number;
}

TestServer::~TestServer() { stop(); }

// Asked to go it takes its files in /tmp with it; if it does not go it is made to.
void TestServer::stop() {
    if (process_ <= 0) return;
    ::kill(process_, SIGTERM);
    const auto deadline = Clock::now() + kPatience;
    while (::waitpid(process_, nullptr, WNOHANG) == 0) {
        if (Clock::now() > deadline) ::kill(process_, SIGKILL);
        ::usleep(10000);
    }
    process_ = -1;
}

Painter::Painter(const TestServer& server) : connection_(xcb_connect(server.display().c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_.get())) throw std::runtime_error("no connection to " + server.display());
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data;
    context_ = xcb_generate_id(connection_.get());
    xcb_create_gc(connection_.get(), context_, screen_->root, 0, nullptr);
}

void Painter::fill(std::uint32_t pixel, int left, int top, int width, int height) {
    xcb_change_gc(connection_.get(), context_, XCB_GC_FOREGROUND, &pixel);
    const xcb_rectangle_t rectangle{static_cast<std::int16_t>(left), static_cast<std::int16_t>(top),
                                    static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height)};
    xcb_poly_fill_rectangle(connection_.get(), screen_->root, context_, 1, &rectangle);
    finish();
}

void Painter::show_window(std::uint32_t pixel, int left, int top, int width, int height) {
    const xcb_window_t window = xcb_generate_id(connection_.get());
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window, screen_->root, static_cast<std::int16_t>(left),
                      static_cast<std::int16_t>(top), static_cast<std::uint16_t>(width),
                      static_cast<std::uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                      XCB_CW_BACK_PIXEL, &pixel);
    xcb_map_window(connection_.get(), window);
    finish();
}

// The one monitor is switched off first: it would not fit any more.
void Painter::resize_screen(int width, int height) {
    xcb_connection_t* const x = connection_.get();
    const auto resources =
        owned(xcb_randr_get_screen_resources_reply(x, xcb_randr_get_screen_resources(x, screen_->root), nullptr));
    if (!resources || resources->num_crtcs < 1) throw std::runtime_error("the server's screen cannot be resized");
    const xcb_randr_crtc_t monitor = xcb_randr_get_screen_resources_crtcs(resources.get())[0];
    const auto switched_off = owned(xcb_randr_set_crtc_config_reply(
        x,
        xcb_randr_set_crtc_config(x, monitor, XCB_CURRENT_TIME, resources->config_timestamp, 0, 0, XCB_NONE,
                                  XCB_RANDR_ROTATION_ROTATE_0, 0, nullptr),
        nullptr));
    if (!switched_off) throw std::runtime_error("the server's monitor cannot be switched off");
    xcb_randr_set_screen_size(x, screen_->root, static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height),
                              100, 100);
    finish();
}

void Painter::finish() {
    owned(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
    if (xcb_connection_has_error(connection_.get())) throw std::runtime_error("the X server has gone");
}

}  // namespace tarvo::test
