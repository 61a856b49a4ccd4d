// Add and subtract, through the built library.

#include <gtest/gtest.h>

#include "pictures.h"
#include "plain_image.h"
#include "session.h"

namespace tarvo::test {
namespace {

struct Operation {
    const char* name;
    int sign;
    int nil_code, lock_code, size_code;
};

constexpr Operation kOperations[] = {{"TRV_Add", 1, 18, 19, 20}, {"TRV_Subtract", -1, 21, 22, 23}};

PlainImage judge(const Operation& operation, const PlainImage& a, const PlainImage& b) {
    PlainImage result(a.width, a.height);
    for (std::size_t i = 0; i < result.colors.size(); ++i)
        result.colors[i] = each_channel([&](int shift) {
            return (channel(a.colors[i], shift) + operation.sign * channel(b.colors[i], shift) + 256) % 256;
        });
    return result;
}

class AddSubtract : public ::testing::TestWithParam<Operation> {
protected:
    Session session;
    Random random{20051};
};

INSTANTIATE_TEST_SUITE_P(Both, AddSubtract, ::testing::ValuesIn(kOperations),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(AddSubtract, EveryPairOfKindsAgreesWithTheJudge) {
    for (const Shape& first : source_shapes()) {
        for (const Shape& second : source_shapes()) {
            SCOPED_TRACE(first.name() + " and " + second.name());
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 5);
            const ObjectRef a = random_picture(session, random, first, width, height);
            const ObjectRef b = random_picture(session, random, second, width, height);
            const auto before_a = all_bytes(a), before_b = all_bytes(b);
            const Value result = session.call(a, GetParam().name, b, 0);
            ASSERT_TRUE(picture_in(result)) << session.last_error();
            EXPECT_EQ(session.last_error(), 0);
            EXPECT_EQ(difference(*picture_in(result),
                                 judge(GetParam(), read_image(pixels(a)), read_image(pixels(b))),
                                 std::max(first.depth, 16)),
                      "");
            EXPECT_FALSE(picture_in(result)->mask());
            EXPECT_EQ(all_bytes(a), before_a);
            EXPECT_EQ(all_bytes(b), before_b);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_P(AddSubtract, WideRowsAgreeWithTheJudge) {
    for (const int width : {511, 512, 513, 1500}) {
        const ObjectRef a = random_picture(session, random, {}, width, 3);
        const ObjectRef b = random_picture(session, random, {}, width, 3);
        const Value result = session.call(a, GetParam().name, b, 0);
        ASSERT_TRUE(picture_in(result));
        EXPECT_EQ(difference(*picture_in(result), judge(GetParam(), read_image(pixels(a)), read_image(pixels(b))), 32),
                  "")
            << width;
    }
}

}  // namespace
}  // namespace tarvo::test
