// Writes all goldens anew.

#include <exception>
#include <iostream>

#include "cases.h"
#include "golden.h"
#include "picture_file.h"

using namespace tarvo;

namespace {

void write_goldens() {
    const auto folder = test::golden_folder() / "pictures";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    test::Checksums sums;
    for (const test::GoldenCase& each : test::golden_cases()) {
        test::Stage stage;
        const host::ObjectRef made = test::result_of(each, stage);
        if (!made) throw std::runtime_error("nothing came of " + std::string(each.name));
        host::write_picture_file(test::pixels(made), test::golden_picture(each.name).string());
        sums.emplace(each.name, test::checksum(test::pam_of(made)));
    }
    test::write_checksums(sums);
    std::cout << sums.size() << " goldens in " << folder.string() << "\n";
}

}  // namespace

int main() {
    try {
        write_goldens();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
