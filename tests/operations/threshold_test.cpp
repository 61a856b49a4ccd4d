// Threshold in its two forms, through the built library.

#include <gtest/gtest.h>

#include "adjustment_checks.h"

namespace tarvo::test {
namespace {

struct Rule {
    bool darker, all;
    std::uint32_t threshold, target;
};

bool plain_match(std::uint32_t color, const Rule& rule) {
    int passed = 0;
    for (const int shift : {16, 8, 0}) {
        const int x = channel(color, shift), t = channel(rule.threshold, shift);
        passed += rule.darker ? x <= t : x >= t;
    }
    return rule.all ? passed == 3 : passed > 0;
}

std::uint32_t plain_threshold(std::uint32_t color, const Rule& rule) {
    return plain_match(color, rule) ? rule.target : color;
}

std::uint32_t plain_masked(std::uint32_t color, std::uint32_t mask, const Rule& rule) {
    return plain_mix_in_255ths(color, plain_threshold(color, rule), channel(mask, 0));
}

constexpr Adjustment kThreshold = {.name = {"TRV_Threshold"}};

Numbers numbers_of(const Rule& rule) { return {rule.darker, rule.all, Color{rule.threshold}, Color{rule.target}}; }

class Threshold : public ::testing::Test {
protected:
    std::vector<Rule> rules() {
        std::vector<Rule> all;
        for (const bool darker : {false, true})
            for (const bool all_channels : {false, true})
                for (const std::uint32_t threshold : {any_color(random), 0x808080u, 0x7F7F7Fu, 0x000000u, 0xFFFFFFu})
                    all.push_back({darker, all_channels, threshold, any_color(random)});
        return all;
    }
    Value threshold(const ObjectRef& source, const ObjectRef& rectangle, const Rule& rule) {
        return picture_form(session, kThreshold.name).call(session, source, rectangle, numbers_of(rule));
    }
    Value threshold_with_mask(const ObjectRef& source, const ObjectRef& mask, const Rule& rule) {
        return picture_form(session, kThreshold.name, Of::mask).call(session, source, mask, numbers_of(rule));
    }
    std::uint32_t one(std::uint32_t color, const Rule& rule) {
        const ObjectRef source = session.picture(1, 1);
        write_pixel(pixels(source), 0, 0, color);
        return read_pixel(*picture_in(threshold(source, {}, rule)), 0, 0);
    }

    Session session;
    Random random{7201};
};

TEST_F(Threshold, AgreesWithTheJudge) {
    for (const Rule& rule : rules()) {
        expect_region_agreement(session, random, kThreshold, numbers_of(rule),
                                [&](std::uint32_t color) { return plain_threshold(color, rule); });
        expect_mask_agreement(session, random, kThreshold, numbers_of(rule),
                              [&](std::uint32_t color, std::uint32_t mask) { return plain_masked(color, mask, rule); });
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

// Every value of a channel against every threshold.
TEST_F(Threshold, EveryPairOfValuesCompares) {
    const ObjectRef ramp = session.picture(256, 1);
    for (int x = 0; x < 256; ++x) write_pixel(pixels(ramp), x, 0, static_cast<std::uint32_t>(x) * 0x010101);
    const PlainImage image = read_image(pixels(ramp));
    for (std::uint32_t t = 0; t < 256; ++t) {
        for (const bool darker : {false, true}) {
            for (const bool all : {false, true}) {
                const Rule rule = {darker, all, t * 0x010101, 0x123456};
                const Value result = threshold(ramp, {}, rule);
                for (int x = 0; x < 256; ++x)
                    ASSERT_EQ(read_pixel(*picture_in(result), x, 0), plain_threshold(image.at(x, 0), rule))
                        << x << " at " << t;
            }
        }
    }
}

TEST_F(Threshold, KnownValues) {
    EXPECT_EQ(one(0xFF00FF, {true, false, 0x808080, 0x123456}), 0x123456u);  // green passes
    EXPECT_EQ(one(0xFF00FF, {true, true, 0x808080, 0x123456}), 0xFF00FFu);
    for (const bool all : {false, true}) {
        for (const std::uint32_t color : {0x000000u, 0x010203u, 0xFFFFFFu})
            EXPECT_EQ(one(color, {false, all, 0x000000, 0x123456}), 0x123456u);
        for (const bool darker : {false, true})
            EXPECT_EQ(one(0x345678, {darker, all, 0x345678, 0x123456}), 0x123456u);  // equal always matches
    }
}

// At 32 bits only what is replaced loses the unused byte; with a mask every pixel does.
TEST_F(Threshold, KeptPixelsKeepTheTopByteWithoutAMask) {
    const ObjectRef source = session.picture(3, 1), mask = session.picture(3, 1);
    const std::uint32_t colors[] = {0xAB000000, 0xCDFFFFFF, 0xEFFFFFFF};
    for (int x = 0; x < 3; ++x) write_pixel(pixels(source), x, 0, colors[x]);
    const Rule rule = {false, true, 0x808080, 0x123456};
    const Value result = threshold(source, session.rectangle(0, 0, 2, 1), rule);
    const std::uint32_t expected[] = {0xAB000000, 0x00123456, 0xEFFFFFFF};
    for (int x = 0; x < 3; ++x) EXPECT_EQ(read_pixel(*picture_in(result), x, 0), expected[x]);
    const Value masked = threshold_with_mask(source, mask, rule);  // the mask is white
    const std::uint32_t expected_masked[] = {0x00000000, 0x00123456, 0x00123456};
    for (int x = 0; x < 3; ++x) EXPECT_EQ(read_pixel(*picture_in(masked), x, 0), expected_masked[x]);
}

TEST_F(Threshold, TargetsHaveNoTopByte) {
    const ObjectRef source = session.picture(2, 1);
    write_pixel(pixels(source), 0, 0, 0xCD000000);
    for (const bool all : {false, true}) {
        const Value result = threshold(source, session.rectangle(0, 0, 2, 1), {true, all, 0x808080, 0xAB123456});
        EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), 0x00123456u);
        EXPECT_EQ(read_pixel(*picture_in(result), 1, 0) & 0xFFFFFF, 0xFFFFFFu);
    }
}

TEST_F(Threshold, ABlackMaskChangesNothingAndAWhiteOneEverything) {
    const ObjectRef source = random_picture(session, random, {.depth = 24}, 50, 4);
    const Rule rule = {true, true, 0x808080, 0xFFD700};
    for (const std::uint32_t level : {0x000000u, 0xFFFFFFu}) {
        const ObjectRef mask = session.picture(50, 4, 24);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 50; ++x) write_pixel(pixels(mask), x, y, level);
        const PlainImage expected = read_image(level ? *picture_in(threshold(source, {}, rule)) : pixels(source));
        EXPECT_EQ(difference(*picture_in(threshold_with_mask(source, mask, rule)), expected, 24), "");
    }
}

TEST_F(Threshold, ChecksComeInOrder) {
    expect_checks(session, kThreshold.name, {true, true, Color{0x808080}, Color{0}});
}

TEST_F(Threshold, NothingIsLeftBehindAndTheHostGetsNoControl) {
    const ObjectRef source = session.picture(60, 40), mask = session.picture(60, 40);
    const auto before = session.host.accounts();
    ASSERT_TRUE(picture_in(threshold(source, {}, {})));
    ASSERT_TRUE(picture_in(threshold_with_mask(source, mask, {})));
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_EQ(session.host.yields(), 0);
}

}  // namespace
}  // namespace tarvo::test
