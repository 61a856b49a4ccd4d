// Raises the contrast of the pixels in a buffer: R, G, B, R, G, B, ...
//
//     contrast++ < pixels.rgb > result.rgb        640 x 480 pixels
#include <cstdio>
#include <tarvo.hpp>
#include <vector>

namespace {

constexpr int kWidth = 640, kHeight = 480, kStride = 3 * kWidth;

void raise_contrast(std::vector<unsigned char>& rows) {
    const auto picture = tarvo::Picture::from_rows(rows.data(), kStride, kWidth, kHeight, TARVO_RGB24);
    const auto result = picture.call("TRV_AdjustContrast", nullptr, tarvo::Color{0x808080}, 1.6, 1.6, 1.6);
    result.picture().to_rows(rows.data(), kStride, TARVO_RGB24);
}

}  // namespace

int main() try {
    std::vector<unsigned char> pixels(kStride * kHeight);
    if (std::fread(pixels.data(), 1, pixels.size(), stdin) != pixels.size()) return 2;
    raise_contrast(pixels);
    return std::fwrite(pixels.data(), 1, pixels.size(), stdout) == pixels.size() ? 0 : 2;
} catch (const tarvo::Error& error) {
    std::fprintf(stderr, "contrast++: %s\n", error.what());
    return 1;
}
