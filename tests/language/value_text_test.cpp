// Values as people read them.

#include "value_text.h"

#include <gtest/gtest.h>

#include "host.h"

namespace tarvo::language {
namespace {

using host::Value;

TEST(ValueText, OfPlainValues) {
    EXPECT_EQ(value_text(host::Nil{}), "nil");
    EXPECT_EQ(value_text(-7), "-7");
    EXPECT_EQ(value_text(0.1), "0.1");
    EXPECT_EQ(value_text(2.0), "2");
    EXPECT_EQ(value_text(true), "true");
    EXPECT_EQ(value_text(false), "false");
    EXPECT_EQ(value_text(host::Color{0x00ABCD}), "&c00ABCD");
    EXPECT_EQ(value_text(host::ObjectRef()), "nil");
}

TEST(ValueText, OfObjects) {
    host::Host host;
    EXPECT_EQ(value_text(host.new_picture({.width = 1, .height = 1})), "a picture");
    EXPECT_EQ(value_text(host.new_integer_array({1})), "a integer()");
    EXPECT_EQ(value_text(host.new_memory_block(3)), "a MemoryBlock of 3 bytes");
    EXPECT_EQ(value_text(host.new_string("plain")), "plain");
    EXPECT_EQ(value_text(host.new_string("\x1B[2J")), "a string of 4 bytes");
}

TEST(ValueText, LinesEndWithALineFeed) {
    host::Host host;
    EXPECT_EQ(value_text(host.new_string("a\rb")), "a\nb");
    EXPECT_EQ(value_text(host.new_string("a\r\nb")), "a\nb");
    EXPECT_EQ(value_text(host.new_string("a\nb\r")), "a\nb\n");
    EXPECT_EQ(value_text(host.new_string("\r\r\n")), "\n\n");
}

TEST(ValueText, OfDepths) {
    EXPECT_EQ(depth_text(1), "1 bit");
    EXPECT_EQ(depth_text(8), "8 bits");
}

}  // namespace
}  // namespace tarvo::language
