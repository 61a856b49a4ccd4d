// Convolution and its class, through the built library.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "judge.h"
#include "session.h"

namespace tarvo::test {
namespace {

constexpr int kMost = std::numeric_limits<std::int32_t>::max(), kLeast = std::numeric_limits<std::int32_t>::min();

using Kernel = std::vector<std::int32_t>;

// --- the judge -------------------------------------------------------------------------------------------------------

std::int32_t wrap(std::int64_t value) { return static_cast<std::int32_t>(static_cast<std::uint64_t>(value)); }

int plain_quotient(std::int32_t dividend, std::int32_t divisor) {
    if (divisor == -1 && dividend == kLeast) return 0;  // stays the most negative number
    return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{dividend} / divisor, 0, 255));
}

// One pass; `dx`, `dy` is the step from tap to tap.
PlainImage plain_pass(const PlainImage& source, const Kernel& kernel, const Area& area, int dx, int dy, int depth) {
    PlainImage result = source;
    const int half = static_cast<int>(kernel.size()) / 2;
    std::int32_t sum = 0;
    for (const std::int32_t c : kernel) sum = wrap(std::int64_t{sum} + c);
    for (int y = 0; y < source.height; ++y) {
        for (int x = 0; x < source.width; ++x) {
            if (area.has(x, y) && sum != 0)
                result.at(x, y) = each_channel([&](int shift) {
                    std::int32_t total = 0;
                    for (int k = 0; k < static_cast<int>(kernel.size()); ++k) {
                        const int column = std::clamp(x + (k - half) * dx, 0, source.width - 1);
                        const int row = std::clamp(y + (k - half) * dy, 0, source.height - 1);
                        total = wrap(total + std::int64_t{kernel[static_cast<std::size_t>(k)]} *
                                                 channel(source.at(column, row), shift));
                    }
                    return plain_quotient(total, sum);
                });
            result.at(x, y) = once_stored(result.at(x, y), depth);
        }
    }
    return result;
}

PlainImage plain_convolution(const PlainImage& source, const Kernel& across, const Kernel& down, const Area& area,
                             int depth) {
    return plain_pass(plain_pass(source, across, area, 1, 0, depth), down, area, 0, 1, depth);
}

// --- the class -------------------------------------------------------------------------------------------------------

class Convolution : public ::testing::Test {
protected:
    ObjectRef convolution(const Kernel& coefficients) {
        const ObjectRef made = session.host.new_instance("TRV_Convolution");
        set(made, coefficients);
        return made;
    }
    void set(const ObjectRef& object, const Kernel& coefficients) {
        session.call(object, "SetCoefficients", session.host.new_integer_array(coefficients));
    }
    int read(const ObjectRef& object, const char* property) {
        return std::get<std::int32_t>(session.caller.get(object, property));
    }
    std::string message_of(const ObjectRef& object) {
        session.host.clear_message_boxes();
        session.call(object, "MessageBox");
        EXPECT_EQ(session.host.message_boxes().size(), 1u);
        return session.host.message_boxes().empty() ? "" : session.host.message_boxes().front();
    }
    Value convolute(const ObjectRef& source, const ObjectRef& rectangle, const Kernel& across, const Kernel& down) {
        return session.call(source, "TRV_Convolute", rectangle, convolution(across), convolution(down));
    }
    Kernel any_kernel(int largest) {
        Kernel kernel(static_cast<std::size_t>(any_of(random, 0, 10) * 2 + 1));
        for (std::int32_t& c : kernel) c = any_of(random, -largest, largest);
        return kernel;
    }
    ObjectRef grey_row(const std::vector<std::uint32_t>& levels) {
        const ObjectRef made = session.picture(static_cast<int>(levels.size()), 1);
        for (std::size_t x = 0; x < levels.size(); ++x)
            write_pixel(pixels(made), static_cast<int>(x), 0, levels[x] * 0x010101);
        return made;
    }
    std::vector<std::uint32_t> levels_of(const Value& result) {
        std::vector<std::uint32_t> levels;
        const PlainImage image = read_image(*picture_in(result));
        for (const std::uint32_t color : image.colors) {
            EXPECT_EQ(color, (color & 255) * 0x010101);
            levels.push_back(color & 255);
        }
        return levels;
    }

    Session session;
    Random random{7101};
};

TEST_F(Convolution, ANewOneIsEmpty) {
    const ObjectRef made = session.host.new_instance("TRV_Convolution");
    EXPECT_EQ(read(made, "width"), 0);
    EXPECT_EQ(read(made, "sum"), 0);
    EXPECT_EQ(message_of(made), "width: 0; sum: 0\n");
}

TEST_F(Convolution, OddCountsUpTo21AreTaken) {
    const ObjectRef made = session.host.new_instance("TRV_Convolution");
    for (int count = 0; count <= 45; ++count) {
        const int before = read(made, "width");
        Kernel coefficients(static_cast<std::size_t>(count), count);
        set(made, coefficients);
        EXPECT_EQ(read(made, "width"), count % 2 == 1 && count <= 21 ? count : before) << count;
    }
    EXPECT_EQ(read(made, "width"), 21);
}

TEST_F(Convolution, ARefusedArrayLeavesTheKernelAndTheErrorCode) {
    const ObjectRef made = convolution({1, 2, 1});
    session.call(ObjectRef(session.picture(1, 1)), "TRV_Downsample", 0);
    ASSERT_EQ(session.last_error(), 48);
    for (const std::size_t count : {0u, 4u, 23u}) {
        set(made, Kernel(count, 7));
        EXPECT_EQ(message_of(made), "width: 3; sum: 0\n1,2,1") << count;
    }
    session.call(made, "SetCoefficients", nullptr);
    EXPECT_EQ(message_of(made), "width: 3; sum: 0\n1,2,1");
    EXPECT_EQ(session.last_error(), 48);
}

TEST_F(Convolution, AShorterKernelReplacesAllOfALongerOne) {
    const ObjectRef made = convolution(Kernel(21, 9));
    set(made, {5});
    EXPECT_EQ(message_of(made), "width: 1; sum: 0\n5");
    set(made, {1, 2, 3});
    EXPECT_EQ(message_of(made), "width: 3; sum: 0\n1,2,3");
}

TEST_F(Convolution, TheSumStaysZero) {
    for (const Kernel& kernel : {Kernel{1}, Kernel{1, 2, 1}, Kernel{-1, 3, -1}})
        EXPECT_EQ(read(convolution(kernel), "sum"), 0);
}

TEST_F(Convolution, TheLongestMessageFits) {
    std::string expected = "width: 21; sum: 0\n";
    for (int i = 0; i < 21; ++i) expected += i ? ",-2147483648" : "-2147483648";
    EXPECT_EQ(message_of(convolution(Kernel(21, kLeast))), expected);
}

// Each getter answers for its own number alone.
TEST_F(Convolution, GettersAnswerForTheirNumber) {
    const ObjectRef made = convolution({1, 2, 1});
    const host::RegisteredClass& cls = *session.host.registry().find_class("TRV_Convolution");
    ASSERT_EQ(cls.properties.size(), 2u);
    EXPECT_EQ(cls.data_size, 92u);
    for (const host::RegisteredProperty& property : cls.properties) {
        EXPECT_EQ(property.group, "Convolution");
        EXPECT_FALSE(property.setter);
        using Getter = int (*)(REALobjectStruct*, REALword);
        const auto getter = reinterpret_cast<Getter>(property.getter);
        const auto self = static_cast<REALobjectStruct*>(made.handle());
        const int own = property.name == "width" ? 3 : 2;
        EXPECT_EQ(property.parameter, own);
        for (int parameter = -1; parameter <= 5; ++parameter)
            EXPECT_EQ(getter(self, parameter), parameter == 3 && own == 3 ? 3 : 0) << property.name << " " << parameter;
        EXPECT_EQ(getter(nullptr, own), 0);
    }
}

// --- the operation ---------------------------------------------------------------------------------------------------

using Convolute = Convolution;

TEST_F(Convolute, EveryKindAndMaskAgreesWithTheJudge) {
    for (Shape shape : source_shapes()) {
        for (const int mask_depth : mask_depths()) {
            if (shape.backing == host::Backing::drawing_commands && mask_depth) continue;
            shape.mask_depth = mask_depth;
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 30);
            SCOPED_TRACE(shape.name() + ", " + std::to_string(width) + " x " + std::to_string(height));
            const ObjectRef source = random_picture(session, random, shape, width, height);
            const auto before = all_bytes(source);
            const Area area = any_area(random, width, height);
            // From sums that fit in 16 bits to ones that wrap in 32.
            const int largest = std::array{2, 20, 300, 100000, kMost}[random() % 5];
            const Kernel across = any_kernel(largest), down = any_kernel(largest);
            const Value result =
                convolute(source, session.rectangle(area.left, area.top, area.width, area.height), across, down);
            ASSERT_TRUE(picture_in(result)) << session.last_error();
            EXPECT_EQ(session.last_error(), 0);
            const int depth = std::max(shape.depth, 16);
            EXPECT_EQ(difference(*picture_in(result),
                                 plain_convolution(read_image(pixels(source)), across, down, area, depth), depth),
                      "");
            EXPECT_FALSE(picture_in(result)->mask());
            EXPECT_EQ(all_bytes(source), before);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Convolute, WideAndHighPicturesAgreeWithTheJudge) {
    for (const auto& [width, height] :
         {std::pair{511, 3}, {512, 3}, {513, 3}, {523, 2}, {1025, 12}, {1, 60}, {3, 45}, {2, 1}}) {
        for (const int largest : {10, 5000}) {
            SCOPED_TRACE(::testing::Message() << width << " x " << height << ", up to " << largest);
            const ObjectRef source = random_picture(session, random, {}, width, height);
            const Kernel across = any_kernel(largest), down = any_kernel(largest);
            const Area area = {any_of(random, 0, width / 4), any_of(random, 0, height / 4), width - width / 2, height};
            const Value result =
                convolute(source, session.rectangle(area.left, area.top, area.width, area.height), across, down);
            ASSERT_TRUE(picture_in(result));
            EXPECT_EQ(difference(*picture_in(result),
                                 plain_convolution(read_image(pixels(source)), across, down, area, 32), 32),
                      "");
        }
    }
}

TEST_F(Convolute, EveryWidthOfKernelAgreesWithTheJudge) {
    for (int taps = 1; taps <= 21; taps += 2) {
        for (const int largest : {1, 12, 70000}) {
            Kernel across(static_cast<std::size_t>(taps)), down(static_cast<std::size_t>(taps));
            for (std::int32_t& c : across) c = any_of(random, 0, largest);
            for (std::int32_t& c : down) c = any_of(random, 0, largest);
            const ObjectRef source = random_picture(session, random, {}, 30, 25);
            const Value result = convolute(source, {}, across, down);
            ASSERT_TRUE(picture_in(result));
            EXPECT_EQ(difference(*picture_in(result),
                                 plain_convolution(read_image(pixels(source)), across, down, {0, 0, 30, 25}, 32), 32),
                      "")
                << taps << " taps up to " << largest;
        }
    }
}

TEST_F(Convolute, EveryWidthOfRegionAgreesWithTheJudge) {
    constexpr int kWidth = 26, kHeight = 7;
    const ObjectRef source = random_picture(session, random, {}, kWidth, kHeight);
    const PlainImage image = read_image(pixels(source));
    for (const int taps : {3, 7, 21}) {
        Kernel kernel(static_cast<std::size_t>(taps));
        for (std::int32_t& c : kernel) c = any_of(random, 1, 6);
        for (int left = 0; left < kWidth; left += 1 + left / 3) {
            for (int width = 1; width <= kWidth - left; ++width) {
                const Value result = convolute(source, session.rectangle(left, 1, width, 5), kernel, kernel);
                ASSERT_TRUE(picture_in(result));
                ASSERT_EQ(difference(*picture_in(result),
                                     plain_convolution(image, kernel, kernel, {left, 1, width, 5}, 32), 32),
                          "")
                    << taps << " taps, " << width << " columns from " << left;
            }
        }
    }
}

// At the bounds of signed numbers of 16 bits, and one beyond.
TEST_F(Convolute, TheLargestSumsAgreeWithTheJudge) {
    const ObjectRef source = session.picture(200, 40);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 200; ++x)
            write_pixel(pixels(source), x, y, each_channel([&](int) { return any_of(random, 0, 1) * 255; }));
    const PlainImage image = read_image(pixels(source));
    for (const Kernel& kernel :
         {Kernel{64, 1, 63}, Kernel{1, 127, 0}, Kernel{1, 127, 1}, Kernel{0, 128, 0}, Kernel{0, 127, 0},
          Kernel{64, -127, 64}, Kernel{127, 1, -127}, Kernel{127, -128, 2}, Kernel{64, -64, 64, -64, 1},
          Kernel{-128, 1, 0}, Kernel{-64, 1, -64}, Kernel{-64, 1, -65}, Kernel{127, 1, 0, -1, -127, 0, -1}}) {
        const Value result = convolute(source, {}, kernel, kernel);
        ASSERT_TRUE(picture_in(result));
        EXPECT_EQ(difference(*picture_in(result), plain_convolution(image, kernel, kernel, {0, 0, 200, 40}, 32), 32),
                  "")
            << ::testing::PrintToString(kernel);
    }
}

// Sums of every remainder about every multiple of every small divisor.
TEST_F(Convolute, QuotientsBySmallSumsAreExact) {
    constexpr int kGroups = 256;
    const ObjectRef source = session.picture(4 * kGroups, 12);
    for (int y = 0; y < 12; ++y) {
        for (int group = 0; group < kGroups; ++group) {
            const std::uint32_t right = static_cast<std::uint32_t>(group) * 0x010101;
            const std::uint32_t left =
                each_channel([&](int) { return y < 5 ? std::clamp(group + y - 2, 0, 255) : any_of(random, 0, 255); });
            for (int i = 0; i < 4; ++i) write_pixel(pixels(source), 4 * group + i, y, i < 2 ? left : right);
        }
    }
    const PlainImage image = read_image(pixels(source));
    for (int sum = 1; sum <= 260; ++sum) {
        const Kernel kernel = {1, 0, sum - 1};
        const Value result = convolute(source, {}, kernel, {1});
        ASSERT_TRUE(picture_in(result));
        ASSERT_EQ(
            difference(*picture_in(result), plain_pass(image, kernel, {0, 0, image.width, image.height}, 1, 0, 32), 32),
            "")
            << "sum " << sum;
    }
}

// Weights on both sides of 0 that add up to little, and to less than 0.
TEST_F(Convolute, NegativeCoefficientsAgreeWithTheJudge) {
    const ObjectRef source = random_picture(session, random, {}, 300, 8);
    const PlainImage image = read_image(pixels(source));
    for (const Kernel& kernel :
         {Kernel{-1, 3, -1}, Kernel{1, -3, 1}, Kernel{-1}, Kernel{-7}, Kernel{-85, 171, 0}, Kernel{-85, 172, 0},
          Kernel{-128, 0, 129}, Kernel{0, -128, 127}, Kernel{-127, 129, 0}, Kernel{-2, -3, 255, -3, -2},
          Kernel{-1, -1, -1, -1, 9, -1, -1, -1, -1}, Kernel{-300, 1000, -300}, Kernel{300, -1000, 300}}) {
        const Value result = convolute(source, {}, kernel, kernel);
        ASSERT_TRUE(picture_in(result));
        EXPECT_EQ(difference(*picture_in(result), plain_convolution(image, kernel, kernel, {0, 0, 300, 8}, 32), 32), "")
            << ::testing::PrintToString(kernel);
    }
}

TEST_F(Convolute, SumsWrapAndTheMostNegativeOneStaysWhenDividedByMinusOne) {
    const auto centre = [&](const std::vector<std::uint32_t>& levels, const Kernel& kernel) {
        return levels_of(convolute(grey_row(levels), {}, kernel, {1}))[levels.size() / 2];
    };
    constexpr int k2To24 = 1 << 24;
    EXPECT_EQ(centre({128, 7, 0}, {-k2To24, 0, k2To24 - 1}), 0u);    // -2^31 / -1
    EXPECT_EQ(centre({128, 7, 0}, {-k2To24, 0, k2To24 - 2}), 255u);  // -2^31 / -2
    EXPECT_EQ(centre({128, 7, 0}, {-k2To24, 0, -k2To24}), 64u);      // -2^31 / -2^25
    EXPECT_EQ(centre({128, 7, 0}, {k2To24, 0, 1 - k2To24}), 0u);     // the same dividend, by wrapping, / 1
    EXPECT_EQ(centre({3, 3, 3}, {0, kLeast, 0}), 1u);                // -2^31 / -2^31
    EXPECT_EQ(centre({2, 2, 2}, {0, kLeast, 0}), 0u);
    EXPECT_EQ(centre({1, 200, 1}, {0, kMost, 0}), 0u);  // 200 * (2^31 - 1) wraps to -200
    EXPECT_EQ(centre({1, 1, 1}, {0, kMost, 0}), 1u);
    EXPECT_EQ(centre({255, 0, 0}, {8421504, 0, 1}), 254u);  // just below 2^31, just below 255
}

TEST_F(Convolute, ASumOfZeroCopiesThePixelInBothPasses) {
    const ObjectRef source = random_picture(session, random, {}, 20, 20);  // with top bytes
    const PlainImage image = read_image(pixels(source));
    for (const Kernel& kernel : {Kernel{0}, Kernel{-1, 2, -1}, Kernel{kLeast, 0, kLeast}, Kernel{}}) {
        EXPECT_EQ(difference(*picture_in(convolute(source, {}, kernel, kernel)), image, 32), "");
        EXPECT_EQ(difference(*picture_in(convolute(source, {}, kernel, {1, 1, 1})),
                             plain_pass(image, {1, 1, 1}, {0, 0, 20, 20}, 0, 1, 32), 32),
                  "");
        EXPECT_EQ(difference(*picture_in(convolute(source, {}, {1, 1, 1}, kernel)),
                             plain_pass(image, {1, 1, 1}, {0, 0, 20, 20}, 1, 0, 32), 32),
                  "");
    }
    EXPECT_EQ(session.last_error(), 0);
}

TEST_F(Convolute, ANilKernelCopiesItsPass) {
    for (const Shape& shape : {Shape{.depth = 16}, Shape{.depth = 32}}) {
        const ObjectRef source = random_picture(session, random, shape, 9, 7);
        const PlainImage image = read_image(pixels(source));
        const Kernel kernel = {1, 2, 3};
        const auto call = [&](const ObjectRef& across, const ObjectRef& down) {
            return session.call(source, "TRV_Convolute", nullptr, across, down);
        };
        EXPECT_EQ(difference(*picture_in(call({}, {})), image, shape.depth), "");
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(difference(*picture_in(call(convolution(kernel), {})),
                             plain_pass(image, kernel, {0, 0, 9, 7}, 1, 0, shape.depth), shape.depth),
                  "");
        EXPECT_EQ(difference(*picture_in(call({}, convolution(kernel))),
                             plain_pass(image, kernel, {0, 0, 9, 7}, 0, 1, shape.depth), shape.depth),
                  "");
    }
}

TEST_F(Convolute, KnownValues) {
    EXPECT_EQ(levels_of(convolute(grey_row({0, 100, 200}), {}, {1, 2, 1}, {1})),
              (std::vector<std::uint32_t>{25, 100, 175}));
    EXPECT_EQ(levels_of(convolute(grey_row({10, 20, 30}), {}, {0, 1, 0}, {0, 1, 0})),
              (std::vector<std::uint32_t>{10, 20, 30}));
    EXPECT_EQ(levels_of(convolute(grey_row({0, 200, 0}), {}, {-1, 3, -1}, {1})),
              (std::vector<std::uint32_t>{0, 255, 0}));
    EXPECT_EQ(levels_of(convolute(grey_row({10, 20, 30}), {}, {1, 0, 0}, {1})),
              (std::vector<std::uint32_t>{10, 10, 20}));  // the first tap weighs the pixel to the left
    EXPECT_EQ(levels_of(convolute(grey_row({7}), {}, {1, 2, 1}, {1, 2, 1})), (std::vector<std::uint32_t>{7}));
}

TEST_F(Convolute, ARectangleIsChangedAloneButTapsReadBeyondIt) {
    const ObjectRef source = session.picture(30, 3);
    for (int x = 0; x < 30; ++x)
        for (int y = 0; y < 3; ++y) write_pixel(pixels(source), x, y, x < 10 ? 0xFF000000 : 0xFFFFFFFF);
    const Value result = convolute(source, session.rectangle(10, 0, 10, 3), {1, 1, 1}, {1});
    for (int x = 0; x < 30; ++x) {
        const std::uint32_t expected = x < 10 ? 0xFF000000 : x == 10 ? 0x00AAAAAA : x < 20 ? 0x00FFFFFF : 0xFFFFFFFF;
        EXPECT_EQ(read_pixel(*picture_in(result), x, 1), expected) << x;
    }
}

// Between the passes, 16-bit pictures keep five bits of each channel.
TEST_F(Convolute, ShallowPicturesAreRoundedBetweenThePasses) {
    const ObjectRef source = session.picture(2, 1, 16);
    write_pixel(pixels(source), 0, 0, 0x000000);
    write_pixel(pixels(source), 1, 0, 0x080808);
    const Value result = convolute(source, {}, {1, 1, 1}, {4});
    EXPECT_EQ(read_pixel(*picture_in(result), 1, 0), 0x000000u);  // 16 / 3 is 5, which has no place in five bits
}

TEST_F(Convolute, ChecksComeInOrder) {
    const ObjectRef source = session.picture(3, 2), unlockable = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    const ObjectRef outside = session.rectangle(50, 50, 5, 5), kernel = convolution({1, 2, 1});
    const auto code = [&](const ObjectRef& p, const ObjectRef& rectangle) {
        const Value result = session.invoke("TRV_Convolute(extends p", p, rectangle, kernel, kernel);
        EXPECT_FALSE(picture_in(result));
        return session.last_error();
    };
    EXPECT_EQ(code({}, outside), 2);
    EXPECT_EQ(code(unlockable, outside), 4);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code(source, outside), 38);
    EXPECT_EQ(code(source, {}), 5);
    session.host.faults.fail_at("newPicture", 2);
    EXPECT_EQ(code(source, {}), 6);
    EXPECT_TRUE(session.host.faults.happened());
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Convolute, NothingIsLeftBehindAndTheHostGetsNoControl) {
    const ObjectRef source = session.picture(40, 30), kernel = convolution({1, 2, 1});
    session.host.on_yield = [] { FAIL() << "yielded"; };
    const auto before = session.host.accounts();
    {
        const Value result = session.call(source, "TRV_Convolute", nullptr, kernel, kernel);
        ASSERT_TRUE(picture_in(result));
        EXPECT_EQ(session.host.accounts().pictures, before.pictures + 1);
        EXPECT_EQ(session.host.accounts().picture_locks, before.picture_locks);
    }
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_EQ(session.host.yields(), 0);
}

}  // namespace
}  // namespace tarvo::test
