// The colour matrix class, as programs use it.

#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <limits>
#include <random>

#include "session.h"

namespace tarvo::test {
namespace {

using Elements = std::array<std::array<double, 3>, 3>;

constexpr Elements kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

class ColorMatrix : public ::testing::Test {
protected:
    ObjectRef matrix(const Elements& elements = kIdentity) {
        const ObjectRef made = session.host.new_instance("TRV_ColorMatrix");
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) assign(made, i, j, elements[i][j]);
        return made;
    }
    void assign(const ObjectRef& self, int i, int j, double element) {
        std::array<Value, 2> indices = {i, j};
        session.caller.assign(self, "Value", indices, element);
    }
    double element(const ObjectRef& self, int i, int j) { return std::get<double>(session.call(self, "Value", i, j)); }
    Elements elements(const ObjectRef& self) {
        Elements all;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) all[i][j] = element(self, i, j);
        return all;
    }
    // The entry point behind a declaration, called as what it is.
    template <class Function>
    Function* entry(std::string_view declaration) {
        for (const auto& method : session.host.registry().find_class("TRV_ColorMatrix")->methods)
            if (method.declaration == declaration) return reinterpret_cast<Function*>(method.function);
        return nullptr;
    }
    ObjectRef matrix_product(const ObjectRef& a, const ObjectRef& b) {
        const auto multiply = entry<REALobjectStruct*(REALobjectStruct*, REALobjectStruct*)>(
            "Multiply(factor as double) as TRV_ColorMatrix");
        return adopt(multiply(handle(a), handle(b)));
    }
    ObjectRef scalar_product(const ObjectRef& a, double factor) {
        const auto multiply = entry<REALobjectStruct*(REALobjectStruct*, double)>(
            "Multiply(source as TRV_ColorMatrix) as TRV_ColorMatrix");
        return adopt(multiply(handle(a), factor));
    }
    static REALobjectStruct* handle(const ObjectRef& object) { return static_cast<REALobjectStruct*>(object.handle()); }
    ObjectRef adopt(REALobjectStruct* made) { return ObjectRef::adopt(session.host.objects().find(made)); }

    Session session;
};

TEST_F(ColorMatrix, ANewOneIsTheIdentity) {
    EXPECT_EQ(elements(session.host.new_instance("TRV_ColorMatrix")), kIdentity);
}

TEST_F(ColorMatrix, ElementsAreReadAndAssigned) {
    const Elements all = {{{1.5, -2, 3e300}, {-0.25, 5, 6}, {7, 8, -1e-300}}};
    EXPECT_EQ(elements(matrix(all)), all);
}

TEST_F(ColorMatrix, IndicesOutOfRangeReadZeroAndTakeNothing) {
    const ObjectRef self = matrix({{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}});
    const Elements before = elements(self);
    constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
    for (const auto& [i, j] : {std::pair{3, 0}, {-1, 0}, {0, 3}, {0, -1}, {1, 4}, {kLeast, 0}, {0, kMost}}) {
        EXPECT_EQ(element(self, i, j), 0.0) << i << " " << j;
        assign(self, i, j, 99.0);
    }
    EXPECT_EQ(elements(self), before);
}

TEST_F(ColorMatrix, CopyFrom) {
    const Elements all = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}};
    const ObjectRef from = matrix(all), to = matrix();
    session.call(to, "CopyFrom", from);
    EXPECT_EQ(elements(to), all);
    EXPECT_EQ(elements(from), all);
    session.call(to, "CopyFrom", nullptr);
    EXPECT_EQ(elements(to), all);
    session.call(to, "CopyFrom", to);
    EXPECT_EQ(elements(to), all);
}

TEST_F(ColorMatrix, TheMatrixProductIsTransposed) {
    const ObjectRef a = matrix({{{1, 2, 0}, {0, 1, 0}, {0, 0, 1}}});
    EXPECT_EQ(elements(matrix_product(a, matrix())), (Elements{{{1, 0, 0}, {2, 1, 0}, {0, 0, 1}}}));
    EXPECT_EQ(elements(a), (Elements{{{1, 2, 0}, {0, 1, 0}, {0, 0, 1}}}));
}

TEST_F(ColorMatrix, TheMatrixProductIsFusedInItsOrder) {
    std::mt19937 random(303);
    std::uniform_real_distribution<double> any(-3.0, 3.0);
    int differences = 0;
    for (int run = 0; run < 100; ++run) {
        Elements a, b;
        for (auto* each : {&a, &b})
            for (auto& row : *each)
                for (double& number : row) number = any(random);
        const Elements product = elements(matrix_product(matrix(a), matrix(b)));
        for (int i = 0; i < 3; ++i) {
            for (int k = 0; k < 3; ++k) {
                const double fused = std::fma(a[k][2], b[2][i], std::fma(a[k][0], b[0][i], a[k][1] * b[1][i]));
                EXPECT_EQ(product[i][k], fused);
                differences += fused != a[k][0] * b[0][i] + a[k][1] * b[1][i] + a[k][2] * b[2][i];
            }
        }
    }
    EXPECT_GT(differences, 0);  // else the order and the fused steps were not seen
}

TEST_F(ColorMatrix, TheScalarProduct) {
    EXPECT_EQ(elements(scalar_product(matrix(), 2.0)), (Elements{{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}}));
    EXPECT_EQ(elements(scalar_product(matrix({{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}}), -0.5)),
              (Elements{{{-0.5, -1, -1.5}, {-2, -2.5, -3}, {-3.5, -4, -4.5}}}));
}

TEST_F(ColorMatrix, ProductsWithNothingAreNil) {
    EXPECT_FALSE(matrix_product(matrix(), {}));
    EXPECT_FALSE(matrix_product({}, matrix()));
    EXPECT_FALSE(scalar_product({}, 2.0));
}

TEST_F(ColorMatrix, AProductThatTheHostDoesNotMakeIsNil) {
    const ObjectRef a = matrix(), b = matrix();
    session.host.faults.fail_at("PluginNewInstance", 1, true);
    EXPECT_FALSE(matrix_product(a, b));
    EXPECT_FALSE(scalar_product(a, 2.0));
}

// The two declarations are registered crosswise: each entry point finds zeros where it looks for its argument.
TEST_F(ColorMatrix, MultiplyByItsDeclarationsGivesNilAndZeros) {
    const auto before = session.host.accounts();
    {
        const ObjectRef self = matrix({{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}});
        EXPECT_FALSE(object_in(session.call(self, "Multiply", 2.0)));
        EXPECT_EQ(elements(object_in(session.call(self, "Multiply", matrix()))), Elements{});
    }
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(ColorMatrix, InvertGivesNilAndChangesNothing) {
    for (const Elements& all : {kIdentity, Elements{}, Elements{{{1, 2, 3}, {4, 5, 6}, {7, 8, 10}}}}) {
        const ObjectRef self = matrix(all);
        EXPECT_FALSE(object_in(session.call(self, "Invert")));
        EXPECT_EQ(elements(self), all);
    }
}

TEST_F(ColorMatrix, MessageBoxShowsThreeRows) {
    session.call(matrix(), "MessageBox");
    session.call(matrix({{{1.005, -2.5, 300}, {0.126, 5, 6}, {-0.001, 8, 99999.999}}}), "MessageBox");
    EXPECT_EQ(session.host.message_boxes(),
              (std::vector<std::string>{"1.00  0.00  0.00\n0.00  1.00  0.00\n0.00  0.00  1.00",
                                        "1.00  -2.50  300.00\n0.13  5.00  6.00\n-0.00  8.00  100000.00"}));
}

TEST_F(ColorMatrix, MessageBoxHasRoomForEveryDouble) {
    Elements longest;
    for (auto& row : longest) row.fill(-DBL_MAX);
    session.call(matrix(longest), "MessageBox");
    ASSERT_EQ(session.host.message_boxes().size(), 1u);
    const std::string& text = session.host.message_boxes().front();
    constexpr std::size_t kNumber = 1 + 309 + 3;
    EXPECT_EQ(text.size(), 9 * kNumber + 6 * 2 + 2);
    EXPECT_TRUE(text.ends_with(".00"));
    for (auto& row : longest) row.fill(std::numeric_limits<double>::quiet_NaN());
    session.call(matrix(longest), "MessageBox");
    EXPECT_EQ(session.host.message_boxes().size(), 2u);
}

TEST_F(ColorMatrix, MembersLeaveTheLastErrorAlone) {
    session.invoke("TRV_Add(extends p", nullptr, nullptr, 0);
    ASSERT_EQ(session.last_error(), 2);
    const ObjectRef self = matrix();
    matrix_product(self, self);
    scalar_product(self, 3.0);
    session.call(self, "CopyFrom", matrix());
    session.call(self, "Invert");
    session.call(self, "MessageBox");
    EXPECT_EQ(session.last_error(), 2);
}

// Members called on nothing.
TEST_F(ColorMatrix, NilHasNoElements) {
    EXPECT_EQ(entry<double(REALobjectStruct*, int, int)>("Value(i as integer, j as integer) as double")(nullptr, 0, 0),
              0.0);
    for (const auto& method : session.host.registry().find_class("TRV_ColorMatrix")->methods) {
        if (!method.setter) continue;
        reinterpret_cast<void (*)(REALobjectStruct*, int, int, double)>(method.setter)(nullptr, 0, 0, 1.0);
    }
    entry<void(REALobjectStruct*, REALobjectStruct*)>("CopyFrom(source as TRV_ColorMatrix)")(nullptr, handle(matrix()));
    entry<void(REALobjectStruct*)>("MessageBox()")(nullptr);
    EXPECT_TRUE(session.host.message_boxes().empty());
}

}  // namespace
}  // namespace tarvo::test
