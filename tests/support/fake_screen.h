#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "pictures.h"
#include "plain_image.h"
#include "platform.h"

namespace tarvo::test {

// A screen of random pixels, the main device for as long as it lives.
class FakeScreen {
public:
    FakeScreen(int width, int height, int depth = 32, int padding = 0)
        : width_(width), height_(height), row_bytes_(width * depth / 8 + padding) {
        bytes_.resize(static_cast<std::size_t>(row_bytes_) * static_cast<std::size_t>(height));
        Random random(8004);
        for (std::uint8_t& byte : bytes_) byte = static_cast<std::uint8_t>(random());
        const PixelLayout layout{bytes_.data(), width, height, depth, row_bytes_, 72};
        world_ = PlatformNewGWorld(&layout, nullptr, 0);
        PlatformSetMainDevice(world_, 0, 0);
    }
    ~FakeScreen() { PlatformDisposeGWorld(world_); }
    FakeScreen(const FakeScreen&) = delete;
    FakeScreen& operator=(const FakeScreen&) = delete;

    void move_to(std::int16_t left, std::int16_t top) { PlatformSetMainDevice(world_, left, top); }
    void set_purged(bool purged) { map().purged = purged; }
    PixMap& map() { return **GetGWorldPixMap(world_); }
    std::uint8_t* row(int y) { return bytes_.data() + static_cast<std::ptrdiff_t>(y) * row_bytes_; }

    PlainImage image() {
        PlainImage image(width_, height_);
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) {
                const std::uint8_t* const at = row(y) + 4 * x;
                image.at(x, y) =
                    std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
            }
        return image;
    }

private:
    int width_, height_, row_bytes_;
    std::vector<std::uint8_t> bytes_;
    GWorldPtr world_;
};

}  // namespace tarvo::test
