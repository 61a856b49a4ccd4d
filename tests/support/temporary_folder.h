#pragma once

// A folder for the files of one test; it goes with all that is in it.

#include <stdlib.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tarvo::test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tarvo-test-XXXXXX").string();
        if (!::mkdtemp(name.data())) throw std::runtime_error("no folder for the test");
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path_), {}));
    }

private:
    std::filesystem::path path_;
};

}  // namespace tarvo::test
