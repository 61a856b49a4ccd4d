#include "x11_root.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <utility>

namespace tarvo::host {
namespace {

constexpr std::uint32_t kAllPlanes = 0xFFFFFFFF;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

// Owns a reply or an error, which the caller has to free.
template <class T>
using Owned = std::unique_ptr<T, Free>;
template <class T>
Owned<T> owned(T* reply) {
    return Owned<T>(reply);
}

// Returns null when the display has fewer screens.
const xcb_screen_t* screen_of(xcb_connection_t* connection, int number) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem; xcb_screen_next(&screens))
        if (number-- == 0) return screens.data;
    return nullptr;
}

// Returns null when the screen's own visual looks its colours up in a table.
const xcb_visualtype_t* true_color_visual_of(const xcb_screen_t& screen) {
    xcb_depth_iterator_t depths = xcb_screen_allowed_depths_iterator(&screen);
    for (; depths.rem; xcb_depth_next(&depths)) {
        xcb_visualtype_iterator_t visuals = xcb_depth_visuals_iterator(depths.data);
        for (; visuals.rem; xcb_visualtype_next(&visuals)) {
            const xcb_visualtype_t* visual = visuals.data;
            if (visual->visual_id == screen.root_visual)
                return visual->_class == XCB_VISUAL_CLASS_TRUE_COLOR ? visual : nullptr;
        }
    }
    return nullptr;
}

const xcb_format_t* format_of(const xcb_setup_t& setup, int depth) {
    xcb_format_iterator_t formats = xcb_setup_pixmap_formats_iterator(&setup);
    for (; formats.rem; xcb_format_next(&formats))
        if (formats.data->depth == depth) return formats.data;
    return nullptr;
}

bool offers_shared_memory(xcb_connection_t* connection) {
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_shm_id);
    if (!extension || !extension->present) return false;
    return owned(xcb_shm_query_version_reply(connection, xcb_shm_query_version(connection), nullptr)) != nullptr;
}

}  // namespace

void X11Root::Disconnect::operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
void X11Root::FreeReply::operator()(void* reply) const { std::free(reply); }

// Memory that this process shares with the server.
class X11Root::SharedMemory {
public:
    // Returns null when there is no such memory, or the server does not see it.
    static std::unique_ptr<SharedMemory> make(xcb_connection_t* connection, std::size_t size) {
        const int id = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
        if (id < 0) return nullptr;
        void* const memory = shmat(id, nullptr, 0);
        const bool here = memory != reinterpret_cast<void*>(std::intptr_t{-1});
        const xcb_shm_seg_t segment = xcb_generate_id(connection);
        const bool there = here && attached_to_server(connection, segment, id);
        shmctl(id, IPC_RMID, nullptr);  // the memory goes with the last process that has it attached
        if (there) return std::unique_ptr<SharedMemory>(new SharedMemory(connection, segment, memory, size));
        if (here) shmdt(memory);
        return nullptr;
    }
    ~SharedMemory() {
        xcb_shm_detach(connection_, segment_);
        shmdt(memory_);
    }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    xcb_shm_seg_t segment() const { return segment_; }
    const std::uint8_t* data() const { return static_cast<const std::uint8_t*>(memory_); }
    std::size_t size() const { return size_; }

private:
    SharedMemory(xcb_connection_t* connection, xcb_shm_seg_t segment, void* memory, std::size_t size)
        : connection_(connection), segment_(segment), memory_(memory), size_(size) {}

    static bool attached_to_server(xcb_connection_t* connection, xcb_shm_seg_t segment, int id) {
        const auto cookie = xcb_shm_attach_checked(connection, segment, static_cast<std::uint32_t>(id), 0);
        return !owned(xcb_request_check(connection, cookie)) && !xcb_connection_has_error(connection);
    }

    xcb_connection_t* connection_;
    xcb_shm_seg_t segment_;
    void* memory_;
    std::size_t size_;
};

std::unique_ptr<X11Root> X11Root::connect(const std::string& display) {
    int number = 0;
    Connection connection(xcb_connect(display.empty() ? nullptr : display.c_str(), &number));
    if (xcb_connection_has_error(connection.get())) return nullptr;
    const xcb_setup_t& setup = *xcb_get_setup(connection.get());
    const xcb_screen_t* screen = screen_of(connection.get(), number);
    const xcb_visualtype_t* visual = screen ? true_color_visual_of(*screen) : nullptr;
    const xcb_format_t* format = visual ? format_of(setup, screen->root_depth) : nullptr;
    if (!format) return nullptr;
    const auto pixels = ScreenPixels::of({.bits_per_pixel = format->bits_per_pixel,
                                          .big_endian = setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST,
                                          .red_mask = visual->red_mask,
                                          .green_mask = visual->green_mask,
                                          .blue_mask = visual->blue_mask});
    if (!pixels) return nullptr;
    const bool has_shared_memory = offers_shared_memory(connection.get());
    return std::unique_ptr<X11Root>(
        new X11Root(std::move(connection), screen->root, *pixels, format->scanline_pad, has_shared_memory));
}

X11Root::X11Root(Connection connection, std::uint32_t window, const ScreenPixels& pixels, int row_alignment,
                 bool has_shared_memory)
    : connection_(std::move(connection)),
      window_(window),
      pixels_(pixels),
      row_alignment_(row_alignment),
      has_shared_memory_(has_shared_memory) {}

X11Root::~X11Root() = default;

std::optional<X11Root::Size> X11Root::size() {
    const auto geometry =
        owned(xcb_get_geometry_reply(connection_.get(), xcb_get_geometry(connection_.get(), window_), nullptr));
    if (!geometry) return std::nullopt;
    return Size{geometry->width, geometry->height};
}

std::size_t X11Root::row_bytes(Size size) const {
    const auto bits = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(pixels_.bits_per_pixel());
    const auto alignment = static_cast<std::size_t>(row_alignment_);
    return (bits + alignment - 1) / alignment * alignment / 8;
}

const std::uint8_t* X11Root::take_image(Size size) {
    const std::uint8_t* image = has_shared_memory_ ? take_shared_image(size) : nullptr;
    return image ? image : take_sent_image(size);
}

const std::uint8_t* X11Root::take_shared_image(Size size) {
    const std::size_t bytes = row_bytes(size) * static_cast<std::size_t>(size.height);
    if (!shared_ || shared_->size() < bytes) {
        shared_.reset();
        shared_ = SharedMemory::make(connection_.get(), bytes);
        has_shared_memory_ = shared_ != nullptr;
        if (!shared_) return nullptr;
    }
    const auto request = xcb_shm_get_image(connection_.get(), window_, 0, 0, static_cast<std::uint16_t>(size.width),
                                           static_cast<std::uint16_t>(size.height), kAllPlanes,
                                           XCB_IMAGE_FORMAT_Z_PIXMAP, shared_->segment(), 0);
    return owned(xcb_shm_get_image_reply(connection_.get(), request, nullptr)) ? shared_->data() : nullptr;
}

const std::uint8_t* X11Root::take_sent_image(Size size) {
    const auto request =
        xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window_, 0, 0,
                      static_cast<std::uint16_t>(size.width), static_cast<std::uint16_t>(size.height), kAllPlanes);
    xcb_get_image_reply_t* const reply = xcb_get_image_reply(connection_.get(), request, nullptr);
    sent_.reset(reply);
    if (!reply) return nullptr;
    const auto sent = static_cast<std::size_t>(xcb_get_image_data_length(reply));
    return sent >= row_bytes(size) * static_cast<std::size_t>(size.height) ? xcb_get_image_data(reply) : nullptr;
}

}  // namespace tarvo::host
