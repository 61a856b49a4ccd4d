#include "conversion.h"

#include <gtest/gtest.h>

#include <limits>

#include "host.h"

namespace tarvo::host {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

TEST(Truncation, CutsTowardZeroAndStopsAtTheEnds) {
    EXPECT_EQ(truncated(2.9), 2);
    EXPECT_EQ(truncated(-2.9), -2);
    EXPECT_EQ(truncated(-0.5), 0);
    EXPECT_EQ(truncated(2147483646.5), kMost - 1);
    EXPECT_EQ(truncated(2147483647.5), kMost);
    EXPECT_EQ(truncated(-2147483647.5), kLeast + 1);
    EXPECT_EQ(truncated(-2147483648.5), kLeast);
    EXPECT_EQ(truncated(1e300), kMost);
    EXPECT_EQ(truncated(-1e300), kLeast);
    EXPECT_EQ(truncated(kInfinity), kMost);
    EXPECT_EQ(truncated(-kInfinity), kLeast);
    EXPECT_EQ(truncated(std::numeric_limits<double>::quiet_NaN()), kLeast);
}

// The fit of a value to integer, double, boolean, color, string and picture: e(xact), w(idened), l(oose) or -.
std::string fits_of(const Value& value) {
    std::string result;
    for (const char* type : {"integer", "double", "boolean", "color", "string", "picture"}) {
        const auto fitted = fit(value, type_named(type));
        result += !fitted ? '-' : fitted->fit == Fit::exact ? 'e' : fitted->fit == Fit::widened ? 'w' : 'l';
    }
    return result;
}

TEST(Fit, OfEveryValueToEveryType) {
    Host host;
    EXPECT_EQ(fits_of(1), "ew-l--");
    EXPECT_EQ(fits_of(1.0), "le----");
    EXPECT_EQ(fits_of(true), "--e---");
    EXPECT_EQ(fits_of(Color{1}), "l--e--");
    EXPECT_EQ(fits_of(Nil{}), "----le");
    EXPECT_EQ(fits_of(ObjectRef()), "----le");
    EXPECT_EQ(fits_of(host.new_string("a")), "----e-");
    EXPECT_EQ(fits_of(host.new_picture({.width = 1, .height = 1})), "-----e");
    EXPECT_EQ(fits_of(host.new_memory_block(1)), "------");
    EXPECT_EQ(fits_of(host.new_integer_array({1})), "------");
}

TEST(Fit, ConvertsTheValue) {
    EXPECT_EQ(fit(7, type_named("double"))->value, Value(7.0));
    EXPECT_EQ(fit(-1, type_named("color"))->value, Value(Color{0xFFFFFF}));
    EXPECT_EQ(fit(0x12345678, type_named("color"))->value, Value(Color{0x345678}));
    EXPECT_EQ(fit(Color{0xFFFFFF}, type_named("integer"))->value, Value(0xFFFFFF));
    EXPECT_EQ(fit(-3.7, type_named("integer"))->value, Value(-3));
    EXPECT_EQ(fit(ObjectRef(), type_named("picture"))->value, Value(Nil{}));
}

TEST(Fit, OfObjectsIsByWhatTheyAre) {
    Host host;
    EXPECT_TRUE(fit(host.new_memory_block(1), type_named("memoryblock")));
    EXPECT_TRUE(fit(host.new_folder_item("/a"), type_named("FolderItem")));
    EXPECT_TRUE(fit(host.new_screen(), type_named("Screen")));
    EXPECT_FALSE(fit(host.new_screen(), type_named("picture")));
}

TEST(Fit, OfArraysIsByTheirElements) {
    Host host;
    Type integers = type_named("integer"), doubles = type_named("double"), pictures = type_named("picture");
    integers.array = doubles.array = pictures.array = true;
    EXPECT_TRUE(fit(host.new_integer_array({}), integers));
    EXPECT_FALSE(fit(host.new_integer_array({}), doubles));
    EXPECT_FALSE(fit(host.new_string("1"), integers));
    EXPECT_FALSE(fit(host.new_picture({.width = 1, .height = 1}), pictures));
    EXPECT_FALSE(fit(1, integers));
    EXPECT_EQ(fit(Nil{}, integers)->fit, Fit::exact);
    Type strings = type_named("string");
    EXPECT_EQ(fit(Nil{}, strings)->fit, Fit::loose);
    strings.array = true;
    EXPECT_EQ(fit(Nil{}, strings)->fit, Fit::exact);
}

TEST(TypeName, IsWhatAProgramWouldWrite) {
    Host host;
    EXPECT_EQ(type_name(1), "integer");
    EXPECT_EQ(type_name(1.0), "double");
    EXPECT_EQ(type_name(true), "boolean");
    EXPECT_EQ(type_name(Color{}), "color");
    EXPECT_EQ(type_name(Nil{}), "nil");
    EXPECT_EQ(type_name(ObjectRef()), "nil");
    EXPECT_EQ(type_name(host.new_string("")), "string");
    EXPECT_EQ(type_name(host.new_picture({.width = 1, .height = 1})), "picture");
    EXPECT_EQ(type_name(host.new_integer_array({})), "integer()");
    EXPECT_EQ(type_name(host.new_memory_block(0)), "MemoryBlock");
    EXPECT_EQ(type_name(host.new_folder_item("/")), "FolderItem");
    EXPECT_EQ(type_name(host.new_screen()), "screen");
}

}  // namespace
}  // namespace tarvo::host
