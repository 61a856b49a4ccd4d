// Hue, saturation and brightness in all forms, and their average, through the built library.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "adjustment_checks.h"
#include "client_pictures.h"
#include "watched.h"

namespace tarvo::test {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

struct Change {
    double hue_degrees, saturation_factor, brightness_factor;
};

// --- the plain version -----------------------------------------------------------------------------------------------

std::int32_t wrapped(std::int64_t number) { return static_cast<std::int32_t>(static_cast<std::uint64_t>(number)); }

std::int32_t fixed(double number) {
    return std::isnan(number) ? std::numeric_limits<std::int32_t>::min() : static_cast<std::int32_t>(number);
}

int clamped(int number, int most) { return number < 0 ? 0 : number > most ? most : number; }

std::uint32_t plain_rgb(int hue, int saturation, int value) {
    const auto rgb = [](int red, int green, int blue) {
        return static_cast<std::uint32_t>(red * 65536 + green * 256 + blue);
    };
    if (saturation == 0) return rgb(value, value, value);
    const int sector = hue / 1024, fraction = hue - sector * 1024;
    const int p = (1024 - saturation) * value / 1024;
    const int q = value * (1048576 - saturation * fraction) / 1048576;
    const int t = value * (1048576 - saturation * (1024 - fraction)) / 1048576;
    switch (sector) {
        case 0: return rgb(value, t, p);
        case 1: return rgb(q, value, p);
        case 2: return rgb(p, value, t);
        case 3: return rgb(p, q, value);
        case 4: return rgb(t, p, value);
        case 5: return rgb(value, p, q);
        default: return 0;
    }
}

std::uint32_t plain_hsv(std::uint32_t color, const Change& change) {
    const int r = channel(color, 16), g = channel(color, 8), b = channel(color, 0);
    const int max = std::max({r, g, b}), delta = max - std::min({r, g, b});
    int hue = -1, saturation = 0;
    if (delta > 0) {
        saturation = delta * 1024 / max;
        hue = max == r   ? (g - b) * 1024 / delta
              : max == g ? (b - r) * 1024 / delta + 2048
                         : (r - g) * 1024 / delta + 4096;
        if (hue < 0) hue += 6144;
    }
    hue = wrapped(std::int64_t{hue} + fixed(std::floor(change.hue_degrees * 1024.0 / 60.0)));
    if (hue < 0) hue += 6144;
    if (hue > 6143) hue -= 6144;
    saturation = clamped(wrapped(std::int64_t{fixed(change.saturation_factor * 1024.0)} * saturation) / 1024, 1023);
    const int value = clamped(wrapped(std::int64_t{fixed(change.brightness_factor * 1024.0)} * max) / 1024, 255);
    return plain_rgb(hue, saturation, value);
}

std::uint32_t plain_masked(std::uint32_t color, std::uint32_t mask, const Change& change) {
    return plain_mix_in_255ths(color, plain_hsv(color, change), channel(mask, 0));
}

const std::vector<Change>& awkward_changes() {
    static const std::vector<Change> all = {
        {0.0, 1.0, 1.0},         {77.3, 1.3, 0.8},          {-77.3, 0.4, 1.7},        {359.999, 0.0, 9.99},
        {-359.999, 9.99, 0.0},   {kNotANumber, 0.002, 1.0}, {0.05, 0.999, 1.001},     {-0.05, 0.001, 0.003},
        {kNotANumber, 1.0, 1.0}, {30.0, kNotANumber, 1.0},  {30.0, 1.0, kNotANumber},
    };
    return all;
}

class Hsv : public ::testing::Test {
protected:
    ~Hsv() override { EXPECT_EQ(session.host.yields(), 0); }

    static constexpr Adjustment kHsv = {.name = {"TRV_AdjustHSV"}, .copies_mask = true};

    static Numbers numbers_of(const Change& change, bool negative = false) {
        return {change.hue_degrees, change.saturation_factor, change.brightness_factor, negative};
    }
    Value region_form(const ObjectRef& p, const ObjectRef& rectangle, const Change& change, bool negative = false) {
        return picture_form(session, kHsv.name).call(session, p, rectangle, numbers_of(change, negative));
    }
    Value mask_form(const ObjectRef& p, const ObjectRef& mask, const Change& change) {
        return picture_form(session, kHsv.name, Of::mask).call(session, p, mask, numbers_of(change));
    }
    std::uint32_t adjusted(std::uint32_t color, const Change& change, bool negative = false) {
        const Value result = region_form(plain_picture(session, color), {}, change, negative);
        return read_pixel(*picture_in(result), 1, 1);
    }

    Session session;
    Random random{5202};
};

// --- the adjustment --------------------------------------------------------------------------------------------------

TEST_F(Hsv, AgreesWithTheJudge) {
    for (const Change& change : awkward_changes()) {
        SCOPED_TRACE(::testing::Message()
                     << change.hue_degrees << " " << change.saturation_factor << " " << change.brightness_factor);
        expect_region_agreement(session, random, kHsv, numbers_of(change),
                                [&](std::uint32_t color) { return plain_hsv(color, change); });
        expect_mask_agreement(session, random, kHsv, numbers_of(change), [&](std::uint32_t color, std::uint32_t mask) {
            return plain_masked(color, mask, change);
        });
    }
}

TEST_F(Hsv, EveryColourIsExact) {
    constexpr int kSide = 4096, kRows = kSide / kStride;
    const auto color = [](int x, int y) { return static_cast<std::uint32_t>(y * kStride * kSide + x); };
    const ObjectRef source = session.picture(kSide, kRows);
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kSide; ++x) write_pixel(pixels(source), x, y, color(x, y));
    const Change change = {211.7, 1.13, 0.93};
    const Value result = region_form(source, {}, change);
    ASSERT_TRUE(picture_in(result));
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kSide; ++x)
            ASSERT_EQ(read_pixel(*picture_in(result), x, y), plain_hsv(color(x, y), change)) << std::hex << color(x, y);
}

TEST_F(Hsv, LargeFactorsOfTheRegionForm) {
    for (const Change& change : {Change{10.0, 999.9, 999.9}, Change{10.0, 999.999999, 1.0}, Change{10.0, 1.0, 999.9}})
        for (int i = 0; i < 50; ++i) {
            const std::uint32_t color = any_color(random);
            EXPECT_EQ(adjusted(color, change), plain_hsv(color, change)) << std::hex << color;
        }
}

TEST_F(Hsv, KnownValues) {
    EXPECT_EQ(adjusted(0x808080, {123.0, 1.0, 1.0}), 0x808080u);  // greys have no hue to turn
    EXPECT_EQ(adjusted(0x808080, {0.0, 5.0, 0.5}), 0x404040u);
    EXPECT_EQ(adjusted(0x800000, {120.0, 1.0, 1.0}), 0x008000u);
    EXPECT_EQ(adjusted(0x804000, {0.0, 0.0, 1.0}), 0x808080u);
    EXPECT_EQ(adjusted(0x804020, {0.0, 1.0, 0.0}), 0x000000u);
}

TEST_F(Hsv, FullSaturationIsNotReachedAgain) {
    // 1023 of 1024 stay: (1 * 255) / 1024 is 0, but hues between the corners lose a step.
    EXPECT_EQ(adjusted(0xFF0000, {0.0, 1.0, 1.0}), 0xFF0000u);
    EXPECT_EQ(adjusted(0x40FFAA, {0.0, 2.0, 1.0}), plain_rgb(2048 + 106 * 1024 / 191, 1023, 255));
}

TEST_F(Hsv, AHueOffsetIsRoundedDown) {
    // 0.05 degrees are 0.85 of the smallest step, -0.05 degrees are -0.85.
    EXPECT_EQ(adjusted(0xF08040, {0.05, 1.0, 1.0}), adjusted(0xF08040, {0.0, 1.0, 1.0}));
    const Change back = {-0.05, 1.0, 1.0};
    const int hue = (0x80 - 0x40) * 1024 / (0xF0 - 0x40), saturation = (0xF0 - 0x40) * 1024 / 0xF0;
    EXPECT_EQ(adjusted(0xF08040, back), plain_rgb(hue - 1, saturation, 0xF0));
}

TEST_F(Hsv, AHueThatIsNoNumberLeavesGreysAlone) {
    EXPECT_EQ(adjusted(0xF08040, {kNotANumber, 1.0, 1.0}), 0x000000u);
    EXPECT_EQ(adjusted(0x777777, {kNotANumber, 1.0, 1.0}), 0x777777u);
    EXPECT_EQ(adjusted(0xF08040, {kNotANumber, 0.0, 1.0}), 0xF0F0F0u);
}

TEST_F(Hsv, NegativeInvertsAllOfThePicture) {
    const Change with_a_hue = {90.0, 0.7, 1.2}, without_a_hue = {kNotANumber, 0.002, 1.2};
    for (int i = 0; const Shape& shape : source_shapes()) {
        SCOPED_TRACE(shape.name());
        const Change& change = i++ % 2 ? with_a_hue : without_a_hue;
        const ObjectRef source = random_picture(session, random, shape, 60, 5);
        const Area area = {4, 1, 45, 3};
        const Value result =
            region_form(source, session.rectangle(area.left, area.top, area.width, area.height), change, true);
        ASSERT_TRUE(picture_in(result));
        PlainImage expected = read_image(pixels(source));
        for (int y = 0; y < expected.height; ++y)
            for (int x = 0; x < expected.width; ++x) {
                const std::uint32_t color = expected.at(x, y);
                expected.at(x, y) = 0xFFFFFF - ((area.has(x, y) ? plain_hsv(color, change) : color) & 0xFFFFFF);
            }
        EXPECT_EQ(difference(*picture_in(result), expected, std::max(shape.depth, 16)), "");
    }
    EXPECT_EQ(adjusted(0x123456, {0.0, 1.0, 1.0}, true), 0xEDCBA9u);
}

TEST_F(Hsv, WhiteInTheMaskIsAllOfTheChangeAndBlackNone) {
    const ObjectRef source = plain_picture(session, 0x804020, 2, 1), mask = session.picture(2, 1);
    write_pixel(pixels(mask), 0, 0, 0xFFFF00);  // only the low byte weighs
    write_pixel(pixels(mask), 1, 0, 0x0000FF);
    const Value result = mask_form(source, mask, {0.0, 0.0, 1.0});
    EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), 0x804020u);
    EXPECT_EQ(read_pixel(*picture_in(result), 1, 0), 0x808080u);
}

TEST_F(Hsv, BoundsOfTheArguments) {
    const ObjectRef source = plain_picture(session, 0x804020), mask = session.picture(3, 2);
    const auto region_code = [&](Change change) {
        const Value result = region_form(source, {}, change);
        EXPECT_EQ(static_cast<bool>(object_in(result)), session.last_error() == 0);
        return session.last_error();
    };
    const auto mask_code = [&](Change change) {
        const Value result = mask_form(source, mask, change);
        EXPECT_EQ(static_cast<bool>(object_in(result)), session.last_error() == 0);
        return session.last_error();
    };
    const double below_1000 = std::nextafter(1000.0, 0.0), below_10 = std::nextafter(10.0, 0.0);
    const double below_360 = std::nextafter(360.0, 0.0);
    EXPECT_EQ(region_code({-below_360, 0.0, below_1000}), 0);
    EXPECT_EQ(region_code({below_360, below_1000, 0.0}), 0);
    EXPECT_EQ(region_code({-359.9, 999.9, 999.9}), 0);
    EXPECT_EQ(region_code({0.0, 10.0, 10.0}), 0);
    EXPECT_EQ(region_code({kNotANumber, kNotANumber, kNotANumber}), 0);
    EXPECT_EQ(mask_code({-below_360, 0.0, below_10}), 0);
    EXPECT_EQ(mask_code({below_360, below_10, 0.0}), 0);
    EXPECT_EQ(mask_code({kNotANumber, kNotANumber, kNotANumber}), 0);
    for (const auto& code : {std::function<int(Change)>(region_code), std::function<int(Change)>(mask_code)}) {
        for (const double wrong : {360.0, -360.0, 1e300, -1e300}) {
            EXPECT_EQ(code({wrong, 1.0, 1.0}), 43);
            EXPECT_EQ(code({wrong, -1.0, -1.0}), 43);
        }
        for (const double wrong : {-0.01, 1000.0, 1e300, -5e-324}) {
            EXPECT_EQ(code({0.0, wrong, 1.0}), 44);
            EXPECT_EQ(code({0.0, 1.0, wrong}), 45);
            EXPECT_EQ(code({kNotANumber, wrong, wrong}), 44);
        }
    }
    EXPECT_EQ(mask_code({0.0, 10.0, 1.0}), 44);
    EXPECT_EQ(mask_code({0.0, 1.0, 10.0}), 45);
}

TEST_F(Hsv, ChecksComeInOrder) {
    expect_checks(session, kHsv.name, numbers_of({0.0, 1.0, 1.0}), {numbers_of({360.0, 1.0, 1.0}), 43});
}

TEST_F(Hsv, ClientFormsGiveWhatThePictureFormsGive) {
    for (const bool negative : {false, true})
        expect_same_forms(session, random, kHsv, numbers_of({100.0, 1.4, 0.8}, negative));
}

TEST_F(Hsv, AMaskThatCannotBeCopiedGivesCode9AndTheResult) {
    const ObjectRef source = plain_picture(session, 0x804020);
    pixels(source).set_mask(session.picture(3, 2));
    pixels(pixels(source).mask()).set_purged(true);
    const Value result = region_form(source, {}, {0.0, 0.0, 1.0});
    ASSERT_TRUE(picture_in(result));
    EXPECT_EQ(session.last_error(), 9);
    EXPECT_EQ(read_pixel(*picture_in(result), 2, 1), 0x808080u);
}

// --- the average -----------------------------------------------------------------------------------------------------

struct Average {
    double hue, saturation, brightness;
};

// Numbers are compared to the bit; all that are no numbers are the same.
bool operator==(const Average& a, const Average& b) {
    const auto same = [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); };
    return same(a.hue, b.hue) && same(a.saturation, b.saturation) && same(a.brightness, b.brightness);
}

double plain_hue(std::int64_t r, std::int64_t g, std::int64_t b) {
    const std::int64_t max = std::max({r, g, b});
    if (max == 0) return -1.0;
    const auto delta = static_cast<double>(max - std::min({r, g, b}));
    const double sixths = max == r   ? static_cast<double>(g - b) / delta
                          : max == g ? 2.0 + static_cast<double>(b - r) / delta
                                     : 4.0 + static_cast<double>(r - g) / delta;
    const double degrees = sixths * 60.0;
    return degrees < 0.0 ? degrees + 360.0 : degrees;
}

Average plain_average(const PlainImage& image, const Area& area) {
    std::int64_t r = 0, g = 0, b = 0, count = 0;
    double saturation = 0.0, value = 0.0;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (!area.has(x, y)) continue;
            const std::uint32_t color = image.at(x, y);
            const int channels[] = {channel(color, 16), channel(color, 8), channel(color, 0)};
            const int max = *std::ranges::max_element(channels), min = *std::ranges::min_element(channels);
            r += channels[0], g += channels[1], b += channels[2], ++count;
            saturation += max ? static_cast<double>(max - min) / max : 0.0;
            value += max * 0.00390625;
        }
    }
    const auto pixels = static_cast<double>(count);
    return {plain_hue(r / count, g / count, b / count), saturation / pixels, value / pixels};
}

class AverageHsv : public Hsv {
protected:
    static constexpr OperationName kName = {"TRV_GetAverageHSV"};

    Average average(const ObjectRef& p, const ObjectRef& rectangle) {
        Numbers numbers = {-7.0, -7.0, -7.0};
        picture_form(session, kName).call_by_ref(session, p, rectangle, numbers);
        return {std::get<double>(numbers[0]), std::get<double>(numbers[1]), std::get<double>(numbers[2])};
    }
};

TEST_F(AverageHsv, AgreesWithTheJudgeToTheBit) {
    expect_average_agreement(session, random, kName, {-7.0, -7.0, -7.0},
                             [](const PlainImage& image, const Area& area) -> Numbers {
                                 const Average expected = plain_average(image, area);
                                 return {expected.hue, expected.saturation, expected.brightness};
                             });
}

// The sums' fractions are exact: 20 million times 255/256.
TEST_F(AverageHsv, SumsOfLargePicturesDoNotWrap) {
    const ObjectRef white = session.host.new_picture({.width = 5000, .height = 4000, .depth = 8});
    EXPECT_EQ(average(white, {}), (Average{kNotANumber, 0.0, 0.99609375}));
}

TEST_F(AverageHsv, KnownValues) {
    EXPECT_EQ(average(plain_picture(session, 0xFF0000), session.rectangle(0, 0, 1, 1)),
              (Average{0.0, 1.0, 0.99609375}));
    EXPECT_EQ(average(plain_picture(session, 0xFF00FF), {}), (Average{300.0, 1.0, 0.99609375}));
    EXPECT_EQ(average(plain_picture(session, 0x000000), {}), (Average{-1.0, 0.0, 0.0}));
}

TEST_F(AverageHsv, TheHueOfGreysIsNotANumber) {
    EXPECT_EQ(average(plain_picture(session, 0x808080), {}), (Average{kNotANumber, 0.0, 0.5}));
}

TEST_F(AverageHsv, TheHueIsThatOfTheMeanColour) {
    const ObjectRef source = plain_picture(session, 0xFF0000, 2, 1);
    write_pixel(pixels(source), 1, 0, 0x00FF00);
    // (127, 127, 0): yellow; the mean of the hues would be, too, but not of red and a faint green.
    EXPECT_EQ(average(source, {}).hue, 60.0);
    write_pixel(pixels(source), 1, 0, 0x000A00);
    EXPECT_EQ(average(source, {}).hue, 60.0 * (5.0 / 127.0));
}

TEST_F(AverageHsv, ChecksComeInOrderAndFailuresLeaveTheOutputs) { expect_checks(session, kName, {-7.0, -7.0, -7.0}); }

}  // namespace
}  // namespace tarvo::test
