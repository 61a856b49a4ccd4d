// Colour models.

#include "pixel.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace TRV_Pixel;

struct Hsv {
    double hue, saturation, value;
};

Hsv hsv_of(unsigned long color) {
    Hsv result{};
    RGBToHSV(color, result.hue, result.saturation, result.value);
    return result;
}

struct Fixed {
    long hue, saturation, value;
    friend bool operator==(const Fixed&, const Fixed&) = default;
};

Fixed fixed_of(unsigned long color) {
    Fixed result{};
    RGBToHSV_1024(color, result.hue, result.saturation, result.value);
    return result;
}

unsigned long rgb(long hue, long saturation, long value) {
    unsigned long color = 0xDEAD;
    HSVToRGB_1024(hue, saturation, value, color);
    return color;
}

// --- the plain versions ----------------------------------------------------------------------------------------------

Fixed plain_fixed(int r, int g, int b) {
    const int max = std::max({r, g, b}), delta = max - std::min({r, g, b});
    if (max == 0) return {-1, 0, 0};
    const int saturation = delta * 1024 / max;
    if (delta < 1) return {-1, saturation, max};
    int hue = 0;
    if (max == r)
        hue = (g - b) * 1024 / delta;
    else if (max == g)
        hue = (b - r) * 1024 / delta + 2048;
    else
        hue = (r - g) * 1024 / delta + 4096;
    return {hue < 0 ? hue + 6144 : hue, saturation, max};
}

unsigned long plain_rgb(int hue, int saturation, int value) {
    const auto packed = [](int r, int g, int b) {
        return static_cast<unsigned long>(static_cast<std::uint32_t>(r * 65536 + g * 256 + b));
    };
    if (saturation == 0) return packed(value, value, value);
    const int sector = hue / 1024, fraction = hue - sector * 1024;
    const int p = (1024 - saturation) * value / 1024;
    const int q = value * (1048576 - saturation * fraction) / 1048576;
    const int t = value * (1048576 - saturation * (1024 - fraction)) / 1048576;
    switch (sector) {
        case 0: return packed(value, t, p);
        case 1: return packed(q, value, p);
        case 2: return packed(p, value, t);
        case 3: return packed(p, q, value);
        case 4: return packed(t, p, value);
        case 5: return packed(value, p, q);
        default: return 0;
    }
}

// --- doubles ---------------------------------------------------------------------------------------------------------

TEST(PixelDoubles, BlackHasItsOwnMark) {
    const Hsv black = hsv_of(0x000000);
    EXPECT_EQ(black.hue, -1.0);
    EXPECT_EQ(black.saturation, 0.0);
    EXPECT_EQ(black.value, 0.0);
}

TEST(PixelDoubles, TheHueOfOtherGreysIsNotANumber) {
    for (const unsigned long grey : {0x010101ul, 0x808080ul, 0xFFFFFFul}) {
        EXPECT_TRUE(std::isnan(hsv_of(grey).hue));
        EXPECT_EQ(hsv_of(grey).saturation, 0.0);
    }
    EXPECT_EQ(hsv_of(0xFFFFFF).value, 0.99609375);
}

TEST(PixelDoubles, Hues) {
    EXPECT_EQ(hsv_of(0xFF0000).hue, 0.0);
    EXPECT_EQ(hsv_of(0xFFFF00).hue, 60.0);
    EXPECT_EQ(hsv_of(0x00FF00).hue, 120.0);
    EXPECT_EQ(hsv_of(0x00FFFF).hue, 180.0);
    EXPECT_EQ(hsv_of(0x0000FF).hue, 240.0);
    EXPECT_EQ(hsv_of(0xFF00FF).hue, 300.0);
    EXPECT_EQ(hsv_of(0xFF0000).saturation, 1.0);
    EXPECT_EQ(hsv_of(0x804020).saturation, 0.75);
    EXPECT_EQ(hsv_of(0x804020).value, 0.5);
    EXPECT_EQ(hsv_of(0x804020).hue, 60.0 * (32.0 / 96.0));
}

TEST(PixelDoubles, TheTopByteDoesNotMatter) {
    EXPECT_EQ(hsv_of(0xAB804020).hue, hsv_of(0x804020).hue);
    EXPECT_EQ(hsv_of(0xAB804020).value, 0.5);
}

// --- integers --------------------------------------------------------------------------------------------------------

TEST(PixelIntegers, KnownValues) {
    EXPECT_EQ(fixed_of(0x000000), (Fixed{-1, 0, 0}));
    EXPECT_EQ(fixed_of(0x808080), (Fixed{-1, 0, 128}));
    EXPECT_EQ(fixed_of(0xFF0000), (Fixed{0, 1024, 255}));
    EXPECT_EQ(fixed_of(0xFFFF00), (Fixed{1024, 1024, 255}));  // of equal channels red decides
    EXPECT_EQ(fixed_of(0x00FF00), (Fixed{2048, 1024, 255}));
    EXPECT_EQ(fixed_of(0x00FFFF), (Fixed{3072, 1024, 255}));  // then green
    EXPECT_EQ(fixed_of(0x0000FF), (Fixed{4096, 1024, 255}));
    EXPECT_EQ(fixed_of(0xFF00FF), (Fixed{5120, 1024, 255}));
    EXPECT_EQ(fixed_of(0xAB00FF00), (Fixed{2048, 1024, 255}));
}

TEST(PixelIntegers, HuesAreTruncatedBeforeTheyAreWrapped) { EXPECT_EQ(fixed_of(0x030001).hue, 5803); }

TEST(PixelIntegers, EveryColourThereAndBack) {
    for (int r = 0; r < 256; ++r) {
        for (int g = 0; g < 256; ++g) {
            for (int b = 0; b < 256; ++b) {
                const auto color = static_cast<unsigned long>(r << 16 | g << 8 | b);
                const Fixed found = fixed_of(color);
                ASSERT_EQ(found, plain_fixed(r, g, b)) << std::hex << color;
                ASSERT_EQ(rgb(found.hue, found.saturation, found.value),
                          plain_rgb(static_cast<int>(found.hue), static_cast<int>(found.saturation),
                                    static_cast<int>(found.value)))
                    << std::hex << color;
            }
        }
    }
}

TEST(PixelIntegers, EveryHueBack) {
    for (int hue = 0; hue < 6144; ++hue)
        for (int saturation = 0; saturation <= 1024; saturation += 31 + hue % 3)
            for (int value = 0; value < 256; value += 15)
                ASSERT_EQ(rgb(hue, saturation, value), plain_rgb(hue, saturation, value))
                    << hue << " " << saturation << " " << value;
}

TEST(PixelIntegers, HuesThatAreNoColoursGiveBlack) {
    EXPECT_EQ(rgb(0, 1024, 255), 0xFF0000u);
    for (const long hue : {6144l, 7000l, 100000l, -1024l, -5000l, 2147483647l, -2147483647l - 1})
        for (const long saturation : {1l, 500l, 1024l}) EXPECT_EQ(rgb(hue, saturation, 255), 0u) << hue;
}

TEST(PixelIntegers, SaturationZeroIsGreyWhateverTheHue) {
    for (const long hue : {0l, 3000l, -1l, -1024l, 6144l, 2147483647l, -2147483647l - 1})
        EXPECT_EQ(rgb(hue, 0, 0x7F), 0x7F7F7Fu) << hue;
}

// Just below 0 a hue still counts as red's sector.
TEST(PixelIntegers, HuesBelowZeroOfTheFirstSector) {
    for (int hue = -1023; hue < 0; hue += 7)
        for (int saturation = 1; saturation <= 1024; saturation += 93)
            for (const int value : {1, 100, 255})
                ASSERT_EQ(rgb(hue, saturation, value), plain_rgb(hue, saturation, value)) << hue << " " << saturation;
}

}  // namespace
