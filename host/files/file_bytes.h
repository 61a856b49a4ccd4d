#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tarvo::host {

// All of a file. Throws FileError, also for more than `most_bytes`; the message does not name the file.
std::vector<std::uint8_t> read_file(const std::string& path, std::size_t most_bytes = std::size_t{1} << 30);

// Makes or replaces the file as a whole: at no time is there a part of it under that name, and after an error nothing
// has changed. A symbolic link is followed; what exists and is no regular file is refused. Throws FileError as
// `read_file`.
void replace_file(const std::string& path, std::span<const std::uint8_t> bytes);

}  // namespace tarvo::host
