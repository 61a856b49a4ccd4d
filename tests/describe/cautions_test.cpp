// Cautions hold just where the plugin does what may be taken for a bug.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "call_numbers.h"
#include "described_forms.h"
#include "pixels.h"

namespace tarvo::test {
namespace {

using Texts = std::vector<std::string>;

class Cautions : public testing::Test {
protected:
    // What a call with these values is told: "argument: text".
    Texts told(const host::Callable& of, const std::vector<Value>& values) const {
        Texts texts;
        for (const describe::Caution* each : reference::CallNumbers(of, values).cautions())
            texts.push_back(std::string(each->argument) + ": " + std::string(each->text));
        return texts;
    }

    // All greys, one beside the other.
    ObjectRef ramp() {
        const ObjectRef made = session.picture(256, 1);
        for (int x = 0; x < 256; ++x)
            host::store_pixel(pixels(made).row(0), x, 32, static_cast<std::uint32_t>(x) * 0x010101);
        return made;
    }

    Session session;
};

// The curve without the bounds of 32 bits.
std::int64_t curve(std::int64_t center, std::int64_t factor, std::int64_t value) {
    constexpr std::int64_t kWhite = 65280;
    if (factor == 256) return value;
    std::int64_t sum = factor * value;
    if (value > center) {
        const std::int64_t run = kWhite - 256 * center;
        sum = kWhite * center * (factor - 256) / run + (kWhite - center * factor) * 256 / run * value;
    }
    return std::clamp<std::int64_t>(sum >> 8, 0, 255);
}

TEST_F(Cautions, OfGammaHoldWhereProductsWrap) {
    const host::Callable& gamma = session.callable("TRV_AdjustGamma(extends p ");
    const ObjectRef greys = ramp();
    int wrapped = 0, whole = 0;
    for (const int center : {0, 1, 40, 128, 129, 200, 254, 255})
        for (const int factor :
             {0, 40, 91, 92, 128, 200, 256, 300, 384, 385, 420, 512, 513, 514, 600, 1079, 33152, 33153, 65280}) {
            SCOPED_TRACE(std::to_string(center) + ", " + std::to_string(factor) + " / 256");
            const Color about = host::color_of(static_cast<std::uint32_t>(center) * 0x010101);
            const double number = factor / 256.0;
            std::vector<Value> values = {greys, Nil{}, about, number, number, number, 0};
            const Texts texts = told(gamma, values);
            ASSERT_TRUE(texts.empty() || texts.size() == 3u);
            const Value made = session.caller.invoke(gamma, values);
            bool right = true;
            for (int x = 0; x < 256; ++x) {
                const auto grey = host::load_pixel(pixels(object_in(made)).row(0), x, 32) & 255;
                right = right && grey == static_cast<std::uint32_t>(curve(center, factor, x));
            }
            // What wraps may by chance end beyond white on the right side.
            EXPECT_TRUE(right || !texts.empty());
            const bool fits = std::abs(65280.0 * center * (factor - 256) + 0.5) < 2147483648.0;
            EXPECT_EQ(texts.empty(), fits || center == 255);
            (texts.empty() ? whole : wrapped) += 1;
        }
    EXPECT_GT(wrapped, 20);
    EXPECT_GT(whole, 20);
}

TEST_F(Cautions, NameTheChannelWhoseProductWraps) {
    const std::string text =
        "its product with the centre does not fit in 32 bits and wraps: values above the centre come out wrong";
    const host::Callable& gamma = session.callable("TRV_AdjustGammaWithMask(extends cp ");
    std::vector<Value> values = {Nil{}, Nil{}, Color{0x80FF28}, 3.0, 3.0, 3.0, 0, false};
    EXPECT_EQ(told(gamma, values), Texts{"red_factor: " + text});
    values[2] = 0x0000C0;  // as the language takes it
    EXPECT_EQ(told(gamma, values), Texts{"blue_factor: " + text});
    values[5] = 256.0;  // which is an error
    EXPECT_EQ(told(gamma, values), Texts());
    EXPECT_EQ(
        told(session.callable("TRV_AdjustContrast(extends p "), {Nil{}, Nil{}, Color{0x808080}, 9.0, 9.0, 9.0, 0}),
        Texts());
}

TEST_F(Cautions, OfCoefficientsHoldWhereTheyAreIgnoredOrWithoutEffect) {
    const host::Callable& set = *session.caller.named("SetCoefficients").at(0);
    Random random(1);
    const ObjectRef photo = random_picture(session, random, {}, 9, 8);
    for (int count = 0; count < 30; ++count)
        for (const int middle : {1, 1 - count}) {
            SCOPED_TRACE(std::to_string(count) + " coefficients, one of them " + std::to_string(middle));
            std::vector<std::int32_t> coefficients(static_cast<std::size_t>(count), 1);
            if (count > 0) coefficients[static_cast<std::size_t>(count) / 2] = middle;
            const ObjectRef kernel = session.host.new_instance("TRV_Convolution");
            std::vector<Value> values = {kernel, session.host.new_integer_array(coefficients)};
            session.caller.invoke(set, values);
            const auto width = std::get<std::int32_t>(session.caller.get(kernel, "width"));
            const Value made = session.invoke("TRV_Convolute(", photo, nullptr, kernel, nullptr);
            const bool changed = all_bytes(object_in(made)) != all_bytes(photo);
            const Texts texts = told(set, values);
            const bool is_identity = count == 1 && middle == 1;
            const bool ignored = width != count, no_effect = !changed && !is_identity;
            ASSERT_EQ(texts.size(), ignored || no_effect ? 1u : 0u);
            if (ignored) {
                EXPECT_NE(texts[0].find(" ignored: write an odd number of them, 1 to 21"), std::string::npos);
            }
            if (!ignored && no_effect) {
                EXPECT_EQ(texts, Texts{"coeffs: the coefficients add up to 0: such a kernel changes nothing"});
            }
        }
    // The sum wraps as the operation's does.
    const std::vector<std::int32_t> wrapping = {1 << 30, 1 << 30, 1 << 30, 1 << 30, 0};
    EXPECT_EQ(told(set, {Nil{}, session.host.new_integer_array(wrapping)}).size(), 1u);
    EXPECT_EQ(told(set, {Nil{}, Nil{}}), Texts());
}

}  // namespace
}  // namespace tarvo::test
