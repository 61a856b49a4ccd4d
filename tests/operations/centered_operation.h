#pragma once

// Calls of the operations that have a centre colour and, for each channel, a factor from 0 to 255; and the tests that
// are the same for each of them.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "adjustment_checks.h"

namespace tarvo::test {

inline constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

struct Factors {
    double red, green, blue;
    double of(int shift) const { return shift == 16 ? red : shift == 8 ? green : blue; }
};

// Of one channel.
using PlainCurve = int (*)(int x, int center, double factor);
// A colour that has changed as far as the mask's level, 0 to 255, says.
using PlainMix = std::uint32_t (*)(std::uint32_t color, std::uint32_t changed, int level);

inline std::uint32_t plain_mix_in_255ths(std::uint32_t color, std::uint32_t changed, int level) {
    return each_channel(
        [&](int shift) { return (channel(color, shift) * (255 - level) + channel(changed, shift) * level) / 255; });
}

struct CenteredOperation {
    const char* name;
    bool copies_mask;
    PlainCurve curve;
    PlainMix mix = plain_mix_in_255ths;
    bool yields = false;  // gives the host control, which all calls here ask for after each row

    Value region_form(Session& session, const ObjectRef& p, const ObjectRef& rectangle, std::uint32_t center,
                      const Factors& factors) const {
        return session.invoke(std::string(name) + "(extends p ", p, rectangle, Color{center}, factors.red,
                              factors.green, factors.blue, 1);
    }
    Value mask_form(Session& session, const ObjectRef& p, const ObjectRef& mask, std::uint32_t center,
                    const Factors& factors) const {
        return session.invoke(std::string(name) + "WithMask(extends p ", p, mask, Color{center}, factors.red,
                              factors.green, factors.blue, 1);
    }
    // `suffix`: "" or "WithMask".
    Value client_form(Session& session, const char* suffix, const ObjectRef& cp, const ObjectRef& second,
                      std::uint32_t center, const Factors& factors, bool as_picture) const {
        return session.invoke(std::string(name) + suffix + "(extends cp ", cp, second, Color{center}, factors.red,
                              factors.green, factors.blue, 1, as_picture);
    }

    std::uint32_t plain(std::uint32_t color, std::uint32_t center, const Factors& factors) const {
        return each_channel(
            [&](int shift) { return curve(channel(color, shift), channel(center, shift), factors.of(shift)); });
    }
    std::uint32_t plain_masked(std::uint32_t color, std::uint32_t mask, std::uint32_t center,
                               const Factors& factors) const {
        return mix(color, plain(color, center, factors), channel(mask, 0));
    }
};

// No effect, all of it, small steps, near 64, where contrast's arithmetic changes, on the bounds, not a number.
inline const std::vector<Factors>& awkward_factors() {
    static const std::vector<Factors> all = {
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
    return all;
}

inline void expect_yields_as_declared(Session& session, const CenteredOperation& operation) {
    EXPECT_EQ(session.host.yields() > 0, operation.yields);
}

inline void expect_centered_agreement(Session& session, Random& random, const CenteredOperation& operation) {
    for (const Factors& factors : awkward_factors()) {
        const std::uint32_t center = any_color(random);
        SCOPED_TRACE(::testing::Message()
                     << factors.red << " " << factors.green << " " << factors.blue << " about " << std::hex << center);
        expect_agreement(session, random,
                         RegionOperation{[&](Session& s, const ObjectRef& source, const ObjectRef& rectangle) {
                                             return operation.region_form(s, source, rectangle, center, factors);
                                         },
                                         [&](std::uint32_t color) { return operation.plain(color, center, factors); },
                                         operation.copies_mask});
        expect_agreement(session, random,
                         MaskOperation{[&](Session& s, const ObjectRef& source, const ObjectRef& mask) {
                                           return operation.mask_form(s, source, mask, center, factors);
                                       },
                                       [&](std::uint32_t color, std::uint32_t mask) {
                                           return operation.plain_masked(color, mask, center, factors);
                                       }});
    }
    expect_yields_as_declared(session, operation);
}

// Every channel value about every centre.
inline void expect_every_value_exact(Session& session, const CenteredOperation& operation) {
    const ObjectRef ramp = grey_ramp(session);
    for (const double factor :
         {0.0, 0.003, 0.1, 0.5, 0.999, 1.0, 1.004, 2.0, 17.3, 63.998, 64.0, 129.7, 254.999, 255.0, kNotANumber}) {
        for (int center = 0; center < 256; ++center) {
            const Value result = operation.region_form(session, ramp, {}, static_cast<std::uint32_t>(center) * 0x010101,
                                                       {factor, factor, factor});
            ASSERT_TRUE(picture_in(result));
            for (int x = 0; x < 256; ++x) {
                const std::uint32_t y = read_pixel(*picture_in(result), x, 0);
                ASSERT_EQ(y, static_cast<std::uint32_t>(operation.curve(x, center, factor)) * 0x010101)
                    << x << " about " << center << " by " << factor;
            }
        }
    }
}

inline void expect_factor_bounds(Session& session, const CenteredOperation& operation) {
    const ObjectRef source = plain_picture(session, 0x808080), mask = session.picture(3, 2);
    const auto code = [&](Factors factors) {
        const Value of_region = operation.region_form(session, source, {}, 0x808080, factors);
        const int region_code = session.last_error();
        EXPECT_EQ(object_in(of_region) ? 0 : region_code, region_code);
        const Value of_mask = operation.mask_form(session, source, mask, 0x808080, factors);
        EXPECT_EQ(session.last_error(), region_code);
        EXPECT_EQ(static_cast<bool>(object_in(of_mask)), region_code == 0);
        return region_code;
    };
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

inline void expect_centered_checks(Session& session, const CenteredOperation& operation) {
    const auto factors = [](bool in_range) { return in_range ? Factors{1.0, 1.0, 1.0} : Factors{999.0, 1.0, 1.0}; };
    const auto region = [&](Session& s, const ObjectRef& p, const ObjectRef& rectangle, bool in_range) {
        return operation.region_form(s, p, rectangle, 0, factors(in_range));
    };
    const auto mask = [&](Session& s, const ObjectRef& p, const ObjectRef& second, bool in_range) {
        return operation.mask_form(s, p, second, 0, factors(in_range));
    };
    expect_region_checks(session, {region, 40});
    expect_mask_checks(session, {mask, 40});
    for (const bool as_picture : {false, true}) {
        const auto client = [&, as_picture](const char* suffix) {
            return [&, as_picture, suffix](Session& s, const ObjectRef& cp, const ObjectRef& second, bool in_range) {
                return operation.client_form(s, suffix, cp, second, 0, factors(in_range), as_picture);
            };
        };
        expect_region_checks(session, {client(""), 40, true});
        expect_mask_checks(session, {client("WithMask"), 40, true});
    }
}

inline void expect_same_centered_forms(Session& session, Random& random, const CenteredOperation& operation) {
    const std::uint32_t center = 0x5A80C3;
    const Factors factors = {1.6, 0.3, 90.0};
    expect_same_region_forms(session, random,
                             {[&](Session& s, const ObjectRef& p, const ObjectRef& rectangle) {
                                  return operation.region_form(s, p, rectangle, center, factors);
                              },
                              [&](Session& s, const ObjectRef& cp, const ObjectRef& rectangle, bool as_picture) {
                                  return operation.client_form(s, "", cp, rectangle, center, factors, as_picture);
                              },
                              operation.copies_mask});
    expect_same_mask_forms(session, random,
                           {[&](Session& s, const ObjectRef& p, const ObjectRef& mask) {
                                return operation.mask_form(s, p, mask, center, factors);
                            },
                            [&](Session& s, const ObjectRef& cp, const ObjectRef& mask, bool as_picture) {
                                return operation.client_form(s, "WithMask", cp, mask, center, factors, as_picture);
                            },
                            false});
    expect_yields_as_declared(session, operation);
}

}  // namespace tarvo::test
