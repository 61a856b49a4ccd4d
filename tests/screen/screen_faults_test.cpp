// The main screen where the system or its server fails: pictures come another way, or not at all, and nothing is left.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cerrno>
#include <cstdlib>
#include <new>

#include "canvas.h"
#include "main_screen.h"
#include "plain_image.h"
#include "session.h"
#include "test_server.h"

namespace {

enum class Fault {
    none,
    no_shared_memory,
    shared_memory_not_attached,
    server_does_not_attach,
    no_shared_image,
    no_sent_image,
    short_sent_image,
    no_memory_for_pixels,
};
Fault fault = Fault::none;

template <class Function>
Function* real(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
#define REAL(function) real(&function, #function)

}  // namespace

// The program's own definitions stand before those of the libraries.
extern "C" {

int shmget(key_t key, size_t size, int flags) noexcept {
    if (fault != Fault::no_shared_memory) return static_cast<int>(syscall(SYS_shmget, key, size, flags));
    errno = ENOSPC;
    return -1;
}

void* shmat(int id, const void* address, int flags) noexcept {
    if (fault != Fault::shared_memory_not_attached)
        return reinterpret_cast<void*>(syscall(SYS_shmat, id, address, flags));
    errno = ENOMEM;
    return reinterpret_cast<void*>(std::intptr_t{-1});
}

xcb_void_cookie_t xcb_shm_attach_checked(xcb_connection_t* connection, xcb_shm_seg_t segment, uint32_t id,
                                         uint8_t read_only) {
    if (fault == Fault::server_does_not_attach) id = 0x7FFFFFFF;
    return REAL(xcb_shm_attach_checked)(connection, segment, id, read_only);
}

xcb_shm_get_image_reply_t* xcb_shm_get_image_reply(xcb_connection_t* connection, xcb_shm_get_image_cookie_t cookie,
                                                   xcb_generic_error_t** error) {
    auto* const reply = REAL(xcb_shm_get_image_reply)(connection, cookie, error);
    if (fault != Fault::no_shared_image) return reply;
    std::free(reply);
    return nullptr;
}

xcb_get_image_reply_t* xcb_get_image_reply(xcb_connection_t* connection, xcb_get_image_cookie_t cookie,
                                           xcb_generic_error_t** error) {
    auto* const reply = REAL(xcb_get_image_reply)(connection, cookie, error);
    if (fault != Fault::no_sent_image) return reply;
    std::free(reply);
    return nullptr;
}

int xcb_get_image_data_length(const xcb_get_image_reply_t* reply) {
    const int length = REAL(xcb_get_image_data_length)(reply);
    return fault == Fault::short_sent_image ? length - 1 : length;
}

}  // extern "C"

namespace tarvo::test {
namespace {

constexpr int kWidth = 131, kHeight = 77;
constexpr std::size_t kPixelBytes = std::size_t{kWidth} * kHeight * 4;

class ScreenFaults : public ::testing::Test {
protected:
    ~ScreenFaults() override { fault = Fault::none; }

    // Whether the screen is captured, as it is.
    bool is_captured(const PlainImage& expected) {
        const Value captured = session.call(session.host.new_screen(), "TRV_ScreenCapture", nullptr);
        if (!picture_in(captured)) return false;
        EXPECT_EQ(difference(*picture_in(captured), expected, 32), "");
        return true;
    }

    Session session;
};

TEST_F(ScreenFaults, OfSharedMemoryLeaveTheImageThatIsSent) {
    const TestServer server(kWidth, kHeight, 24, {"+extension", "MIT-SHM"});
    Painter painter(server);
    Canvas canvas(painter, kWidth, kHeight);
    paint_pattern(canvas);
    for (const Fault each : {Fault::no_shared_memory, Fault::shared_memory_not_attached, Fault::server_does_not_attach,
                             Fault::no_shared_image}) {
        SCOPED_TRACE(static_cast<int>(each));
        const auto screen = host::MainScreen::open(server.display());
        ASSERT_TRUE(screen);
        fault = each;
        EXPECT_TRUE(is_captured(canvas.image()));
        fault = Fault::none;
        EXPECT_TRUE(is_captured(canvas.image()));
    }
    EXPECT_EQ(PlatformLiveObjects().worlds, 0);
}

TEST_F(ScreenFaults, OfTheServerAreNoPicture) {
    const TestServer server(kWidth, kHeight, 24, {"-extension", "MIT-SHM"});
    Painter painter(server);
    Canvas canvas(painter, kWidth, kHeight);
    const auto screen = host::MainScreen::open(server.display());
    ASSERT_TRUE(screen);
    for (const Fault each : {Fault::no_sent_image, Fault::short_sent_image}) {
        fault = each;
        EXPECT_FALSE(is_captured(canvas.image())) << static_cast<int>(each);
        fault = Fault::none;
        EXPECT_TRUE(is_captured(canvas.image()));
    }
}

TEST_F(ScreenFaults, OfMemoryAreNoPicture) {
    const TestServer server(kWidth, kHeight, 24);
    Painter painter(server);
    Canvas canvas(painter, kWidth, kHeight);
    const auto screen = host::MainScreen::open(server.display());
    ASSERT_TRUE(screen);
    fault = Fault::no_memory_for_pixels;
    EXPECT_FALSE(is_captured(canvas.image()));
    fault = Fault::none;
    EXPECT_TRUE(is_captured(canvas.image()));
}

TEST_F(ScreenFaults, OfAVisualWithoutBytesForItsColours) {
    const TestServer server(40, 30, 8, {"-cc", "4"});  // all colours in 8 bits
    EXPECT_FALSE(host::MainScreen::open(server.display()));
}

}  // namespace
}  // namespace tarvo::test

// The screen's pixels are the one block of that size.
void* operator new(std::size_t size) {
    void* const block =
        fault == Fault::no_memory_for_pixels && size == tarvo::test::kPixelBytes ? nullptr : std::malloc(size);
    if (!block) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
