#include "shown_text.h"

#include <gtest/gtest.h>

namespace tarvo::host {
namespace {

TEST(ShownText, PlainTextStays) {
    for (const char* text : {"", "F(1)", "\u00E4\u20AC", "\U0001F600", "\u00A0", "\u2026", "\u061B", "\u061D", "\u200D",
                             "\u2010", "\u2027", "\u202F", "\u2065", "\u206A"}) {
        EXPECT_EQ(shown(text), text);
        EXPECT_TRUE(is_plain_text(text)) << text;
    }
}

TEST(ShownText, WhatControlsATerminalIsSpelledOut) {
    EXPECT_EQ(shown("a\x1B[2J"), "a\\x1B[2J");
    EXPECT_EQ(shown(std::string_view("\0\n\t\r\x7F", 5)), "\\x00\\x0A\\x09\\x0D\\x7F");
    EXPECT_EQ(shown("\u0080\u009F"), "\\xC2\\x80\\xC2\\x9F");  // as one byte they would be controls
    EXPECT_EQ(shown("\u202Eabc\u2066\u200F\u2028"), "\\xE2\\x80\\xAEabc\\xE2\\x81\\xA6\\xE2\\x80\\x8F\\xE2\\x80\\xA8");
    for (const char* text : {"\x1B", "\x7F", "\u0085", "\u202E", "\u061C", "\u200E", "\u2069"})
        EXPECT_FALSE(is_plain_text(text)) << text;
}

TEST(ShownText, BytesThatAreNoCharactersAreSpelledOut) {
    EXPECT_EQ(shown("\x80"), "\\x80");
    EXPECT_EQ(shown("\xC3"), "\\xC3");
    EXPECT_EQ(shown("\xC3("), "\\xC3(");
    EXPECT_EQ(shown("\xC0\x8A"), "\\xC0\\x8A");                    // a line end, too long
    EXPECT_EQ(shown("\xE0\x80\x9B"), "\\xE0\\x80\\x9B");           // an escape, too long
    EXPECT_EQ(shown("\xED\xA0\x80"), "\\xED\\xA0\\x80");           // half of a pair
    EXPECT_EQ(shown("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");  // beyond the last
    EXPECT_FALSE(is_plain_text("\xE4"));
}

TEST(ShownText, LinesMayKeepTheirEnds) {
    EXPECT_EQ(shown_lines("a\n\tb\r\x1B"), "a\n\tb\\x0D\\x1B");
    EXPECT_TRUE(is_plain_text("a\r\n\tb"));
}

TEST(ShownText, LongTextsAreCutBehindACharacter) {
    EXPECT_EQ(host::quoted("a\"b"), "\"a\"b\"");
    EXPECT_EQ(host::quoted(std::string(40, 'x')), '"' + std::string(40, 'x') + '"');
    EXPECT_EQ(host::quoted(std::string(41, 'x')), '"' + std::string(40, 'x') + "...\"");
    EXPECT_EQ(beginning("a\u20ACb", 2), "a\u20AC");
    EXPECT_EQ(beginning("abc", 9), "abc");
}

}  // namespace
}  // namespace tarvo::host
