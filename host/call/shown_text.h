#pragma once

// Makes text from outside fit for messages, so that it moves no cursor, changes no colour and hides nothing in a
// terminal.

#include <string>
#include <string_view>

namespace tarvo::host {

// Returns the text as one line. Characters that control a terminal or turn the direction of writing, and bytes that are
// not UTF-8, are spelled out, as \x1B.
std::string shown(std::string_view text);
// Does the same but keeps line ends and tabs.
std::string shown_lines(std::string_view text);
// Returns the text as `shown` does, between quotes; a long one is cut.
std::string quoted(std::string_view text);
// Returns the first `most` bytes of a text, and what is missing of the last character.
std::string_view beginning(std::string_view text, std::size_t most);

constexpr bool is_continuation_byte(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Whether a text is UTF-8 without control characters other than line ends and tabs.
bool is_plain_text(std::string_view text);

}  // namespace tarvo::host
