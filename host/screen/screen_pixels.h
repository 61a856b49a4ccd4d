#pragma once

// Converts pixels as display servers store them to pixels as pixel maps store them.

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tarvo::host {

// How a server stores the colours of one pixel: as a number of one or more bytes, in the server's byte order.
struct ScreenPixelLayout {
    int bits_per_pixel;
    bool big_endian;
    std::uint32_t red_mask, green_mask, blue_mask;
};

// Converts rows of such pixels to rows of four bytes a pixel: 0, red, green, blue.
class ScreenPixels {
public:
    // Returns none for a layout that is not understood. Understood are 16, 24 and 32 bits a pixel, with neighbouring
    // bits for each colour.
    static std::optional<ScreenPixels> of(const ScreenPixelLayout& layout);

    void convert_row(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const;

    int bits_per_pixel() const { return layout_.bits_per_pixel; }

private:
    // The bits of one colour. `most` is their largest value.
    struct Channel {
        explicit Channel(std::uint32_t mask);
        // Returns the colour's level in a pixel, scaled to 0..255 and rounded to the nearest.
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
