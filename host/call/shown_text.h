#pragma once

// Text from outside, fit for messages: it moves no cursor, changes no colour and hides nothing in a terminal.

#include <string>
#include <string_view>

namespace tarvo::host {

// In one line: characters that control a terminal or turn the direction of writing, and bytes that are no UTF-8, are
// spelled out, as \x1B.
std::string shown(std::string_view text);
// As `shown`, but line ends and tabs stay.
std::string shown_lines(std::string_view text);
// `shown` between quotes, cut when long.
std::string quoted(std::string_view text);
// The first bytes of a text, at least `most` of them unless it is shorter, cut behind a whole character.
std::string_view beginning(std::string_view text, std::size_t most);

constexpr bool is_continuation_byte(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// UTF-8 throughout, without control characters other than line ends and tabs.
bool is_plain_text(std::string_view text);

}  // namespace tarvo::host
