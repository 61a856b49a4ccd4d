#pragma once

// The operations that have a centre colour and, for each channel, a factor from 0 to 255; and the tests that are the
// same for each of them.

#include <gtest/gtest.h>

#include <limits>

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

struct CenteredOperation {
    const char* name;
    bool copies_mask;
    PlainCurve curve;
    PlainMix mix = plain_mix_in_255ths;
    bool yields = false;  // gives the host control, which all calls here ask for after each row

    // The forms on host pictures.
    Value region_form(Session& session, const ObjectRef& p, const ObjectRef& rectangle, std::uint32_t center,
                      const Factors& factors) const;
    Value mask_form(Session& session, const ObjectRef& p, const ObjectRef& mask, std::uint32_t center,
                    const Factors& factors) const;

    std::uint32_t plain(std::uint32_t color, std::uint32_t center, const Factors& factors) const;
    std::uint32_t plain_masked(std::uint32_t color, std::uint32_t mask, std::uint32_t center,
                               const Factors& factors) const;
};

void PrintTo(const CenteredOperation& operation, std::ostream* out);

// To be instantiated with the operation, in the file of its own tests.
class CenteredAdjustment : public ::testing::TestWithParam<CenteredOperation> {
protected:
    void expect_yields_as_declared() { EXPECT_EQ(session.host.yields() > 0, GetParam().yields); }
    // The code that both forms leave.
    int code(const Factors& factors);

    Session session;
    Random random{5005};
};

}  // namespace tarvo::test
