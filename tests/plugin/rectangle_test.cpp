// TRV_Rectangle, as programs use it.

#include <gtest/gtest.h>

#include "session.h"

namespace tarvo::test {
namespace {

constexpr int kLeast = -2147483647 - 1;
constexpr int kMost = 2147483647;

class Rectangle : public ::testing::Test {
protected:
    int get(const ObjectRef& r, const char* property) { return std::get<int>(session.caller.get(r, property)); }
    void set(const ObjectRef& r, const char* property, int v) { session.caller.set(r, property, v); }
    std::array<int, 4> fields(const ObjectRef& r) {
        return {get(r, "left"), get(r, "top"), get(r, "width"), get(r, "height")};
    }
    bool is(const ObjectRef& r, const char* method, const ObjectRef& other) {
        return std::get<bool>(session.call(r, method, other));
    }
    bool valid(const ObjectRef& r) { return std::get<bool>(session.call(r, "IsValid")); }
    std::string message_of(const ObjectRef& r) {
        session.host.clear_message_boxes();
        session.call(r, "MessageBox");
        return session.host.message_boxes().at(0);
    }

    Session session;
};

using Fields = std::array<int, 4>;

TEST_F(Rectangle, ANewOneIsEmpty) {
    const ObjectRef r = session.host.new_instance("TRV_Rectangle");
    EXPECT_EQ(fields(r), (Fields{0, 0, 0, 0}));
    EXPECT_EQ(get(r, "right"), -1);
    EXPECT_EQ(get(r, "bottom"), -1);
    EXPECT_FALSE(valid(r));
    EXPECT_EQ(message_of(r), "left: 0 top: 0 right: -1 bottom: -1\nwidth: 0 height: 0\ninvalid");
}

TEST_F(Rectangle, NumbersOfNoPropertyReadZeroAndWriteNothing) {
    using Getter = int (*)(REALobjectStruct*, REALword);
    using Setter = void (*)(REALobjectStruct*, REALword, int);
    const ObjectRef r = session.rectangle(1, 2, 30, 40);
    const auto self = static_cast<REALobjectStruct*>(r.handle());
    const host::RegisteredClass& cls = *session.host.registry().find_class("TRV_Rectangle");
    ASSERT_EQ(cls.properties.size(), 6u);
    for (const host::RegisteredProperty& property : cls.properties) {
        const auto getter = reinterpret_cast<Getter>(property.getter);
        const auto setter = reinterpret_cast<Setter>(property.setter);
        EXPECT_EQ(getter(self, property.parameter), get(r, property.name.c_str()));
        for (const REALword parameter : {0, 7, -1}) {
            EXPECT_EQ(getter(self, parameter), 0) << property.name << " " << parameter;
            setter(self, parameter, 99);
            EXPECT_EQ(fields(r), (Fields{1, 2, 30, 40})) << property.name << " " << parameter;
        }
        EXPECT_EQ(getter(nullptr, property.parameter), 0);
        setter(nullptr, property.parameter, 99);
    }
}

TEST_F(Rectangle, EdgesMoveWithTheOriginAndSetTheSize) {
    const ObjectRef r = session.rectangle(2, 3, 1, 1);
    set(r, "right", 9);
    EXPECT_EQ(get(r, "width"), 8);
    set(r, "left", 5);
    EXPECT_EQ(get(r, "right"), 12);
    set(r, "bottom", 3);
    EXPECT_EQ(get(r, "height"), 1);
    set(r, "top", -10);
    EXPECT_EQ(get(r, "bottom"), -10);
    set(r, "width", 100);
    set(r, "height", -2);
    EXPECT_EQ(fields(r), (Fields{5, -10, 100, -2}));
}

TEST_F(Rectangle, Validity) {
    EXPECT_TRUE(valid(session.rectangle(-5, -5, 1, 1)));
    EXPECT_FALSE(valid(session.rectangle(0, 0, 1, 0)));
    EXPECT_FALSE(valid(session.rectangle(0, 0, 0, 1)));
    EXPECT_FALSE(valid(session.rectangle(0, 0, -1, -1)));
}

TEST_F(Rectangle, EqualityTakesAllFourFields) {
    const ObjectRef r = session.rectangle(1, 2, 3, 4);
    EXPECT_TRUE(is(r, "Equals", session.rectangle(1, 2, 3, 4)));
    EXPECT_TRUE(is(r, "Equals", r));
    EXPECT_FALSE(is(r, "Equals", session.rectangle(0, 2, 3, 4)));
    EXPECT_FALSE(is(r, "Equals", session.rectangle(1, 0, 3, 4)));
    EXPECT_FALSE(is(r, "Equals", session.rectangle(1, 2, 0, 4)));
    EXPECT_FALSE(is(r, "Equals", session.rectangle(1, 2, 3, 0)));
}

TEST_F(Rectangle, MovesAndSizes) {
    const ObjectRef r = session.host.new_instance("TRV_Rectangle");
    session.call(r, "CopyFrom", session.rectangle(1, 2, 30, 40));
    EXPECT_EQ(fields(r), (Fields{1, 2, 30, 40}));
    session.call(r, "OffsetBy", 5, -6);
    EXPECT_EQ(fields(r), (Fields{6, -4, 30, 40}));
    session.call(r, "MoveTo", 7, 8);
    EXPECT_EQ(fields(r), (Fields{7, 8, 30, 40}));
    session.call(r, "Resize", 9, 10);
    EXPECT_EQ(fields(r), (Fields{7, 8, 9, 10}));
    session.call(r, "InsetBy", 1, 2);
    EXPECT_EQ(fields(r), (Fields{8, 10, 7, 6}));
    session.call(r, "InsetBy", -3, -4);
    EXPECT_EQ(fields(r), (Fields{5, 6, 13, 14}));
    EXPECT_EQ(session.call(r, "Area"), Value(13 * 14));
}

TEST_F(Rectangle, ScalingTruncatesTowardZeroAboutTheCorner) {
    const ObjectRef r = session.rectangle(5, 6, 9, 3);
    session.call(r, "ScaleBy", 0.5);
    EXPECT_EQ(fields(r), (Fields{5, 6, 4, 1}));
    const ObjectRef negative = session.rectangle(0, 0, -3, 7);
    session.call(negative, "ScaleBy", 0.5);
    EXPECT_EQ(fields(negative), (Fields{0, 0, -1, 3}));
    const ObjectRef huge = session.rectangle(0, 0, 3, -3);
    session.call(huge, "ScaleBy", 1e300);
    EXPECT_EQ(fields(huge), (Fields{0, 0, kMost, kLeast}));
    session.call(huge, "ScaleBy", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(fields(huge), (Fields{0, 0, kLeast, kLeast}));
}

TEST_F(Rectangle, UnionHoldsBothWhetherValidOrNot) {
    const ObjectRef r = session.rectangle(0, 0, 10, 10);
    session.call(r, "UnionWith", session.rectangle(20, -5, 5, 5));
    EXPECT_EQ(fields(r), (Fields{0, -5, 25, 15}));
    const ObjectRef with_empty = session.rectangle(10, 10, 5, 5);
    session.call(with_empty, "UnionWith", session.rectangle(0, 0, 0, 0));
    EXPECT_EQ(fields(with_empty), (Fields{0, 0, 15, 15}));
}

TEST_F(Rectangle, IntersectionOfStrangersIsInvalid) {
    const ObjectRef r = session.rectangle(0, 0, 10, 10);
    session.call(r, "IntersectWith", session.rectangle(4, -2, 10, 5));
    EXPECT_EQ(fields(r), (Fields{4, 0, 6, 3}));
    const ObjectRef apart = session.rectangle(0, 0, 10, 10);
    session.call(apart, "IntersectWith", session.rectangle(20, 20, 5, 5));
    EXPECT_EQ(fields(apart), (Fields{20, 20, -10, -10}));
    EXPECT_FALSE(valid(apart));
}

TEST_F(Rectangle, ContainsAndIntersectsByInclusiveEdges) {
    const ObjectRef r = session.rectangle(0, 0, 10, 10);
    EXPECT_TRUE(is(r, "Contains", session.rectangle(0, 0, 10, 10)));
    EXPECT_TRUE(is(r, "Contains", session.rectangle(9, 9, 1, 1)));
    EXPECT_FALSE(is(r, "Contains", session.rectangle(9, 9, 2, 1)));
    EXPECT_FALSE(is(r, "Contains", session.rectangle(9, 9, 1, 2)));
    EXPECT_FALSE(is(r, "Contains", session.rectangle(-1, 0, 2, 2)));
    EXPECT_FALSE(is(r, "Contains", session.rectangle(0, -1, 2, 2)));
    EXPECT_TRUE(is(r, "Contains", session.rectangle(5, 5, 0, 0)));  // no check of validity
    EXPECT_TRUE(is(r, "Intersects", session.rectangle(9, 9, 5, 5)));
    EXPECT_FALSE(is(r, "Intersects", session.rectangle(10, 9, 5, 5)));
    EXPECT_FALSE(is(r, "Intersects", session.rectangle(9, 10, 5, 5)));
    EXPECT_FALSE(is(r, "Intersects", session.rectangle(0, -5, 5, 5)));
    EXPECT_TRUE(is(r, "Intersects", session.rectangle(-4, -4, 5, 5)));
    EXPECT_FALSE(is(r, "Intersects", session.rectangle(-4, -4, 4, 5)));
}

TEST_F(Rectangle, ArithmeticWraps) {
    const ObjectRef r = session.rectangle(kMost, kLeast, 2, 2);
    EXPECT_EQ(get(r, "right"), kLeast);
    EXPECT_EQ(get(r, "bottom"), kLeast + 1);
    session.call(r, "OffsetBy", 1, -1);
    EXPECT_EQ(fields(r), (Fields{kLeast, kMost, 2, 2}));
    session.call(r, "InsetBy", kMost, kLeast);
    EXPECT_EQ(fields(r), (Fields{-1, -1, 4, 2}));
    EXPECT_EQ(session.call(session.rectangle(0, 0, 65536, 65536), "Area"), Value(0));
    EXPECT_EQ(session.call(session.rectangle(0, 0, kLeast, -1), "Area"), Value(kLeast));
    const ObjectRef size = session.rectangle(kLeast, 0, 0, 0);
    set(size, "right", kMost);
    EXPECT_EQ(get(size, "width"), 0);
}

TEST_F(Rectangle, NilArgumentsDoNothing) {
    const ObjectRef r = session.rectangle(1, 2, 3, 4);
    for (const char* method : {"CopyFrom", "UnionWith", "IntersectWith"}) session.call(r, method, nullptr);
    EXPECT_EQ(fields(r), (Fields{1, 2, 3, 4}));
    for (const char* method : {"Equals", "Contains", "Intersects"}) EXPECT_FALSE(is(r, method, {})) << method;
}

TEST_F(Rectangle, TheMessageBoxTellsEverything) {
    EXPECT_EQ(message_of(session.rectangle(1, 2, 3, 4)),
              "left: 1 top: 2 right: 3 bottom: 5\nwidth: 3 height: 4\nvalid");
    EXPECT_EQ(message_of(session.rectangle(kLeast, kLeast, kLeast, kLeast)),
              "left: -2147483648 top: -2147483648 right: -1 bottom: -1\n"
              "width: -2147483648 height: -2147483648\nvalid");  // the edges wrap, and decide
    EXPECT_TRUE(message_of(session.rectangle(0, 0, 1, 0)).ends_with("\ninvalid"));
    EXPECT_TRUE(message_of(session.rectangle(0, 0, 0, 1)).ends_with("\ninvalid"));
    EXPECT_EQ(session.host.accounts().strings, 0);
}

TEST_F(Rectangle, ABoxThatThrowsLeavesNoText) {
    session.host.on_message_box = [](const std::string&) { throw std::runtime_error("no screen"); };
    session.call(session.rectangle(0, 0, 1, 1), "MessageBox");
    EXPECT_EQ(session.host.accounts().strings, 0);
}

}  // namespace
}  // namespace tarvo::test
