// How arguments reach an entry point, and how results come back.

#include <stdexcept>
#include <utility>

#include "fake_host.h"

namespace tarvo::host {
namespace {

using fake::Seen;
using fake::seen;

using Passing = FakeHost;

TEST_F(Passing, IntegersAndDoublesInterleavedBeyondTheRegisters) {
    const ObjectRef p = picture();
    const Value result =
        call("Mixed", p, -1, 0.5, 2147483647, -1e300, Color{0xFEDCBA}, 3.25, true, -2147483647 - 1, 5, -6, 7.75);
    EXPECT_EQ(
        seen,
        (Seen{"mixed", {p.handle()}, {-1, 0.5, 2147483647, -1e300, 0xFEDCBA, 3.25, 1, -2147483648.0, 5, -6, 7.75}}));
    EXPECT_EQ(result, Value(-7));
}

TEST_F(Passing, EightDoublesAndADoubleBack) {
    EXPECT_EQ(call("Doubles", 1.5, 2, 3, 4, 5, 6, 7, 8), Value(-0.5));
    EXPECT_EQ(seen, (Seen{"doubles", {}, {1.5, 2, 3, 4, 5, 6, 7, 8}}));
}

TEST_F(Passing, MoreThanEightOfASortAreRefused) {
    EXPECT_NE(refusal([&] { call("NineDoubles", 1, 2, 3, 4, 5, 6, 7, 8, 9); }).find("more than 8 doubles"),
              std::string::npos);
    EXPECT_NE(refusal([&] { call("NineIntegers", 1, 2, 3, 4, 5, 6, 7, 8, 9); }).find("more than 8 integers"),
              std::string::npos);
    EXPECT_EQ(seen, Seen{});
}

TEST_F(Passing, WhatIsNotGivenIsZero) {
    // Leaves something else in every register and on the stack first.
    call("Mixed", picture(), 1, 1.0, 1, 1.0, Color{1}, 1.0, true, 1, 1, 1, 1.0);
    call("Hungry", 4, 2.5);
    EXPECT_EQ(seen, (Seen{"hungry", {nullptr, nullptr}, {4, 0, 0, 0, 0, 0, 2.5, 0, 0}}));
}

TEST_F(Passing, ObjectsOfEveryClass) {
    const ObjectRef p = picture(), s = host.new_string("s"), a = host.new_integer_array({1});
    const ObjectRef m = host.new_memory_block(1), f = host.new_folder_item("/f"), d = host.new_screen();
    call("Objects", p, s, a, m, f, d);
    EXPECT_EQ(seen, (Seen{"objects", {p.handle(), s.handle(), a.handle(), m.handle(), f.handle(), d.handle()}, {}}));
    call("Objects", Nil{}, Nil{}, Nil{}, Nil{}, Nil{}, ObjectRef());
    EXPECT_EQ(seen, (Seen{"objects", std::vector<const void*>(6), {}}));
}

TEST_F(Passing, ByRefIsWrittenBack) {
    std::vector<Value> arguments{7, 1.5, true, Color{0x0000FF}, 3};
    caller().call("Change", arguments);
    EXPECT_EQ(seen, (Seen{"change", {}, {7, 1.5, 1, 255, 3}}));
    EXPECT_EQ(arguments, (std::vector<Value>{10, 4.5, false, Color{0xFFFF00}, 3}));
}

TEST_F(Passing, ByRefThatIsNotTouchedStays) {
    std::vector<Value> arguments{-7, 1e-300};
    caller().call("Leave", arguments);
    EXPECT_EQ(arguments, (std::vector<Value>{-7, 1e-300}));
}

TEST_F(Passing, DefaultsFillWhatIsMissing) {
    call("Defaults", 1, 2.5, false, Color{3}, Nil{}, Nil{});
    EXPECT_EQ(seen, (Seen{"no text", {nullptr}, {1, 2.5, 0, 3}}));
    call("Defaults", 1, 3);
    EXPECT_EQ(seen, (Seen{"hi", {nullptr}, {1, 3, 1, 0x102030}}));
    call("Defaults", 1);
    EXPECT_EQ(seen, (Seen{"hi", {nullptr}, {1, 2, 1, 0x102030}}));
    EXPECT_NE(refusal([&] { call("Defaults"); }), "(not refused)");
}

using Results = FakeHost;

TEST_F(Results, OnlyTheBitsOfTheTypeCount) {
    EXPECT_EQ(call("NoisyInteger"), Value(-2147483647));
    EXPECT_EQ(call("NoisyColor"), Value(Color{0x123456}));
    EXPECT_EQ(call("NoisyBoolean", true), Value(true));
    EXPECT_EQ(call("NoisyBoolean", false), Value(false));
}

TEST_F(Results, NothingAndNil) {
    EXPECT_EQ(call("Leave", 1, 1.0), Value(Nil{}));
    EXPECT_EQ(call("Nothing"), Value(Nil{}));
}

TEST_F(Results, AStringIsAnObject) {
    const ObjectRef text = object_in(call("Text"));
    ASSERT_TRUE(text);
    EXPECT_EQ(dynamic_cast<StringObject&>(*text.get()).bytes(), "a text");
    EXPECT_EQ(text->references(), 1);
}

TEST_F(Results, AnObjectComesWithItsReference) {
    const ObjectRef p = picture();
    {
        const Value same = call("Same", p);
        EXPECT_EQ(object_in(same), p);
        EXPECT_EQ(p->references(), 2);
    }
    EXPECT_EQ(p->references(), 1);
}

TEST_F(Results, AnObjectWithoutAReferenceIsReportedAndKept) {
    const ObjectRef p = picture();
    EXPECT_EQ(object_in(call("Unowned", p)), p);
    EXPECT_EQ(p->references(), 1);
    EXPECT_EQ(host.complaints().size(), 1u);
    host.clear_complaints();
}

TEST_F(Results, WhatAnObjectIsCounts) {
    const Value result = call("BoxAsPicture", 8);
    EXPECT_EQ(type_name(result), "FakeBox");
    EXPECT_EQ(caller().get(result, "number"), Value(8));
}

TEST_F(Results, AnAddressThatIsNoObjectIsRefused) {
    EXPECT_EQ(refusal([&] { call("NotAnObject"); }), "NotAnObject() as picture: the result is no live object");
}

using DuringACall = FakeHost;

TEST_F(DuringACall, ArgumentsAreHeld) {
    ObjectRef last_box = box(5);
    std::vector<Value> arguments{picture(), std::move(last_box)};
    int references = 0;
    host.on_yield = [&] {
        references = object_in(arguments[0])->references();
        arguments.assign(2, Nil{});
    };
    EXPECT_EQ(caller().call("Patient", arguments), Value(true));
    EXPECT_EQ(seen.numbers, (std::vector<double>{5}));
    EXPECT_GE(references, 2);
    EXPECT_EQ(host.accounts(), Accounts{});
}

TEST_F(DuringACall, WhatArgumentsBecomeIsHeld) {
    EXPECT_EQ(call("Patient", picture(), picture()), Value(true));
    EXPECT_EQ(seen.numbers, (std::vector<double>{100}));
}

TEST_F(DuringACall, SelfIsHeld) {
    ObjectRef p = picture();
    const void* const handle = p.handle();
    Value self = caller().convert(std::exchange(p, {}), type_named("FakeBox"));
    host.on_yield = [&] { self = Nil{}; };
    // The box's conversion yields, when nothing else refers to the box; then what it gave is passed.
    std::vector<Value> arguments{Nil{}, 1};
    caller().call_on(self, "Shift", arguments);
    EXPECT_TRUE(is_nil(self));
    EXPECT_EQ(seen, (Seen{"picture_shift", {handle, nullptr}, {1}}));
}

TEST_F(DuringACall, OtherCallsAreMade) {
    const ObjectRef p = picture(), b = box(5);
    int nested = 0;
    host.on_yield = [&] {
        if (++nested == 3) return;
        EXPECT_EQ(call("Patient", p, b), Value(true));
    };
    EXPECT_EQ(call("Patient", p, b), Value(true));
    EXPECT_EQ(nested, 3);
}

TEST_F(DuringACall, AVariableThatChangesItsTypeStillTakesTheResult) {
    std::vector<Value> arguments{41};
    host.on_yield = [&] { arguments[0] = 2.5; };
    caller().call("CountUp", arguments);
    EXPECT_EQ(arguments[0], Value(42));
}

TEST_F(DuringACall, AnExceptionLeavesNoReferences) {
    host.on_yield = [] { throw std::runtime_error("enough"); };
    std::vector<Value> arguments{picture(), box(5)};
    EXPECT_THROW(caller().call("Patient", arguments), std::runtime_error);
    EXPECT_EQ(object_in(arguments[0])->references(), 2);  // the vector's and ours
    // In a conversion on the way.
    EXPECT_THROW(call("OnlyPicture", box(5)), std::runtime_error);
    EXPECT_THROW(call("Patient", box(5), box(5)), std::runtime_error);
    arguments.clear();
    EXPECT_EQ(host.accounts(), Accounts{});
}

TEST(CallerOfABadPlugin, RefusesItsDeclarations) {
    const auto plugin = +[](REALresolver callback) {
        static REALmethodDefinition bad{reinterpret_cast<void*>(+[] {}), nullptr, "Bad(a integer)", 0};
        const auto resolver = reinterpret_cast<REALresolver>(callback("ResolverPPC"));
        reinterpret_cast<void (*)(REALmethodDefinition*)>(resolver("PluginRegisterMethod"))(&bad);
        return 1;
    };
    Host host;
    ASSERT_TRUE(host.start_plugin(plugin));
    EXPECT_THROW(Caller{host}, DeclarationError);
}

}  // namespace
}  // namespace tarvo::host
