// Members, class extensions, methods that extend a class, properties and assignable methods.

#include "fake_host.h"

namespace tarvo::host {
namespace {

using fake::Seen;
using fake::seen;

using Members = FakeHost;

TEST_F(Members, TakeTheirObjectFirst) {
    const Value sum = call_on(box(5), "add", 3);
    EXPECT_EQ(caller().get(sum, "number"), Value(8));
}

TEST_F(Members, AreOfTheirClassOnly) {
    EXPECT_EQ(refusal([&] { call_on(picture(), "Add", 3); }), "there is no method for picture.Add(integer)");
    EXPECT_EQ(refusal([&] { call_on(Nil{}, "Add", 3); }), "there is no method for nil.Add(integer)");
    EXPECT_EQ(refusal([&] { call_on(7, "Add", 3); }), "there is no method for integer.Add(integer)");
    EXPECT_EQ(refusal([&] { call("Add", box(5), 3); }), "there is no method for Add(FakeBox, integer)");
    EXPECT_EQ(refusal([&] { call_on(box(5), "Add", true); }),
              "no method takes FakeBox.Add(boolean); there is\n  FakeBox.Add(number as integer) as FakeBox");
}

// The entry that reads an object is declared with a double: it finds nil. The other one finds the factor zero.
TEST_F(Members, CrosswiseEntriesFindNilAndZero) {
    const ObjectRef self = box(5), other = box(3);
    EXPECT_EQ(call_on(self, "Multiply", 2.0), Value(Nil{}));
    EXPECT_EQ(seen, (Seen{"box_times_box", {self.handle(), nullptr}, {}}));
    const Value product = call_on(self, "Multiply", other);
    EXPECT_EQ(seen, (Seen{"box_times_double", {self.handle()}, {0}}));
    EXPECT_EQ(caller().get(product, "number"), Value(0));
}

using Extensions = FakeHost;

TEST_F(Extensions, TakeTheirObjectFirst) {
    const ObjectRef p = picture(), b = box(1);
    call_on(p, "Shift", b, 9);
    EXPECT_EQ(seen, (Seen{"picture_shift", {p.handle(), b.handle()}, {9}}));
    call_on(Nil{}, "Shift", Nil{}, 9);
    EXPECT_EQ(seen, (Seen{"picture_shift", {nullptr, nullptr}, {9}}));
}

// The same entry is registered as a global method without its object: there it gets all one place too early.
TEST_F(Extensions, TheirPlainTwinsTakeWhatIsDeclared) {
    const ObjectRef b = box(1);
    EXPECT_EQ(call("Shift", b, 0), Value(Nil{}));
    EXPECT_EQ(seen, (Seen{"picture_shift", {b.handle(), nullptr}, {0}}));
    EXPECT_EQ(refusal([&] { call("Shift", picture(), b, 9); }),
              "no method takes Shift(picture, FakeBox, integer); there is\n"
              "  Shift(box as FakeBox, by as integer) as picture");
    EXPECT_EQ(refusal([&] { call_on(b, "Shift", 9); }),
              "no method takes FakeBox.Shift(integer); there is\n"
              "  picture.Shift(box as FakeBox, by as integer) as picture");
}

TEST_F(Extensions, GlobalMethodsExtendTheirFirstParameter) {
    call_on(picture(), "Reach", 1);
    EXPECT_EQ(seen.entry, "by picture");
    call_on(box(1), "Reach", 1);
    EXPECT_EQ(seen.entry, "by box");
    call("Reach", box(1), 1);
    EXPECT_EQ(seen.entry, "by box");
    EXPECT_NE(refusal([&] { call_on(Nil{}, "Reach", 1); }).find("equally well"), std::string::npos);
    EXPECT_EQ(refusal([&] { call_on(picture(), "OnlyPicture"); }), "there is no method for picture.OnlyPicture()");
}

TEST_F(Extensions, ConvertTheirObject) {
    const ObjectRef p = picture();
    const Value b = caller().convert(p, type_named("FakeBox"));
    call_on(b, "OnPicture", 1);
    EXPECT_EQ(seen.entry, "by picture");
    call_on(b, "Shift", Nil{}, 2);
    EXPECT_EQ(seen, (Seen{"picture_shift", {p.handle(), nullptr}, {2}}));
}

using Properties = FakeHost;

TEST_F(Properties, AreReadWithTheirParameter) {
    const ObjectRef b = box(6);
    EXPECT_EQ(caller().get(b, "NUMBER"), Value(6));
    EXPECT_EQ(seen, (Seen{"box_number", {b.handle()}, {7}}));
    EXPECT_EQ(caller().get(b, "negative"), Value(-6));
    EXPECT_EQ(seen, (Seen{"box_number", {b.handle()}, {-2}}));
    EXPECT_EQ(caller().get(b, "half"), Value(3.0));
    EXPECT_EQ(caller().get(b, "image"), Value(Nil{}));
}

TEST_F(Properties, AreWrittenWithTheirParameter) {
    const ObjectRef b = box(6);
    caller().set(b, "Number", -4);
    EXPECT_EQ(seen, (Seen{"box_set_number", {b.handle()}, {7, -4}}));
    caller().set(b, "number", 8.75);
    EXPECT_EQ(caller().get(b, "number"), Value(8));
    caller().set(b, "secret", true);
    EXPECT_EQ(seen, (Seen{"box_set_secret", {b.handle()}, {3, 1}}));
}

TEST_F(Properties, GiveObjectsWithAReference) {
    const ObjectRef p = picture();
    const Value b = caller().convert(p, type_named("FakeBox"));
    const Value image = caller().get(b, "image");
    EXPECT_EQ(object_in(image), p);
    EXPECT_EQ(p->references(), 3);
}

TEST_F(Properties, OfClassExtensions) {
    const ObjectRef p = picture();
    EXPECT_EQ(caller().get(p, "area"), Value(42));
    EXPECT_EQ(seen, (Seen{"picture_area", {p.handle()}, {4}}));
}

TEST_F(Properties, AreRefusedInPlainWords) {
    const ObjectRef b = box(6);
    EXPECT_EQ(refusal([&] { caller().get(b, "area"); }), "FakeBox has no property area");
    EXPECT_EQ(refusal([&] { caller().get(Nil{}, "number"); }), "nil has no property number");
    EXPECT_EQ(refusal([&] { caller().get(b, "secret"); }), "FakeBox.secret cannot be read");
    EXPECT_EQ(refusal([&] { caller().set(b, "half", 1.0); }), "FakeBox.half is read-only");
    EXPECT_EQ(refusal([&] { caller().set(b, "number", true); }), "expected integer, found boolean");
    EXPECT_EQ(refusal([&] { caller().set(b, "none", true); }), "FakeBox has no property none");
}

class Assignable : public FakeHost {
protected:
    template <class... Values>
    void assign(const Value& self, std::string_view name, const Value& value, Values... values) {
        std::vector<Value> arguments{Value(values)...};
        caller().assign(self, name, arguments, value);
    }
};

TEST_F(Assignable, MethodsAreReadAndWritten) {
    const ObjectRef b = box(6);
    EXPECT_EQ(call_on(b, "Cell", 1, 2), Value(6.5));
    EXPECT_EQ(seen, (Seen{"box_cell", {b.handle()}, {1, 2}}));
    assign(b, "cell", 9.5, 1, -2);
    EXPECT_EQ(seen, (Seen{"box_set_cell", {b.handle()}, {1, -2, 9.5}}));
    assign(b, "Cell", 7, 0, 0);  // becomes a double
    EXPECT_EQ(call_on(b, "Cell", 0, 0), Value(7.5));
}

TEST_F(Assignable, MethodsMayExtendAClass) {
    assign(picture(), "Level", 3, 1);
    EXPECT_EQ(seen.entry, "by picture");
}

TEST_F(Assignable, OtherMethodsAreRefused) {
    const ObjectRef b = box(6);
    EXPECT_EQ(refusal([&] { assign(b, "Add", 1, 1); }), "FakeBox.Add(integer) cannot be assigned to");
    EXPECT_EQ(refusal([&] { assign(picture(), "WriteOnly", 1, 1); }),
              "picture.WriteOnly(integer) cannot be assigned to");
    EXPECT_EQ(refusal([&] { assign(b, "Cell", 1.5, 1); }),
              "no method takes FakeBox.Cell(integer); there is\n"
              "  FakeBox.Cell(i as integer, j as integer) as double");
    EXPECT_EQ(refusal([&] { assign(b, "Cell", true, 1, 1); }),
              "FakeBox.Cell(i as integer, j as integer) as double: expected double, found boolean");
}

TEST_F(Members, CallablesAreListedInOrder) {
    const auto& all = caller().callables();
    ASSERT_EQ(all.size(), host.registry().methods().size() + 6 + 1 + 2);
    EXPECT_EQ(all.front().declaration.name, "Mixed");
    EXPECT_TRUE(all.front().owner.empty());
    EXPECT_EQ(all[all.size() - 9].declaration.name, "Add");
    EXPECT_EQ(all[all.size() - 9].owner, "FakeBox");
    EXPECT_EQ(all.back().declaration.name, "Shift");
    EXPECT_EQ(all.back().owner, "picture");
}

}  // namespace
}  // namespace tarvo::host
