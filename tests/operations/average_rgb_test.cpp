// TRV_AverageRGB and TRV_AverageRGBWithMask in all their forms, through the built library.

#include <cmath>

#include "centered_operation.h"
#include "watched.h"

namespace tarvo::test {
namespace {

int plain_blend(int x, int c, double weight) {
    const std::int64_t fixed = std::isnan(weight) ? INT32_MIN : static_cast<std::int64_t>(weight * 256.0);
    const auto product = static_cast<std::int32_t>(static_cast<std::uint64_t>(fixed * c));
    const std::int64_t y = (std::int64_t{product} + 256 * x) / (fixed + 256);
    return static_cast<int>(y < 0 ? 0 : y > 255 ? 255 : y);
}

constexpr CenteredOperation kAverage = {"TRV_AverageRGB", true, plain_blend};

class AverageBlend : public ::testing::Test {
protected:
    int blended(int x, int center, double weight) {
        const auto grey = [](int level) { return static_cast<std::uint32_t>(level) * 0x010101; };
        const Value result =
            kAverage.region_form(session, plain_picture(session, grey(x)), {}, grey(center), {weight, weight, weight});
        return channel(read_pixel(*picture_in(result), 1, 1), 8);
    }

    Session session;
    Random random{5405};
};

INSTANTIATE_TEST_SUITE_P(AverageBlend, CenteredAdjustment, ::testing::Values(kAverage));

// Each weight in 256ths has a divisor of its own: all of them, about centres and values of their own.
TEST_F(AverageBlend, EveryWeightIsExact) {
    const ObjectRef ramp = grey_ramp(session);
    for (int fixed = 0; fixed <= 65280; fixed += kStride) {
        const double weight = fixed / 256.0;
        const std::uint32_t center = any_color(random);
        const Value result = kAverage.region_form(session, ramp, {}, center, {weight, weight, weight});
        ASSERT_TRUE(picture_in(result));
        for (int x = 0; x < 256; ++x)
            ASSERT_EQ(read_pixel(*picture_in(result), x, 0),
                      kAverage.plain(read_pixel(pixels(ramp), x, 0), center, {weight, weight, weight}))
                << x << " by " << weight;
    }
}

TEST_F(AverageBlend, KnownValues) {
    EXPECT_EQ(blended(255, 0, 1.0), 127);
    EXPECT_EQ(blended(0, 200, 255.0), 199);  // the centre is never quite reached from below
    EXPECT_EQ(blended(0, 255, 255.0), 254);
    for (const int x : {0, 1, 77, 254, 255}) {
        EXPECT_EQ(blended(x, 123, 0.0), x);
        EXPECT_EQ(blended(x, x, 9.3), x);
    }
}

TEST_F(AverageBlend, WhiteInTheMaskIsAllOfTheBlendAndBlackNone) {
    const ObjectRef source = plain_picture(session, 0xC80A64, 2, 1), mask = session.picture(2, 1);
    write_pixel(pixels(mask), 0, 0, 0xFFFF00);  // only the low byte weighs
    write_pixel(pixels(mask), 1, 0, 0x0000FF);
    const Value result = kAverage.mask_form(session, source, mask, 0x000000, {1.0, 1.0, 1.0});
    EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), 0xC80A64u);
    EXPECT_EQ(read_pixel(*picture_in(result), 1, 0), 0x640532u);
}

}  // namespace
}  // namespace tarvo::test
