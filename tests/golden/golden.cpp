#include "golden.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "picture_file.h"

namespace tarvo::test {
namespace {

std::filesystem::path list() { return golden_folder() / "checksums"; }

}  // namespace

std::filesystem::path golden_folder() { return TARVO_GOLDEN_PATH; }

std::filesystem::path golden_picture(std::string_view name) {
    return golden_folder() / "pictures" / (std::string(name) + ".png");
}

std::vector<std::uint8_t> pam_of(const ObjectRef& picture) {
    return host::encode_picture(pixels(picture), "golden.pam");
}

std::string checksum(const std::vector<std::uint8_t>& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const std::uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3;
    std::array<char, 17> digits = {};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
    return digits.data();
}

Checksums read_checksums() {
    std::ifstream file(list());
    Checksums all;
    for (std::string sum, name; file >> sum >> name;) all[name] = sum;
    return all;
}

void write_checksums(const Checksums& checksums) {
    std::ofstream file(list());
    for (const auto& [name, sum] : checksums) file << sum << "  " << name << "\n";
    if (!file.flush()) throw std::runtime_error("cannot write " + list().string());
}

}  // namespace tarvo::test
