#pragma once

// Names behind hashes, a line each.

#include <optional>
#include <string>
#include <string_view>

namespace tarvo::cli {

// "HASH  NAME" and a newline. As in the lines of sha256sum, a backslash in front says that the name has others in it
// for what would break the line: \n, \r and \\.
std::string hash_line(std::string_view hash, std::string_view name);

// The name that stands so in a line.
std::string escaped_name(std::string_view name);
// None where a backslash has something else behind it.
std::optional<std::string> plain_name(std::string_view escaped);

}  // namespace tarvo::cli
