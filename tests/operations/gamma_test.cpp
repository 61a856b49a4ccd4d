// TRV_AdjustGamma and TRV_AdjustGammaWithMask in all their forms, through the built library.

#include <cmath>

#include "centered_operation.h"

namespace tarvo::test {
namespace {

// What is left of a number in 32 bits.
std::int64_t wrapped(std::int64_t number) { return static_cast<std::int32_t>(static_cast<std::uint64_t>(number)); }

int plain_gamma(int x, int c, double factor) {
    const std::int64_t fixed = std::isnan(factor) ? INT32_MIN : static_cast<std::int64_t>(factor * 256.0);
    if (fixed == 256) return x;
    std::int64_t y = 0;
    if (x <= c) {
        y = wrapped(fixed * x) / 256;
    } else {
        const std::int64_t d = 65280 - 256 * c;
        const std::int64_t a = wrapped(65280 * c * wrapped(fixed - 256)) / d;
        const std::int64_t b = wrapped(wrapped(65280 - wrapped(c * fixed)) * 256) / d;
        y = wrapped(a + wrapped(b * x)) / 256;
    }
    return static_cast<int>(y < 0 ? 0 : y > 255 ? 255 : y);
}

constexpr CenteredOperation kGamma = {"TRV_AdjustGamma", false, plain_gamma};

class Gamma : public ::testing::Test {
protected:
    int bent(int x, int center, double factor) {
        const auto grey = [](int level) { return static_cast<std::uint32_t>(level) * 0x010101; };
        const Value result =
            kGamma.region_form(session, plain_picture(session, grey(x)), {}, grey(center), {factor, factor, factor});
        return channel(read_pixel(*picture_in(result), 1, 1), 8);
    }

    Session session;
    Random random{5101};
};

INSTANTIATE_TEST_SUITE_P(Gamma, CenteredAdjustment, ::testing::Values(kGamma));

TEST_F(Gamma, KnownValues) {
    EXPECT_EQ(bent(64, 128, 2.0), 128);
    EXPECT_EQ(bent(128, 128, 2.0), 255);
    EXPECT_EQ(bent(192, 128, 2.0), 255);
    EXPECT_EQ(bent(128, 128, 0.5), 64);
    EXPECT_EQ(bent(0, 128, 0.5), 0);
    EXPECT_EQ(bent(200, 128, 0.5), 172);
}

TEST_F(Gamma, TruncationCanCostWhiteAStep) { EXPECT_EQ(bent(255, 128, 0.5), 254); }

TEST_F(Gamma, AFactorOfZeroTakesAllUpToTheCentreToBlack) {
    EXPECT_EQ(bent(128, 128, 0.0), 0);
    EXPECT_GT(bent(140, 128, 0.0), 0);
}

TEST_F(Gamma, ACentreAtWhiteHasNoUpperSegment) {
    EXPECT_EQ(bent(255, 255, 0.5), 127);
    EXPECT_EQ(bent(255, 255, 255.0), 255);
}

// 65280 * 128 * 256 still fits in 32 bits, three halves of it do not: the upper segment falls from white to black.
TEST_F(Gamma, LargeFactorsWrap) {
    EXPECT_EQ(bent(192, 128, 2.0), 255);
    EXPECT_EQ(bent(192, 128, 2.5), 0);
    EXPECT_EQ(bent(192, 128, 3.0), 0);
    EXPECT_EQ(bent(128, 128, 3.0), 255);
}

TEST_F(Gamma, AMaskStaysBehind) {
    const ObjectRef source = plain_picture(session, 0x808080);
    pixels(source).set_mask(session.picture(3, 2, 8));
    const Value result = kGamma.region_form(session, source, {}, 0x808080, {2.0, 2.0, 2.0});
    EXPECT_FALSE(picture_in(result)->mask());
}

TEST_F(Gamma, MaskLevelsMixInTwoHundredAndFiftyFifths) {
    const ObjectRef source = plain_picture(session, 0x64, 4, 1), mask = session.picture(4, 1);
    const std::uint32_t levels[] = {0, 127, 128, 255};
    for (int x = 0; x < 4; ++x) write_pixel(pixels(mask), x, 0, levels[x]);
    const Value result = kGamma.mask_form(session, source, mask, 0xFFFFFF, {0.0, 0.0, 0.0});
    const int expected[] = {100, 100 * 128 / 255, 100 * 127 / 255, 0};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(channel(read_pixel(*picture_in(result), x, 0), 0), expected[x]);
}

}  // namespace
}  // namespace tarvo::test
