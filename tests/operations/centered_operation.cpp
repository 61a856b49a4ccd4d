#include "centered_operation.h"

#include <cmath>

namespace tarvo::test {
namespace {

Numbers numbers_of(std::uint32_t center, const Factors& factors) {
    return {Color{center}, factors.red, factors.green, factors.blue};
}

Adjustment adjustment_of(const CenteredOperation& operation) {
    return {.name = {operation.name}, .copies_mask = operation.copies_mask};
}

// No effect, all of it, small steps, near 64, where contrast's arithmetic changes, on the bounds, not a number.
constexpr Factors kAwkwardFactors[] = {
    {1.0, 1.0, 1.0},
    {0.0, 0.0, 0.0},
    {1.6, 0.4, 2.999},
    {1.0, 0.5, 1.0},
    {255.0, 200.5, 100.0},
    {0.5, 255.0, 0.001},
    {1.004, 0.997, 64.01},
    {63.99, 63.996, 0.003},
    {64.0, 1.0, 1.0},
    {kNotANumber, 1.5, 1.5},
    {1.5, kNotANumber, kNotANumber},
};

}  // namespace

Value CenteredOperation::region_form(Session& session, const ObjectRef& p, const ObjectRef& rectangle,
                                     std::uint32_t center, const Factors& factors) const {
    return picture_form(session, {name}).call(session, p, rectangle, numbers_of(center, factors));
}

Value CenteredOperation::mask_form(Session& session, const ObjectRef& p, const ObjectRef& mask, std::uint32_t center,
                                   const Factors& factors) const {
    return picture_form(session, {name}, Of::mask).call(session, p, mask, numbers_of(center, factors));
}

std::uint32_t CenteredOperation::plain(std::uint32_t color, std::uint32_t center, const Factors& factors) const {
    return each_channel(
        [&](int shift) { return curve(channel(color, shift), channel(center, shift), factors.of(shift)); });
}

std::uint32_t CenteredOperation::plain_masked(std::uint32_t color, std::uint32_t mask, std::uint32_t center,
                                              const Factors& factors) const {
    return mix(color, plain(color, center, factors), channel(mask, 0));
}

void PrintTo(const CenteredOperation& operation, std::ostream* out) { *out << operation.name; }

int CenteredAdjustment::code(const Factors& factors) {
    const ObjectRef source = plain_picture(session, 0x808080), mask = session.picture(3, 2);
    const Value of_region = GetParam().region_form(session, source, {}, 0x808080, factors);
    const int region_code = session.last_error();
    EXPECT_EQ(static_cast<bool>(object_in(of_region)), region_code == 0);
    const Value of_mask = GetParam().mask_form(session, source, mask, 0x808080, factors);
    EXPECT_EQ(session.last_error(), region_code);
    EXPECT_EQ(static_cast<bool>(object_in(of_mask)), region_code == 0);
    return region_code;
}

TEST_P(CenteredAdjustment, AgreesWithTheJudge) {
    const Adjustment adjustment = adjustment_of(GetParam());
    for (const Factors& factors : kAwkwardFactors) {
        const std::uint32_t center = any_color(random);
        SCOPED_TRACE(::testing::Message()
                     << factors.red << " " << factors.green << " " << factors.blue << " about " << std::hex << center);
        const Numbers numbers = numbers_of(center, factors);
        expect_region_agreement(session, random, adjustment, numbers,
                                [&](std::uint32_t color) { return GetParam().plain(color, center, factors); });
        expect_mask_agreement(session, random, adjustment, numbers, [&](std::uint32_t color, std::uint32_t mask) {
            return GetParam().plain_masked(color, mask, center, factors);
        });
    }
    expect_yields_as_declared();
}

TEST_P(CenteredAdjustment, EveryValueAndCentreIsExact) {
    const ObjectRef ramp = grey_ramp(session);
    for (const double factor :
         {0.0, 0.003, 0.1, 0.5, 0.999, 1.0, 1.004, 2.0, 17.3, 63.998, 64.0, 129.7, 254.999, 255.0, kNotANumber}) {
        for (int center = 0; center < 256; ++center) {
            const Value result = GetParam().region_form(
                session, ramp, {}, static_cast<std::uint32_t>(center) * 0x010101, {factor, factor, factor});
            ASSERT_TRUE(picture_in(result));
            for (int x = 0; x < 256; ++x) {
                const std::uint32_t y = read_pixel(*picture_in(result), x, 0);
                ASSERT_EQ(y, static_cast<std::uint32_t>(GetParam().curve(x, center, factor)) * 0x010101)
                    << x << " about " << center << " by " << factor;
            }
        }
    }
}

TEST_P(CenteredAdjustment, FactorBoundsAreInclusiveAndCheckedInOrder) {
    EXPECT_EQ(code({0.0, 0.0, 0.0}), 0);
    EXPECT_EQ(code({255.0, 255.0, 255.0}), 0);
    EXPECT_EQ(code({kNotANumber, kNotANumber, kNotANumber}), 0);
    for (const double wrong : {-0.01, 255.01, -1e300, 1e300, std::nextafter(255.0, 256.0), -5e-324}) {
        EXPECT_EQ(code({wrong, 1.0, 1.0}), 40);
        EXPECT_EQ(code({1.0, wrong, 1.0}), 41);
        EXPECT_EQ(code({1.0, 1.0, wrong}), 42);
        EXPECT_EQ(code({wrong, wrong, wrong}), 40);
        EXPECT_EQ(code({1.0, wrong, wrong}), 41);
        EXPECT_EQ(code({kNotANumber, wrong, 1.0}), 41);
    }
}

TEST_P(CenteredAdjustment, ChecksComeInOrder) {
    expect_checks(session, {GetParam().name}, numbers_of(0, {1.0, 1.0, 1.0}), {numbers_of(0, {999.0, 1.0, 1.0}), 40});
}

TEST_P(CenteredAdjustment, ClientFormsGiveWhatThePictureFormsGive) {
    expect_same_forms(session, random, adjustment_of(GetParam()), numbers_of(0x5A80C3, {1.6, 0.3, 90.0}));
    expect_yields_as_declared();
}

// What keeps no mask has none to fail at.
TEST_P(CenteredAdjustment, AMaskThatCannotBeCopiedGivesCode9AndTheResult) {
    const ObjectRef source = plain_picture(session, 0x646464);
    pixels(source).set_mask(session.picture(3, 2));
    pixels(pixels(source).mask()).set_purged(true);
    const Value result = GetParam().region_form(session, source, {}, 0, {2.0, 2.0, 2.0});
    ASSERT_TRUE(picture_in(result));
    EXPECT_EQ(session.last_error(), GetParam().copies_mask ? 9 : 0);
    EXPECT_EQ(read_pixel(*picture_in(result), 2, 1), GetParam().plain(0x646464, 0, {2.0, 2.0, 2.0}));
}

TEST_P(CenteredAdjustment, TopByteStaysOutsideTheRegionOnly) {
    const ObjectRef source = plain_picture(session, 0xFF123456);
    const Value result =
        GetParam().region_form(session, source, session.rectangle(0, 0, 1, 1), 0x808080, {1.0, 1.0, 1.0});
    EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), GetParam().plain(0x123456, 0x808080, {1.0, 1.0, 1.0}));
    EXPECT_EQ(read_pixel(*picture_in(result), 1, 0), 0xFF123456u);
}

}  // namespace tarvo::test
