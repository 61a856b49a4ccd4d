// RGB offsets, the colour-matrix transform and the mean colour, through the built library.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "adjustment_checks.h"
#include "watched.h"

namespace tarvo::test {
namespace {

constexpr Adjustment kOffsets = {.name = {"TRV_AdjustRGB", "red_delta"}};
constexpr OperationName kInPlace = {"TRV_AdjustRGB_InPlace"};
constexpr Adjustment kMatrix = {.name = {"TRV_AdjustRGB", "cm"}};
constexpr OperationName kAverage = {"TRV_GetAverageRGB"};

int clamped(std::int64_t number) { return static_cast<int>(number < 0 ? 0 : number > 255 ? 255 : number); }

class AdjustRgb : public ::testing::Test {
protected:
    ~AdjustRgb() override { EXPECT_EQ(session.host.yields(), 0); }

    Value call(const OperationName& operation, Of of, const ObjectRef& p, const ObjectRef& second,
               const Numbers& numbers) {
        return picture_form(session, operation, of).call(session, p, second, numbers);
    }

    Session session;
    Random random{5404};
};

// --- offsets ---------------------------------------------------------------------------------------------------------

struct Deltas {
    int red, green, blue;
    int of(int shift) const { return shift == 16 ? red : shift == 8 ? green : blue; }
};

std::uint32_t plain_offsets(std::uint32_t color, const Deltas& deltas) {
    return each_channel([&](int shift) { return clamped(channel(color, shift) + deltas.of(shift)); });
}

std::uint32_t plain_offsets_masked(std::uint32_t color, std::uint32_t mask, const Deltas& deltas) {
    const int level = channel(mask, 0);
    return each_channel([&](int shift) {
        const int x = channel(color, shift);
        return clamped((x * (255 - level) + (x + deltas.of(shift)) * level) / 255);
    });
}

Numbers numbers_of(const Deltas& deltas) { return {deltas.red, deltas.green, deltas.blue}; }

class Offsets : public AdjustRgb {
protected:
    Value region_form(const ObjectRef& p, const ObjectRef& rectangle, const Deltas& deltas) {
        return call(kOffsets.name, Of::region, p, rectangle, numbers_of(deltas));
    }
    Value mask_form(const ObjectRef& p, const ObjectRef& mask, const Deltas& deltas) {
        return call(kOffsets.name, Of::mask, p, mask, numbers_of(deltas));
    }
    Value in_place(const ObjectRef& p, const ObjectRef& rectangle, const Deltas& deltas) {
        return call(kInPlace, Of::region, p, rectangle, numbers_of(deltas));
    }
};

constexpr Deltas kDeltas[] = {{0, 0, 0},      {10, -20, 30},   {255, 255, 255}, {-255, -255, -255},
                              {-255, 0, 255}, {254, -254, -1}, {1, -1, 0},      {100, 100, -128}};

TEST_F(Offsets, AgreeWithTheJudge) {
    for (const Deltas& deltas : kDeltas) {
        SCOPED_TRACE(::testing::Message() << deltas.red << " " << deltas.green << " " << deltas.blue);
        expect_region_agreement(session, random, kOffsets, numbers_of(deltas),
                                [&](std::uint32_t color) { return plain_offsets(color, deltas); });
        expect_mask_agreement(
            session, random, kOffsets, numbers_of(deltas),
            [&](std::uint32_t color, std::uint32_t mask) { return plain_offsets_masked(color, mask, deltas); });
    }
}

TEST_F(Offsets, EveryValueDeltaAndLevelIsExact) {
    const ObjectRef ramp = grey_ramp(session), tall = session.picture(256, 256), levels = session.picture(256, 256);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            write_pixel(pixels(tall), x, y, read_pixel(pixels(ramp), x, 0));
            write_pixel(pixels(levels), x, y, static_cast<std::uint32_t>(y));
        }
    }
    for (int delta = -255; delta <= 255; delta += kStride) {
        const Deltas deltas = {delta, -delta, delta / 2};
        const Value result = region_form(ramp, {}, deltas);
        for (int x = 0; x < 256; ++x)
            ASSERT_EQ(read_pixel(*picture_in(result), x, 0),
                      plain_offsets(static_cast<std::uint32_t>(x) * 0x010101, deltas));
        const Value masked = mask_form(tall, levels, deltas);
        for (int y = 0; y < 256; ++y)
            for (int x = 0; x < 256; ++x)
                ASSERT_EQ(read_pixel(*picture_in(masked), x, y),
                          plain_offsets_masked(static_cast<std::uint32_t>(x) * 0x010101, static_cast<std::uint32_t>(y),
                                               deltas))
                    << x << " by " << delta << " at " << y;
    }
}

TEST_F(Offsets, TheMixIsClampedAfterTheMask) {
    const ObjectRef source = plain_picture(session, 250 * 0x010101), mask = plain_picture(session, 128);
    const Value result = mask_form(source, mask, {100, 100, 100});
    EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), 0xFFFFFFu);  // of 300; clamping first would give 252
}

TEST_F(Offsets, BoundsAreInclusiveAndCheckedInOrder) {
    const ObjectRef source = plain_picture(session, 0x808080), mask = session.picture(3, 2);
    const auto code = [&](const Deltas& deltas) {
        const Value of_region = region_form(source, {}, deltas);
        const int region_code = session.last_error();
        EXPECT_EQ(static_cast<bool>(object_in(of_region)), region_code == 0);
        const Value of_mask = mask_form(source, mask, deltas);
        EXPECT_EQ(session.last_error(), region_code);
        EXPECT_EQ(static_cast<bool>(object_in(of_mask)), region_code == 0);
        const ObjectRef changed = plain_picture(session, 0x808080);
        in_place(changed, {}, deltas);
        EXPECT_EQ(session.last_error(), region_code);
        EXPECT_EQ(read_pixel(pixels(changed), 0, 0), region_code ? 0x808080u : plain_offsets(0x808080, deltas));
        return region_code;
    };
    EXPECT_EQ(code({255, 255, 255}), 0);
    EXPECT_EQ(code({-255, -255, -255}), 0);
    for (const int wrong : {256, -256, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(code({wrong, 0, 0}), 40);
        EXPECT_EQ(code({0, wrong, 0}), 41);
        EXPECT_EQ(code({0, 0, wrong}), 42);
        EXPECT_EQ(code({wrong, wrong, wrong}), 40);
        EXPECT_EQ(code({0, wrong, wrong}), 41);
    }
}

TEST_F(Offsets, ChecksComeInOrder) {
    for (const OperationName& operation : {kOffsets.name, kInPlace})
        expect_checks(session, operation, {1, 1, 1}, {{999, 0, 0}, 40});
}

// --- in place --------------------------------------------------------------------------------------------------------

TEST_F(Offsets, InPlaceChangesNothingButTheRegion) {
    const Deltas deltas = {40, -30, 7};
    for (const Shape& shape : source_shapes()) {
        if (shape.backing == host::Backing::drawing_commands) continue;
        for (const int width : {any_of(random, 1, 40), 513}) {
            SCOPED_TRACE(shape.name() + ", " + std::to_string(width) + " wide");
            const int height = any_of(random, 1, 6);
            const ObjectRef picture = random_picture(session, random, shape, width, height);
            pixels(picture).set_mask(random_mask(session, random, 8, width, height));
            const Area area = any_area(random, width, height);

            // The judge's copy has the same bytes, and writes the same pixels.
            const auto expected = Picture::make(
                {.width = width, .height = height, .depth = shape.depth, .row_padding = shape.row_padding});
            const std::size_t bytes = pixels(picture).packed_row_bytes() + static_cast<std::size_t>(shape.row_padding);
            for (int y = 0; y < height; ++y) std::copy_n(pixels(picture).row(y), bytes, expected->row(y));
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    if (area.has(x, y) && shape.depth >= 16)
                        write_pixel(*expected, x, y, plain_offsets(read_pixel(pixels(picture), x, y), deltas));

            const auto mask_before = all_bytes(pixels(picture).mask());
            const Value nothing =
                in_place(picture, session.rectangle(area.left, area.top, area.width, area.height), deltas);
            EXPECT_FALSE(object_in(nothing));
            EXPECT_EQ(session.last_error(), 0);
            for (int y = 0; y < height; ++y)
                ASSERT_TRUE(std::equal(expected->row(y), expected->row(y) + bytes, pixels(picture).row(y))) << y;
            EXPECT_EQ(all_bytes(pixels(picture).mask()), mask_before);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

// A drawing is rendered for the call; what is changed of it goes with the rendering.
TEST_F(Offsets, InPlaceLeavesDrawingsAsTheyAre) {
    const ObjectRef drawing =
        random_picture(session, random, {.depth = 32, .backing = host::Backing::drawing_commands}, 9, 4);
    const PlainImage before = read_image(pixels(drawing));
    const auto accounts = session.host.accounts();
    in_place(drawing, {}, {40, 40, 40});
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(read_image(pixels(drawing)).colors, before.colors);
    EXPECT_EQ(session.host.accounts(), accounts);
}

// --- the matrix ------------------------------------------------------------------------------------------------------

struct Matrix {
    double m[3][3];
};

constexpr double kThird = 1.0 / 3.0;
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The identity, a swap, grey, sepia, negative elements, elements on both sides of what fits in 1024ths of 16 bits, sums
// that wrap, elements that do not fit in 1024ths of 32 bits.
constexpr Matrix kMatrices[] = {
    {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {{{0, 0, 1}, {0, 1, 0}, {1, 0, 0}}},
    {{{kThird, kThird, kThird}, {kThird, kThird, kThird}, {kThird, kThird, kThird}}},
    {{{0.393, 0.349, 0.272}, {0.769, 0.686, 0.534}, {0.189, 0.168, 0.131}}},
    {{{1.7, -0.9, 0.4}, {-0.6, 2.1, -1.3}, {-0.01, -0.2, 1.9}}},
    {{{31.9999, -32, 31.9999}, {31.9999, -32, -32}, {31.9999, 1, 0}}},
    {{{32, 0, 0}, {0, 1, -32.001}, {0, 0, 1}}},
    {{{1, 0, 0}, {0, 32.5, 0}, {0, 0, 40}}},
    {{{9000, -9000, 4000}, {8224.5, 1, -8224.6}, {-70000, 3, 12345.678}}},
    {{{kNotANumber, 0, 0}, {0, kInfinity, -kInfinity}, {1e300, -1e300, kNotANumber}}},
};

std::int32_t plain_fixed(double element) {
    const double scaled = element * 1024.0;
    if (std::isnan(scaled) || scaled <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return scaled >= 2147483647.0 ? std::numeric_limits<std::int32_t>::max() : static_cast<std::int32_t>(scaled);
}

// Before clamping.
int plain_sum(std::uint32_t color, const Matrix& matrix, int shift) {
    const int j = (16 - shift) / 8;
    std::int64_t sum = 0;
    for (int i = 0; i < 3; ++i) sum += std::int64_t{channel(color, 16 - 8 * i)} * plain_fixed(matrix.m[i][j]);
    return static_cast<std::int32_t>(static_cast<std::uint64_t>(sum)) / 1024;
}

std::uint32_t plain_matrix(std::uint32_t color, const Matrix& matrix) {
    return each_channel([&](int shift) { return clamped(plain_sum(color, matrix, shift)); });
}

std::uint32_t plain_matrix_masked(std::uint32_t color, std::uint32_t mask, const Matrix& matrix) {
    const int level = channel(mask, 0);
    return each_channel([&](int shift) {
        return clamped((channel(color, shift) * (255 - level) + std::int64_t{plain_sum(color, matrix, shift)} * level) /
                       255);
    });
}

class MatrixTransform : public AdjustRgb {
protected:
    ObjectRef matrix(const Matrix& elements) {
        const ObjectRef made = session.host.new_instance("TRV_ColorMatrix");
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                std::array<Value, 2> indices = {i, j};
                session.caller.assign(made, "Value", indices, elements.m[i][j]);
            }
        }
        return made;
    }
    Value region_form(const ObjectRef& p, const ObjectRef& rectangle, const ObjectRef& cm) {
        return call(kMatrix.name, Of::region, p, rectangle, {value(cm)});
    }
    Value mask_form(const ObjectRef& p, const ObjectRef& mask, const ObjectRef& cm) {
        return call(kMatrix.name, Of::mask, p, mask, {value(cm)});
    }
    std::uint32_t transformed(std::uint32_t color, const Matrix& elements) {
        const Value result = region_form(plain_picture(session, color), {}, matrix(elements));
        return read_pixel(*picture_in(result), 1, 1);
    }
};

TEST_F(MatrixTransform, AgreesWithTheJudge) {
    for (const Matrix& elements : kMatrices) {
        SCOPED_TRACE(elements.m[0][0]);
        const Numbers cm = {matrix(elements)};
        expect_region_agreement(session, random, kMatrix, cm,
                                [&](std::uint32_t color) { return plain_matrix(color, elements); });
        expect_mask_agreement(session, random, kMatrix, cm, [&](std::uint32_t color, std::uint32_t mask) {
            return plain_matrix_masked(color, mask, elements);
        });
    }
}

TEST_F(MatrixTransform, KnownValues) {
    EXPECT_EQ(transformed(0x123456, kMatrices[0]), 0x123456u);
    EXPECT_EQ(transformed(0x123456, kMatrices[1]), 0x563412u);
    EXPECT_EQ(transformed(0x306090, kMatrices[2]), 0x5F5F5Fu);  // 341 of 1024 for each third
    EXPECT_EQ(transformed(0xFFFFFF, {{{0.9999, 0, 0}, {0, 0.9999, 0}, {0, 0, 0.9999}}}), 0xFEFEFEu);
}

TEST_F(MatrixTransform, TheMixIsClampedAfterTheMask) {
    const ObjectRef source = plain_picture(session, 0xFA0000), mask = plain_picture(session, 128);
    const Value result = mask_form(source, mask, matrix({{{1.4, -1, 0}, {0, 0, 0}, {0, 0, 0}}}));
    const int red = (250 * 127 + 250 * 1433 / 1024 * 128) / 255;
    EXPECT_GT(red, 255);
    EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), 0xFF0000u);
}

TEST_F(MatrixTransform, ChecksComeInOrder) { expect_checks(session, kMatrix.name, {matrix(kMatrices[0])}); }

TEST_F(MatrixTransform, OfMissingObjectsTheLastOneIsReported) {
    const ObjectRef cm = matrix(kMatrices[0]), picture = session.picture(3, 2), missing;
    const auto code = [&](Of of, const ObjectRef& p, const ObjectRef& second, const ObjectRef& third) {
        EXPECT_FALSE(object_in(call(kMatrix.name, of, p, second, {value(third)})));
        return session.last_error();
    };
    EXPECT_EQ(code(Of::region, missing, missing, missing), 24);
    EXPECT_EQ(code(Of::region, picture, missing, missing), 24);
    EXPECT_EQ(code(Of::region, missing, missing, cm), 2);
    EXPECT_EQ(code(Of::mask, missing, missing, missing), 24);
    EXPECT_EQ(code(Of::mask, picture, missing, missing), 24);
    EXPECT_EQ(code(Of::mask, picture, picture, missing), 24);
    EXPECT_EQ(code(Of::mask, missing, picture, cm), 2);
    EXPECT_EQ(code(Of::mask, picture, missing, cm), 8);
    EXPECT_EQ(code(Of::mask, missing, missing, cm), 8);
}

TEST_F(MatrixTransform, OverloadsAreChosenByTheirArguments) {
    const ObjectRef source = plain_picture(session, 0x123456), mask = plain_picture(session, 0xFF);
    const ObjectRef swap = matrix(kMatrices[1]);
    const auto first = [](const Value& result) { return read_pixel(*picture_in(result), 0, 0); };
    EXPECT_EQ(first(session.call(source, "TRV_AdjustRGB", nullptr, swap)), 0x563412u);
    EXPECT_EQ(first(session.call(source, "TRV_AdjustRGB", nullptr, 1, 2, 3)), 0x133659u);
    EXPECT_EQ(first(session.call(source, "TRV_AdjustRGBWithMask", mask, swap)), 0x563412u);
    EXPECT_EQ(first(session.call(source, "TRV_AdjustRGBWithMask", mask, 1, 2, 3)), 0x133659u);
}

// --- the mean colour -------------------------------------------------------------------------------------------------

using AverageRgb = AdjustRgb;

Numbers plain_average(const PlainImage& image, const Area& area) {
    std::int64_t sums[3] = {}, count = 0;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (!area.has(x, y)) continue;
            ++count;
            for (int i = 0; i < 3; ++i) sums[i] += channel(image.at(x, y), 16 - 8 * i);
        }
    }
    const auto mean = [&](int i) { return static_cast<int>(sums[i] / count); };
    return {mean(0), mean(1), mean(2)};
}

TEST_F(AverageRgb, AgreesWithTheJudge) {
    expect_average_agreement(session, random, kAverage, {-7, -7, -7}, plain_average);
}

TEST_F(AverageRgb, SumsOfLargePicturesDoNotWrap) {
    const ObjectRef white = session.host.new_picture({.width = 5000, .height = 4000, .depth = 8});
    Numbers numbers = {-7, -7, -7};
    picture_form(session, kAverage).call_by_ref(session, white, {}, numbers);
    EXPECT_EQ(numbers, (Numbers{255, 255, 255}));
}

TEST_F(AverageRgb, ChecksComeInOrderAndFailuresLeaveTheOutputs) { expect_checks(session, kAverage, {-7, -7, -7}); }

// --- called as plain functions ---------------------------------------------------------------------------------------

// Without `extends` each argument arrives one place too early: a rectangle or a mask where the picture should be, a
// number where an object should be. All of it ends in a code.
TEST_F(AdjustRgb, PlainFunctionsFailWithACode) {
    const ObjectRef rectangle = session.rectangle(0, 0, 2, 2), mask = session.picture(3, 2);
    const ObjectRef cm = session.host.new_instance("TRV_ColorMatrix");
    const auto code = [&](std::string_view name, auto&&... arguments) {
        std::array<Value, sizeof...(arguments)> values = {value(arguments)...};
        EXPECT_FALSE(object_in(session.caller.call(name, values)));
        return session.last_error();
    };
    EXPECT_EQ(code("TRV_AdjustRGB", rectangle, 1, 2, 3), 4);
    EXPECT_EQ(code("TRV_AdjustRGB", nullptr, 1, 2, 3), 2);
    EXPECT_EQ(code("TRV_AdjustRGB", rectangle, 1, 999, 3), 40);
    EXPECT_EQ(code("TRV_AdjustRGB", rectangle, cm), 24);
    EXPECT_EQ(code("TRV_AdjustRGB_InPlace", rectangle, 1, 2, 3), 4);
    EXPECT_EQ(code("TRV_AdjustRGBWithMask", mask, 77, 2, 3), 9);
    EXPECT_EQ(code("TRV_AdjustRGBWithMask", mask, 0, 2, 3), 8);
    EXPECT_EQ(code("TRV_AdjustRGBWithMask", mask, cm), 24);
    EXPECT_EQ(code("TRV_GetAverageRGB", rectangle, 5, 6, 7), 4);
    EXPECT_EQ(code("TRV_GetAverageRGB", nullptr, 5, 6, 7), 2);
}

}  // namespace
}  // namespace tarvo::test
