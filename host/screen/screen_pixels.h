#pragma once

// Pixels as display servers store them, and as pixel maps do.

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tarvo::host {

// How a server stores the colours of one pixel: a number of some bytes, in the server's byte order.
struct ScreenPixelLayout {
    int bits_per_pixel;
    bool big_endian;
    std::uint32_t red_mask, green_mask, blue_mask;
};

// Rows of such pixels become rows of four bytes a pixel: 0, red, green, blue.
class ScreenPixels {
public:
    // None for a layout that is not understood: 16, 24 and 32 bits a pixel are, with a run of bits for each colour.
    static std::optional<ScreenPixels> of(const ScreenPixelLayout& layout);

    void convert_row(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const;

    int bits_per_pixel() const { return layout_.bits_per_pixel; }

private:
    // A colour's bits: `most` is their largest value.
    struct Channel {
        explicit Channel(std::uint32_t mask);
        // Scaled to 0..255, rounded to the nearest.
        std::uint32_t level(std::uint32_t pixel) const;

        int shift;
        std::uint64_t most;
    };

    explicit ScreenPixels(const ScreenPixelLayout& layout);
    std::uint32_t load(const std::uint8_t* at) const;

    ScreenPixelLayout layout_;
    Channel red_, green_, blue_;
};

}  // namespace tarvo::host
