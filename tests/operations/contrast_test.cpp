// Contrast in all its forms, through the built library.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "judge.h"
#include "session.h"

namespace tarvo::test {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

struct Factors {
    double red, green, blue;
    double of(int shift) const { return shift == 16 ? red : shift == 8 ? green : blue; }
};

int plain_contrast(int x, int center, double factor) {
    const std::int64_t fixed = std::isnan(factor) ? INT32_MIN : static_cast<std::int64_t>(factor * 256.0);
    const auto product = static_cast<std::int32_t>(static_cast<std::uint64_t>(fixed * (x - center)));
    const int moved = center + static_cast<int>(std::floor(product / 256.0));
    return moved < 0 ? 0 : moved > 255 ? 255 : moved;
}

std::uint32_t plain_contrast(std::uint32_t color, std::uint32_t center, const Factors& factors) {
    return each_channel(
        [&](int shift) { return plain_contrast(channel(color, shift), channel(center, shift), factors.of(shift)); });
}

std::uint32_t plain_masked(std::uint32_t color, std::uint32_t mask, std::uint32_t center, const Factors& factors) {
    const int level = channel(mask, 0);
    const int weight = level > 127 ? level + 1 : level;
    if (weight == 0) return color;
    const std::uint32_t adjusted = plain_contrast(color, center, factors);
    return each_channel([&](int shift) {
        return (channel(color, shift) * (256 - weight) + channel(adjusted, shift) * weight) / 256;
    });
}

// Below 64 and above, where the arithmetic differs; on the bounds; not a number.
const std::vector<Factors>& awkward_factors() {
    static const std::vector<Factors> all = {
        {1.0, 1.0, 1.0},     {0.0, 0.0, 0.0},       {1.6, 0.4, 2.999},   {63.99, 63.996, 0.003},
        {64.0, 1.0, 1.0},    {255.0, 200.5, 100.0}, {0.5, 255.0, 0.001}, {kNotANumber, 1.5, 1.5},
        {1.5, kNotANumber, kNotANumber},
    };
    return all;
}

class Contrast : public ::testing::Test {
protected:
    // A picture of one colour.
    ObjectRef plain(std::uint32_t color, int width = 3, int height = 2, int depth = 32) {
        const ObjectRef made = session.picture(width, height, depth);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) write_pixel(pixels(made), x, y, color);
        return made;
    }
    std::uint32_t adjusted(std::uint32_t color, std::uint32_t center, double factor) {
        const Value result =
            session.call(plain(color), "TRV_AdjustContrast", nullptr, Color{center}, factor, factor, factor, 0);
        return read_pixel(*picture_in(result), 1, 1);
    }
    Value adjust(const ObjectRef& source, const ObjectRef& rectangle, Factors factors, int yield = 0) {
        return session.call(source, "TRV_AdjustContrast", rectangle, Color{0x808080}, factors.red, factors.green,
                            factors.blue, yield);
    }

    Session session;
    Random random{5005};
};

TEST_F(Contrast, RegionFormAgreesWithTheJudge) {
    for (const Factors& factors : awkward_factors()) {
        const std::uint32_t center = any_color(random);
        SCOPED_TRACE(::testing::Message() << factors.red << " " << factors.green << " " << factors.blue);
        expect_agreement(session, random,
                         RegionOperation{[&](Session& s, const ObjectRef& source, const ObjectRef& rectangle) {
                                             return s.call(source, "TRV_AdjustContrast", rectangle, Color{center},
                                                           factors.red, factors.green, factors.blue, 0);
                                         },
                                         [&](std::uint32_t color) { return plain_contrast(color, center, factors); },
                                         true});
    }
}

TEST_F(Contrast, MaskFormAgreesWithTheJudge) {
    for (const Factors& factors : awkward_factors()) {
        const std::uint32_t center = any_color(random);
        expect_agreement(session, random,
                         MaskOperation{[&](Session& s, const ObjectRef& source, const ObjectRef& mask) {
                                           return s.call(source, "TRV_AdjustContrastWithMask", mask, Color{center},
                                                         factors.red, factors.green, factors.blue, 0);
                                       },
                                       [&](std::uint32_t color, std::uint32_t mask) {
                                           return plain_masked(color, mask, center, factors);
                                       }});
    }
}

// Every channel value, every centre, and factors over the whole range: the fast arithmetic against the plain one.
TEST_F(Contrast, EveryValueAndCentreIsExact) {
    const ObjectRef ramp = session.picture(256, 1);
    for (int x = 0; x < 256; ++x) write_pixel(pixels(ramp), x, 0, static_cast<std::uint32_t>(x) * 0x010101);
    for (const double factor : {0.0, 0.1, 0.5, 0.999, 1.0, 1.01, 2.0, 17.3, 63.998, 64.0, 129.7, 255.0}) {
        for (int center = 0; center < 256; ++center) {
            const Value result = session.call(ramp, "TRV_AdjustContrast", nullptr,
                                              Color{static_cast<std::uint32_t>(center) * 0x010101}, factor, factor,
                                              factor, 0);
            for (int x = 0; x < 256; ++x)
                ASSERT_EQ(channel(read_pixel(*picture_in(result), x, 0), 8), plain_contrast(x, center, factor))
                    << x << " about " << center << " by " << factor;
        }
    }
}

TEST_F(Contrast, KnownValues) {
    EXPECT_EQ(adjusted(0x000000, 0x808080, 2.0), 0x000000u);
    EXPECT_EQ(adjusted(0xFFFFFF, 0x808080, 2.0), 0xFFFFFFu);
    EXPECT_EQ(adjusted(0x646464, 0x808080, 2.0), 0x484848u);  // 100 becomes 72
    EXPECT_EQ(adjusted(0x123456, 0x404040, 1.0), 0x123456u);
    EXPECT_EQ(adjusted(0x123456, 0xABCDEF, 0.0), 0xABCDEFu);
}

TEST_F(Contrast, DistancesRoundTowardMinusInfinity) { EXPECT_EQ(adjusted(0x636363, 0x646464, 0.5), 0x636363u); }

TEST_F(Contrast, TopByteStaysOutsideTheRegionOnly) {
    const ObjectRef source = plain(0xFF123456);
    const Value result = adjust(source, session.rectangle(0, 0, 1, 1), {1.0, 1.0, 1.0});
    EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), 0x00123456u);
    EXPECT_EQ(read_pixel(*picture_in(result), 1, 0), 0xFF123456u);
}

TEST_F(Contrast, FactorBoundsAreInclusiveAndCheckedInOrder) {
    const ObjectRef source = plain(0x808080);
    const auto code = [&](Factors factors) {
        const Value result = adjust(source, {}, factors);
        EXPECT_EQ(picture_in(result) == nullptr, session.last_error() != 0);
        return session.last_error();
    };
    EXPECT_EQ(code({0.0, 0.0, 0.0}), 0);
    EXPECT_EQ(code({255.0, 255.0, 255.0}), 0);
    EXPECT_EQ(code({kNotANumber, kNotANumber, kNotANumber}), 0);
    for (const double wrong : {-0.01, 255.01, -1e300, 1e300, std::nextafter(255.0, 256.0)}) {
        EXPECT_EQ(code({wrong, 1.0, 1.0}), 40);
        EXPECT_EQ(code({1.0, wrong, 1.0}), 41);
        EXPECT_EQ(code({1.0, 1.0, wrong}), 42);
        EXPECT_EQ(code({wrong, wrong, wrong}), 40);
        EXPECT_EQ(code({1.0, wrong, wrong}), 41);
    }
}

TEST_F(Contrast, ChecksOfTheRegionFormComeInOrder) {
    const ObjectRef source = plain(0x808080);
    const auto code = [&](const ObjectRef& p, const ObjectRef& rectangle, double factor) {
        const Value result = session.invoke("TRV_AdjustContrast(extends p", p, rectangle, Color{0}, factor, 1.0, 1.0, 0);
        EXPECT_FALSE(picture_in(result));
        return session.last_error();
    };
    const ObjectRef outside = session.rectangle(50, 50, 5, 5);
    const ObjectRef unlockable = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    EXPECT_EQ(code({}, outside, 999.0), 2);
    EXPECT_EQ(code(unlockable, outside, 999.0), 40);
    EXPECT_EQ(code(unlockable, outside, 1.0), 4);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code(source, outside, 1.0), 38);
    EXPECT_EQ(code(source, {}, 1.0), 6);
}

TEST_F(Contrast, ChecksOfTheMaskFormComeInOrder) {
    const ObjectRef source = plain(0x808080);
    const auto code = [&](const ObjectRef& p, const ObjectRef& mask, double factor = 1.0) {
        const Value result =
            session.invoke("TRV_AdjustContrastWithMask(extends p", p, mask, Color{0}, factor, 1.0, 1.0, 0);
        EXPECT_FALSE(picture_in(result));
        return session.last_error();
    };
    const ObjectRef mask = session.picture(3, 2), small = session.picture(2, 2);
    const ObjectRef unlockable = session.picture(3, 2), odd = session.picture(3, 2, 12);
    const ObjectRef small_and_odd = session.picture(2, 2, 12);
    pixels(unlockable).set_purged(true);
    EXPECT_EQ(code({}, {}, 999.0), 2);
    EXPECT_EQ(code(unlockable, {}, 999.0), 8);
    EXPECT_EQ(code(unlockable, unlockable, 999.0), 40);
    EXPECT_EQ(code(unlockable, unlockable), 4);
    EXPECT_EQ(code(source, unlockable), 9);
    EXPECT_EQ(code(source, small), 10);
    EXPECT_EQ(code(source, session.picture(3, 3)), 10);
    EXPECT_EQ(code(source, odd), 11);
    EXPECT_EQ(code(source, small_and_odd), 11);  // tested after the size, whose code it replaces
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code(source, mask), 6);
}

TEST_F(Contrast, EmptyRegions) {
    const ObjectRef source = plain(0x123456);
    for (const Area& area : {Area{0, 0, 0, 1}, Area{0, 0, 1, 0}, Area{0, 0, -1, -1}, Area{3, 0, 1, 1}, Area{0, 2, 1, 1},
                             Area{-5, 0, 5, 1}, Area{2147483647, 0, 2147483647, 1}}) {
        const Value result =
            adjust(source, session.rectangle(area.left, area.top, area.width, area.height), {2.0, 2.0, 2.0});
        EXPECT_FALSE(picture_in(result));
        EXPECT_EQ(session.last_error(), 38);
    }
}

TEST_F(Contrast, ARectangleThatReachesOutIsClipped) {
    const ObjectRef source = plain(0x646464, 100, 100);
    const Value result = adjust(source, session.rectangle(-5, -5, 10, 10), {2.0, 2.0, 2.0});
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            ASSERT_EQ(read_pixel(*picture_in(result), x, y), x < 5 && y < 5 ? 0x484848u : 0x646464u) << x << " " << y;
}

TEST_F(Contrast, MaskLevelsAbove127WeighOneMore) {
    const ObjectRef source = plain(0x000000, 4, 1), mask = session.picture(4, 1);
    const std::uint32_t levels[] = {0, 127, 128, 255};
    for (int x = 0; x < 4; ++x) write_pixel(pixels(mask), x, 0, levels[x]);
    const Value result = session.call(source, "TRV_AdjustContrastWithMask", mask, Color{0xFFFFFF}, 0.0, 0.0, 0.0, 0);
    const int expected[] = {0, 255 * 127 / 256, 255 * 129 / 256, 255};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(channel(read_pixel(*picture_in(result), x, 0), 16), expected[x]);
}

TEST_F(Contrast, AMaskThatCannotBeCopiedGivesCode9AndTheResult) {
    const ObjectRef source = plain(0x646464);
    pixels(source).set_mask(session.picture(3, 2));
    pixels(pixels(source).mask()).set_purged(true);
    const Value result = adjust(source, {}, {2.0, 2.0, 2.0});
    ASSERT_TRUE(picture_in(result));
    EXPECT_EQ(session.last_error(), 9);
    EXPECT_EQ(read_pixel(*picture_in(result), 2, 1), 0x484848u);
}

TEST_F(Contrast, MasksOfAnotherSizeAreCopiedWhereBothExist) {
    for (const auto& [width, height] : {std::pair{2, 1}, std::pair{9, 9}, std::pair{1, 9}, std::pair{9, 1}}) {
        const ObjectRef source = plain(0x646464, 4, 3);
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
    EXPECT_EQ(yields([&] {
                  session.call(source, "TRV_AdjustContrastWithMask", mask, Color{0}, 1.0, 1.0, 1.0, 100);
              }),
              3);
    // The average walks the region's rows alone, and counts whole rows.
    EXPECT_EQ(yields([&] {
                  session.call(source, "TRV_GetAverageContrast", session.rectangle(0, 2, 1, 9), Color{0}, 0, 0, 0, 60);
              }),
              4);
}

// --- the average -----------------------------------------------------------------------------------------------------

struct Average {
    int red = -1, green = -1, blue = -1;
    friend bool operator==(const Average&, const Average&) = default;
};

class AverageContrast : public Contrast {
protected:
    Average average(const ObjectRef& source, const ObjectRef& rectangle, std::uint32_t center) {
        std::vector<Value> arguments = {value(rectangle), Color{center}, -1, -1, -1, 0};
        session.caller.call_on(source, "TRV_GetAverageContrast", arguments);
        return {std::get<int>(arguments[2]), std::get<int>(arguments[3]), std::get<int>(arguments[4])};
    }
};

TEST_F(AverageContrast, AgreesWithTheJudge) {
    for (const Shape& shape : source_shapes()) {
        SCOPED_TRACE(shape.name());
        const int width = any_of(random, 1, 600), height = any_of(random, 1, 5);
        const ObjectRef source = random_picture(session, random, shape, width, height);
        const Area area = any_area(random, width, height);
        const std::uint32_t center = any_color(random);
        const PlainImage image = read_image(pixels(source));
        std::int64_t sums[3] = {}, count = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (!area.has(x, y)) continue;
                ++count;
                for (int i = 0; i < 3; ++i)
                    sums[i] += std::abs(channel(image.at(x, y), 16 - 8 * i) - channel(center, 16 - 8 * i));
            }
        }
        const Average expected = {static_cast<int>(sums[0] / count), static_cast<int>(sums[1] / count),
                                  static_cast<int>(sums[2] / count)};
        const ObjectRef rectangle = session.rectangle(area.left, area.top, area.width, area.height);
        EXPECT_EQ(average(source, rectangle, center), expected);
    }
}

TEST_F(AverageContrast, AUniformRegionAtTheCentreIsZero) {
    EXPECT_EQ(average(plain(0x123456), {}, 0x123456), (Average{0, 0, 0}));
}

TEST_F(AverageContrast, SumsOfLargePicturesDoNotWrap) {
    const ObjectRef source = session.host.new_picture({.width = 5000, .height = 4000, .depth = 8});  // white
    EXPECT_EQ(average(source, {}, 0x000000), (Average{255, 255, 255}));
}

TEST_F(AverageContrast, FailuresLeaveTheOutputs) {
    const Average untouched;
    const ObjectRef source = plain(0x123456);
    EXPECT_EQ(average(source, session.rectangle(9, 9, 1, 1), 0), untouched);
    EXPECT_EQ(session.last_error(), 38);
    pixels(source).set_purged(true);
    EXPECT_EQ(average(source, session.rectangle(9, 9, 1, 1), 0), untouched);
    EXPECT_EQ(session.last_error(), 4);
    session.invoke("TRV_GetAverageContrast(extends p", nullptr, nullptr, Color{0}, -1, -1, -1, 0);
    EXPECT_EQ(session.last_error(), 2);
}

// --- client pictures -------------------------------------------------------------------------------------------------

class ClientContrast : public Contrast, public ::testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(AsPicture, ClientContrast, ::testing::Bool());

TEST_P(ClientContrast, GivesWhatThePictureFormGives) {
    for (const Shape& shape : source_shapes()) {
        if (shape.backing == host::Backing::drawing_commands) continue;
        for (const int mask_depth : {0, 8, 32}) {
            Shape masked = shape;
            masked.mask_depth = mask_depth;
            SCOPED_TRACE(masked.name());
            const ObjectRef source = random_picture(session, random, masked, 21, 4);
            const ObjectRef mask = random_mask(session, random, 32, 21, 4);
            const ObjectRef client = session.client(source);
            const ObjectRef area = session.rectangle(3, 1, 30, 2);

            const Value plain_result = adjust(source, area, {1.6, 0.3, 90.0});
            const Value client_result = session.call(client, "TRV_AdjustContrast", area, Color{0x808080}, 1.6, 0.3,
                                                     90.0, 0, GetParam());
            const ObjectRef converted = session.picture_of(object_in(client_result));
            EXPECT_EQ(difference(pixels(converted), read_image(*picture_in(plain_result)), std::max(shape.depth, 16)),
                      "");
            EXPECT_EQ(static_cast<bool>(pixels(converted).mask()), mask_depth != 0);

            const Value masked_result = session.call(client, "TRV_AdjustContrastWithMask", mask, Color{0x808080}, 1.6,
                                                     0.3, 90.0, 0, GetParam());
            const Value plain_masked_result =
                session.call(source, "TRV_AdjustContrastWithMask", mask, Color{0x808080}, 1.6, 0.3, 90.0, 0);
            const ObjectRef converted_masked = session.picture_of(object_in(masked_result));
            EXPECT_EQ(difference(pixels(converted_masked), read_image(*picture_in(plain_masked_result)),
                                 std::max(shape.depth, 16)),
                      "");
            EXPECT_FALSE(pixels(converted_masked).mask());

            std::vector<Value> of_client = {value(area), Color{0x102030}, 0, 0, 0, 0}, of_picture = of_client;
            session.caller.call_on(client, "TRV_GetAverageContrast", of_client);
            session.caller.call_on(source, "TRV_GetAverageContrast", of_picture);
            EXPECT_EQ(of_client, of_picture);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_P(ClientContrast, AResultThatCannotBeLockedIsReturnedUnpainted) {
    const ObjectRef client = session.client(plain(0x808080));
    const Value nothing = session.call(client, "TRV_AdjustContrast", session.rectangle(7, 7, 1, 1), Color{0}, 1.0, 1.0,
                                       1.0, 0, GetParam());
    EXPECT_FALSE(object_in(nothing));
    EXPECT_EQ(session.last_error(), 38);
    if (!GetParam()) return;
    session.host.faults.fail_at("lockPictureDescription", 2);  // behind the source's
    const Value unpainted =
        session.call(client, "TRV_AdjustContrast", nullptr, Color{0}, 1.0, 1.0, 1.0, 0, GetParam());
    EXPECT_TRUE(object_in(unpainted));
    EXPECT_EQ(session.last_error(), 6);
}

}  // namespace
}  // namespace tarvo::test
