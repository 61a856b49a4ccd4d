// Contrast in all its forms, through the built library.

#include <cmath>

#include "centered_operation.h"
#include "client_pictures.h"

namespace tarvo::test {
namespace {

int plain_contrast(int x, int center, double factor) {
    const std::int64_t fixed = std::isnan(factor) ? INT32_MIN : static_cast<std::int64_t>(factor * 256.0);
    const auto product = static_cast<std::int32_t>(static_cast<std::uint64_t>(fixed * (x - center)));
    const int moved = center + static_cast<int>(std::floor(product / 256.0));
    return moved < 0 ? 0 : moved > 255 ? 255 : moved;
}

std::uint32_t plain_mix_in_256ths(std::uint32_t color, std::uint32_t changed, int level) {
    const int weight = level > 127 ? level + 1 : level;
    if (weight == 0) return color;  // the top byte too
    return each_channel(
        [&](int shift) { return (channel(color, shift) * (256 - weight) + channel(changed, shift) * weight) / 256; });
}

constexpr CenteredOperation kContrast = {"TRV_AdjustContrast", true, plain_contrast, plain_mix_in_256ths, true};

class Contrast : public ::testing::Test {
protected:
    std::uint32_t adjusted(std::uint32_t color, std::uint32_t center, double factor) {
        const Value result =
            kContrast.region_form(session, plain_picture(session, color), {}, center, {factor, factor, factor});
        return read_pixel(*picture_in(result), 1, 1);
    }
    Value adjust(const ObjectRef& source, const ObjectRef& rectangle, Factors factors, int yield = 0) {
        return session.call(source, "TRV_AdjustContrast", rectangle, Color{0x808080}, factors.red, factors.green,
                            factors.blue, yield);
    }

    Session session;
    Random random{5005};
};

INSTANTIATE_TEST_SUITE_P(Contrast, CenteredAdjustment, ::testing::Values(kContrast));

TEST_F(Contrast, KnownValues) {
    EXPECT_EQ(adjusted(0x000000, 0x808080, 2.0), 0x000000u);
    EXPECT_EQ(adjusted(0xFFFFFF, 0x808080, 2.0), 0xFFFFFFu);
    EXPECT_EQ(adjusted(0x646464, 0x808080, 2.0), 0x484848u);  // 100 becomes 72
    EXPECT_EQ(adjusted(0x123456, 0x404040, 1.0), 0x123456u);
    EXPECT_EQ(adjusted(0x123456, 0xABCDEF, 0.0), 0xABCDEFu);
}

TEST_F(Contrast, DistancesRoundTowardMinusInfinity) { EXPECT_EQ(adjusted(0x636363, 0x646464, 0.5), 0x636363u); }

TEST_F(Contrast, ARectangleThatReachesOutIsClipped) {
    const ObjectRef source = plain_picture(session, 0x646464, 100, 100);
    const Value result = adjust(source, session.rectangle(-5, -5, 10, 10), {2.0, 2.0, 2.0});
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            ASSERT_EQ(read_pixel(*picture_in(result), x, y), x < 5 && y < 5 ? 0x484848u : 0x646464u) << x << " " << y;
}

TEST_F(Contrast, MaskLevelsAbove127WeighOneMore) {
    const ObjectRef source = plain_picture(session, 0x000000, 4, 1), mask = session.picture(4, 1);
    const std::uint32_t levels[] = {0, 127, 128, 255};
    for (int x = 0; x < 4; ++x) write_pixel(pixels(mask), x, 0, levels[x]);
    const Value result = session.call(source, "TRV_AdjustContrastWithMask", mask, Color{0xFFFFFF}, 0.0, 0.0, 0.0, 0);
    const int expected[] = {0, 255 * 127 / 256, 255 * 129 / 256, 255};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(channel(read_pixel(*picture_in(result), x, 0), 16), expected[x]);
}

TEST_F(Contrast, MasksOfAnotherSizeAreCopiedWhereBothExist) {
    for (const auto& [width, height] : {std::pair{2, 1}, std::pair{9, 9}, std::pair{1, 9}, std::pair{9, 1}}) {
        const ObjectRef source = plain_picture(session, 0x646464, 4, 3);
        pixels(source).set_mask(session.picture(width, height, 8));
        scribble(pixels(pixels(source).mask()), random);
        const Value result = adjust(source, {}, {2.0, 2.0, 2.0});
        ASSERT_TRUE(picture_in(result));
        const Picture& mask = pixels(picture_in(result)->mask());
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 4; ++x)
                EXPECT_EQ(read_pixel(mask, x, y),
                          x < width && y < height ? read_pixel(pixels(pixels(source).mask()), x, y, true) : 0u);
    }
}

TEST_F(Contrast, AClientResultThatCannotBeLockedIsReturnedUnpainted) {
    const ObjectRef client = session.client(plain_picture(session, 0x808080));
    session.host.faults.fail_at("lockPictureDescription", 2);  // behind the source's
    const Value unpainted = client_form(session, {"TRV_AdjustContrast"}, Of::region, true)
                                .call(session, client, {}, {Color{0}, 0.0, 0.0, 0.0});
    EXPECT_EQ(session.last_error(), 6);
    ASSERT_TRUE(is_client(unpainted));
    EXPECT_EQ(read_pixel(pixels(picture_behind(session, object_in(unpainted))), 1, 1) & 0xFFFFFF, 0xFFFFFFu);
}

// What counts is whether there is a mask once the pixels are done.
TEST_F(Contrast, AMaskGivenOrTakenWhileTheHostHasControl) {
    const ObjectRef source = random_picture(session, random, {}, 9, 4);
    const ObjectRef levels = random_mask(session, random, 32, 9, 4);
    const auto masked = [&](const Value& result) { return static_cast<bool>(picture_in(result)->mask()); };

    session.host.on_yield = [&] { pixels(source).set_mask(levels); };
    const Value given = adjust(source, {}, {2.0, 2.0, 2.0}, 1);
    ASSERT_TRUE(masked(given));
    EXPECT_EQ(all_bytes(picture_in(given)->mask()), all_bytes(levels));

    session.host.on_yield = [&] { pixels(source).set_mask({}); };
    EXPECT_FALSE(masked(adjust(source, {}, {2.0, 2.0, 2.0}, 1)));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_TRUE(session.host.complaints().empty());
}

// Own memory for a mask is there from the beginning or not at all; a host picture can still be given one.
TEST_F(Contrast, AMaskGivenToAClientPictureWhileTheHostHasControl) {
    for (const bool as_picture : {false, true}) {
        const ObjectRef source = random_picture(session, random, {}, 9, 4);
        const ObjectRef levels = random_mask(session, random, 32, 9, 4);
        const ObjectRef client = client_of_picture(session, source);
        session.host.on_yield = [&] { pixels(source).set_mask(levels); };
        const Value result = client_form(session, {"TRV_AdjustContrast"}, Of::region, as_picture)
                                 .call(session, client, {}, {Color{0}, 2.0, 2.0, 2.0});
        ASSERT_TRUE(is_client(result));
        EXPECT_EQ(session.last_error(), 0);
        const ObjectRef converted = session.picture_of(object_in(result));
        ASSERT_EQ(static_cast<bool>(pixels(converted).mask()), as_picture);
        if (!as_picture) continue;
        EXPECT_EQ(all_bytes(pixels(converted).mask()), all_bytes(levels));
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Contrast, YieldsBetweenRowsByTheBudget) {
    const ObjectRef source = session.picture(30, 13), mask = session.picture(30, 13);
    const auto yields = [&](auto call) {
        const int before = session.host.yields();
        call();
        return session.host.yields() - before;
    };
    // 0, 30, 60, 90, then 120 has reached 100: before rows 4, 8 and 12.
    EXPECT_EQ(yields([&] { adjust(source, {}, {2.0, 2.0, 2.0}, 100); }), 3);
    EXPECT_EQ(yields([&] { adjust(source, session.rectangle(0, 0, 2, 2), {2.0, 2.0, 2.0}, 100); }), 3);
    EXPECT_EQ(yields([&] { adjust(source, {}, {2.0, 2.0, 2.0}, 1); }), 12);
    EXPECT_EQ(yields([&] { adjust(source, {}, {2.0, 2.0, 2.0}, 0); }), 0);
    EXPECT_EQ(yields([&] { adjust(source, {}, {2.0, 2.0, 2.0}, -5); }), 0);
    EXPECT_EQ(yields([&] { session.call(source, "TRV_AdjustContrastWithMask", mask, Color{0}, 1.0, 1.0, 1.0, 100); }),
              3);
    // The average walks the region's rows alone, and counts whole rows.
    EXPECT_EQ(yields([&] {
                  session.call(source, "TRV_GetAverageContrast", session.rectangle(0, 2, 1, 9), Color{0}, 0, 0, 0, 60);
              }),
              4);
}

// --- the average -----------------------------------------------------------------------------------------------------

constexpr OperationName kAverage = {"TRV_GetAverageContrast"};

Numbers plain_average(const PlainImage& image, const Area& area, std::uint32_t center) {
    std::int64_t sums[3] = {}, count = 0;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (!area.has(x, y)) continue;
            ++count;
            for (int i = 0; i < 3; ++i)
                sums[i] += std::abs(channel(image.at(x, y), 16 - 8 * i) - channel(center, 16 - 8 * i));
        }
    }
    const auto mean = [&](int i) { return static_cast<int>(sums[i] / count); };
    return {Color{center}, mean(0), mean(1), mean(2)};
}

class AverageContrast : public Contrast {
protected:
    // Of all of the picture.
    Numbers average(const ObjectRef& p, std::uint32_t center) {
        Numbers numbers = {Color{center}, -1, -1, -1};
        picture_form(session, kAverage).call_by_ref(session, p, {}, numbers);
        return numbers;
    }
};

TEST_F(AverageContrast, AgreesWithTheJudge) {
    const std::uint32_t center = any_color(random);
    expect_average_agreement(
        session, random, kAverage, {Color{center}, -1, -1, -1},
        [&](const PlainImage& image, const Area& area) { return plain_average(image, area, center); });
}

TEST_F(AverageContrast, AUniformRegionAtTheCentreIsZero) {
    EXPECT_EQ(average(plain_picture(session, 0x123456), 0x123456), (Numbers{Color{0x123456}, 0, 0, 0}));
}

TEST_F(AverageContrast, SumsOfLargePicturesDoNotWrap) {
    const ObjectRef source = session.host.new_picture({.width = 5000, .height = 4000, .depth = 8});  // white
    EXPECT_EQ(average(source, 0x000000), (Numbers{Color{0}, 255, 255, 255}));
}

TEST_F(AverageContrast, ChecksComeInOrderAndFailuresLeaveTheOutputs) {
    expect_checks(session, kAverage, {Color{0}, -1, -1, -1});
}

}  // namespace
}  // namespace tarvo::test
