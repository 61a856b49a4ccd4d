#pragma once

// The files of the goldens: a PNG for people, and for every machine one list with the checksum of each picture.

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "session.h"

namespace tarvo::test {

std::filesystem::path golden_folder();
// The PNG of a case.
std::filesystem::path golden_picture(std::string_view name);

// The picture as PAM: equal for pictures that look alike, masks included.
std::vector<std::uint8_t> pam_of(const ObjectRef& picture);
// Of such a file, FNV-1a in 16 digits.
std::string checksum(const std::vector<std::uint8_t>& bytes);

using Checksums = std::map<std::string, std::string, std::less<>>;
Checksums read_checksums();
void write_checksums(const Checksums& checksums);

}  // namespace tarvo::test
