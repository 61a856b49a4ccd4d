// Colour profiles: whatever their bytes are, pixels of every layout come through, as many as were given. The first byte
// chooses the pixels, and the rest is the profile, whose header is put right.

#include <algorithm>
#include <vector>

#include "fuzz_check.h"
#include "srgb_pixels.h"

using namespace tarvo::host;

namespace {

class Counter final : public PixelTarget {
public:
    void begin(const ImageForm& form, std::uint64_t) override { form_ = form; }
    void put(const PixelRun& run) noexcept override {
        const auto bytes = static_cast<std::size_t>(run.count) * form_.pixel_bytes();
        for (std::size_t i = 0; i < bytes; ++i) sum += run.pixels[i];
        pixels += run.count;
    }
    void turn(int) override {}
    void carry(Carried&& carried) override { FUZZ_CHECK(carried.metadata.icc.empty()); }

    unsigned long sum = 0;
    int pixels = 0;

private:
    ImageForm form_;
};

void put_word(std::vector<std::uint8_t>& bytes, std::size_t place, std::size_t word) {
    for (int i = 0; i < 4; ++i)
        bytes[place + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(word >> (24 - 8 * i));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 133) return 0;
    constexpr const char* kColors[] = {"RGB ", "GRAY", "CMYK", "RGB "};
    std::vector<std::uint8_t> profile(data + 1, data + size);
    const int kind = data[0] % 4;
    put_word(profile, 0, profile.size());
    std::copy_n(kColors[kind], 4, profile.begin() + 16);
    std::copy_n("acsp", 4, profile.begin() + 36);

    Counter counter;
    SrgbPixels converted(counter);
    converted.profile(profile);
    const std::vector<std::uint8_t> samples(64 * 4, data[size - 1]);
    ImageForm form{.width = 64, .height = 1};
    if (kind == 2) {
        std::uint8_t rgb[64 * 3] = {};
        if (const InkConversion convert = converted.ink_conversion(data[0] & 128)) convert(samples.data(), 64, rgb);
        form.file = {FilePixels::Colors::inks};
    }
    constexpr Layout kLayouts[] = {Layout::indexed, Layout::grey_alpha, Layout::rgb, Layout::rgba};
    form.layout = kind == 1 ? kLayouts[data[0] / 4 % 2] : kLayouts[data[0] / 4 % 4];
    form.palette = grey_palette(8);
    converted.begin(form, 0);
    converted.put({.x = 0, .y = 0, .step = 1, .count = 64, .pixels = samples.data()});
    FUZZ_CHECK(counter.pixels == 64);
    Carried carried;
    carried.metadata.icc = profile;
    converted.carry(std::move(carried));
    return 0;
}
