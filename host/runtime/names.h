#pragma once

// Names of the host's language: letters, digits and underscores, not beginning with a digit, compared without regard to
// case.

#include <string>
#include <string_view>

namespace tarvo::host {

constexpr char lower_case(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool begins_name(char c) { return (lower_case(c) >= 'a' && lower_case(c) <= 'z') || c == '_'; }
constexpr bool continues_name(char c) { return begins_name(c) || is_digit(c); }

// Returns the one spelling that stands for all spellings of a name.
std::string folded(std::string_view name);
bool same_name(std::string_view a, std::string_view b);

}  // namespace tarvo::host
