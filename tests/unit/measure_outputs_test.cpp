// The kernels that measure a region, with some of their outputs left out.

#include <array>

#include "contrast.h"
#include "hsv.h"
#include "locked_picture.h"
#include "plain_image.h"
#include "region.h"
#include "rgb_offsets.h"

using namespace tarvo::plugin;

namespace tarvo::test {
namespace {

class AverageOutputs : public LockedPicture {
protected:
    AverageOutputs() : stored(make({.width = 2, .height = 1})), picture(handle(stored), false) {
        write_pixel(of(stored), 0, 0, 0x102030);
        write_pixel(of(stored), 1, 0, 0x50A0F0);
        EXPECT_TRUE(picture.Lock());
    }

    // Calls `measure(red, green, blue)` with each subset of its outputs.
    template <class Number, class Measure>
    void expect_each_alone(const std::array<Number, 3>& expected, Measure measure) {
        for (unsigned wanted = 0; wanted < 8; ++wanted) {
            constexpr Number kUntouched = -77;
            std::array<Number, 3> outputs = {kUntouched, kUntouched, kUntouched};
            const auto output = [&](unsigned i) { return wanted >> i & 1 ? &outputs[i] : nullptr; };
            measure(output(0), output(1), output(2));
            for (unsigned i = 0; i < 3; ++i)
                EXPECT_EQ(outputs[i], wanted >> i & 1 ? expected[i] : kUntouched) << wanted << " " << i;
        }
    }

    ObjectRef stored;
    TRV_Picture picture;
    const Region all{0, 0, 1, 0};
};

TEST_F(AverageOutputs, OfTheContrast) {
    expect_each_alone<int>({0x30, 0x60, 0x90}, [&](int* red, int* green, int* blue) {
        PrivGetAverageContrast(picture, all, 0x000000, red, green, blue, 0);
    });
}

TEST_F(AverageOutputs, OfTheColour) {
    expect_each_alone<int>({0x30, 0x60, 0x90},
                           [&](int* red, int* green, int* blue) { PrivGetAverageRGB(picture, all, red, green, blue); });
}

TEST_F(AverageOutputs, OfHueSaturationAndBrightness) {
    // The mean colour's blue is its largest channel: 4 sixths, and half of one back to green.
    const double saturation = (32.0 / 48.0 + 160.0 / 240.0) / 2.0, brightness = (48.0 / 256.0 + 240.0 / 256.0) / 2.0;
    expect_each_alone<double>({210.0, saturation, brightness}, [&](double* hue, double* s, double* v) {
        PrivGetAverageHSV(picture, all, hue, s, v, 0);
    });
}

}  // namespace
}  // namespace tarvo::test
