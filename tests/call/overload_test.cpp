// Which of several methods is called, and what arguments become on the way.

#include "fake_host.h"

namespace tarvo::host {
namespace {

using fake::Seen;
using fake::seen;

class Overloads : public FakeHost {
protected:
    // The entry point that a call reaches.
    template <class... Values>
    std::string reached(std::string_view name, Values... values) {
        seen = {};
        call(name, values...);
        return seen.entry;
    }
};

TEST_F(Overloads, TheExactTypeWins) {
    EXPECT_EQ(reached("Which", 1), "by integer");
    EXPECT_EQ(reached("Which", 1.0), "by double");
    EXPECT_EQ(reached("Which", Color{1}), "by color");
    EXPECT_EQ(reached("Which", true), "by boolean");
    EXPECT_EQ(reached("Which", host.new_string("a")), "by string");
    EXPECT_EQ(reached("Which", picture()), "by picture");
    EXPECT_EQ(reached("WHICH", box(1)), "by picture");  // converted
}

TEST_F(Overloads, AWiderTypeBeatsALooseOne) { EXPECT_EQ(reached("DoubleOrColor", 1), "by double"); }

TEST_F(Overloads, NilIsAnObjectBeforeItIsAString) { EXPECT_EQ(reached("Which", Nil{}), "by picture"); }

TEST_F(Overloads, AnEmptyReferenceIsNil) { EXPECT_EQ(reached("OnlyPicture", ObjectRef()), "by picture"); }

TEST_F(Overloads, TheClassItselfBeatsAConversion) {
    EXPECT_EQ(reached("BoxOrPicture", box(1)), "by box");
    EXPECT_EQ(reached("BoxOrPicture", picture()), "by picture");
}

TEST_F(Overloads, FewerDefaultsWin) {
    EXPECT_EQ(reached("Short", 1), "one");
    EXPECT_EQ(reached("Short", 1, 2), "one or two");
    EXPECT_EQ(reached("Short", 1.5), "one");
}

TEST_F(Overloads, CrossedFitsAreAmbiguous) {
    EXPECT_EQ(reached("Crossed", 1, 1.5), "integer, double");
    EXPECT_EQ(reached("Crossed", 1.5, 1), "double, integer");
    EXPECT_EQ(refusal([&] { call("crossed", 1, 1); }),
              "several methods take crossed(integer, integer) equally well:\n"
              "  Crossed(a as integer, b as double)\n"
              "  Crossed(a as double, b as integer)");
    EXPECT_NE(refusal([&] { call("BoxOrPicture", Nil{}); }).find("equally well"), std::string::npos);
}

TEST_F(Overloads, WhatFitsNoneIsRefusedBeforeTheCall) {
    seen = {};
    EXPECT_EQ(refusal([&] { call("BoxOrPicture", host.new_screen()); }),
              "no method takes BoxOrPicture(screen); there is\n"
              "  BoxOrPicture(value as FakeBox)\n"
              "  BoxOrPicture(value as picture)");
    EXPECT_EQ(refusal([&] { call("OnlyBoolean", 1); }),
              "no method takes OnlyBoolean(integer); there is\n  OnlyBoolean(value as boolean)");
    EXPECT_EQ(refusal([&] { call("OnlyDouble", true); }),
              "no method takes OnlyDouble(boolean); there is\n  OnlyDouble(value as double)");
    EXPECT_NE(refusal([&] { call("OnlyDouble"); }), "(not refused)");
    EXPECT_NE(refusal([&] { call("OnlyDouble", 1.0, 1.0); }), "(not refused)");
    EXPECT_EQ(refusal([&] { call("Missing", 1); }), "there is no method for Missing(integer)");
    EXPECT_EQ(seen, Seen{});
}

TEST_F(Overloads, ByRefTakesTheExactTypeOnly) {
    EXPECT_EQ(reached("OnlyReference", 1), "by reference");
    EXPECT_NE(refusal([&] { call("OnlyReference", 1.0); }), "(not refused)");
    EXPECT_NE(refusal([&] { call("OnlyReference", Color{}); }), "(not refused)");
    EXPECT_NE(refusal([&] { call("OnlyReference", Nil{}); }), "(not refused)");
}

TEST_F(Overloads, OneMethodCanBeNamedExactly) {
    for (const Callable& callable : caller().callables()) {
        if (callable.declaration.name != "BoxOrPicture") continue;
        std::vector<Value> nil{Nil{}}, too_many{Nil{}, Nil{}};
        caller().invoke(callable, nil);
        EXPECT_EQ(seen.entry, callable.parameters[0].type.name == "picture" ? "by picture" : "by box");
        EXPECT_THROW(caller().invoke(callable, too_many), CallError);
    }
}

using Conversions = FakeHost;

TEST_F(Conversions, AnObjectConvertsItself) {
    const ObjectRef p = picture();
    std::vector<Value> made{p};
    const Value b = caller().convert(p, type_named("FakeBox"));
    call("OnlyPicture", b);
    EXPECT_EQ(seen.entry, "by picture");
    EXPECT_EQ(object_in(caller().convert(b, type_named("Picture"))), p);
}

TEST_F(Conversions, ANewInstanceTakesTheObject) {
    const ObjectRef p = picture();
    const Value made = caller().convert(p, type_named("fakebox"));
    EXPECT_EQ(type_name(made), "FakeBox");
    EXPECT_EQ(caller().get(made, "number"), Value(100));
    EXPECT_EQ(p->references(), 2);
    const Value again = caller().convert(p, type_named("FakeBox"));
    EXPECT_NE(object_in(again), object_in(made));
    call("OnlyBox", p);
    EXPECT_EQ(seen.entry, "by box");
    EXPECT_EQ(p->references(), 3);
}

TEST_F(Conversions, ThatGiveNothingAreNone) {
    const ObjectRef odd = host.new_instance("FakeOdd");
    EXPECT_EQ(refusal([&] { caller().convert(odd, type_named("FakeBox")); }), "expected FakeBox, found FakeOdd");
}

TEST_F(Conversions, MakeOnlyWhatHasAName) {
    const ObjectRef odd = host.new_instance("FakeOdd");
    EXPECT_EQ(refusal([&] { caller().convert(odd, type_named("picture")); }), "no new picture can be made");
}

TEST_F(Conversions, ToNilIsNil) { EXPECT_EQ(caller().convert(box(1), type_named("picture")), Value(Nil{})); }

TEST_F(Conversions, ToAnotherClassThanPromisedIsRefused) {
    EXPECT_EQ(refusal([&] { caller().convert(box(13), type_named("picture")); }),
              "FakeBox.operator_convert() as picture gave no picture");
}

TEST_F(Conversions, OfVariables) {
    EXPECT_EQ(caller().convert(1, type_named("double")), Value(1.0));
    EXPECT_EQ(caller().convert(-1.9, type_named("integer")), Value(-1));
    EXPECT_EQ(caller().convert(Nil{}, type_named("FakeBox")), Value(Nil{}));
    EXPECT_EQ(refusal([&] { caller().convert(true, type_named("integer")); }), "expected integer, found boolean");
    EXPECT_EQ(refusal([&] { caller().convert(picture(), type_named("screen")); }), "expected screen, found picture");
    EXPECT_EQ(refusal([&] { caller().convert(Nil{}, type_named("color")); }), "expected color, found nil");
    Type pictures = type_named("picture");
    pictures.array = true;
    EXPECT_EQ(refusal([&] { caller().convert(box(1), pictures); }), "expected picture(), found FakeBox");
}

TEST_F(Conversions, OfLiterals) {
    EXPECT_EQ(caller().value_of(Literal(3)), Value(3));
    EXPECT_EQ(caller().value_of(Literal(2.5)), Value(2.5));
    EXPECT_EQ(caller().value_of(Literal(false)), Value(false));
    EXPECT_EQ(caller().value_of(Literal(Color{5})), Value(Color{5}));
    EXPECT_EQ(caller().value_of(Literal(Nil{})), Value(Nil{}));
    const ObjectRef text = object_in(caller().value_of(Literal(std::string("a\0b", 3))));
    EXPECT_EQ(dynamic_cast<StringObject&>(*text.get()).bytes(), std::string("a\0b", 3));
}

}  // namespace
}  // namespace tarvo::host
