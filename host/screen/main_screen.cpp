#include "main_screen.h"

#include <exception>
#include <utility>

namespace tarvo::host {
namespace {

constexpr int kDepth = 32;
constexpr int kBytesPerPixel = kDepth / 8;
constexpr int kDotsPerInch = 72;

}  // namespace

std::unique_ptr<MainScreen> MainScreen::open(const std::string& display) {
    auto root = X11Root::connect(display);
    return root ? std::unique_ptr<MainScreen>(new MainScreen(std::move(root))) : nullptr;
}

MainScreen::MainScreen(std::unique_ptr<X11Root> root) : root_(std::move(root)) {
    PlatformSetScreenRefresh(&MainScreen::refresh, this);
}

MainScreen::~MainScreen() {
    PlatformSetScreenRefresh(nullptr, nullptr);
    PlatformDisposeGWorld(world_);  // with the world, the main device goes too
}

void MainScreen::refresh(void* screen) noexcept {
    auto& self = *static_cast<MainScreen*>(screen);
    bool taken = false;
    try {
        taken = self.take_snapshot();
    } catch (const std::exception&) {  // there is too little memory
    }
    PlatformSetMainDevice(taken ? self.world_ : nullptr, 0, 0);
}

bool MainScreen::take_snapshot() {
    const auto size = root_->size();
    if (!size || !fit_world(*size)) return false;
    const std::uint8_t* row = root_->take_image(*size);
    if (!row) return false;
    const auto width = static_cast<std::size_t>(size_.width);
    for (int y = 0; y < size_.height; ++y, row += root_->row_bytes(size_))
        root_->pixels().convert_row(row, pixels_.data() + static_cast<std::size_t>(y) * width * kBytesPerPixel, width);
    return true;
}

// Screens change their size while programs run.
bool MainScreen::fit_world(X11Root::Size size) {
    if (world_ && size.width == size_.width && size.height == size_.height) return true;
    PlatformDisposeGWorld(std::exchange(world_, nullptr));
    const int row_bytes = size.width * kBytesPerPixel;
    pixels_.resize(static_cast<std::size_t>(row_bytes) * static_cast<std::size_t>(size.height));
    size_ = size;
    const PixelLayout layout{pixels_.data(), size.width, size.height, kDepth, row_bytes, kDotsPerInch};
    world_ = PlatformNewGWorld(&layout, nullptr, 0);
    return world_ != nullptr;
}

}  // namespace tarvo::host
