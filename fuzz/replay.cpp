// Gives a fuzz target every file of its corpus: replay FOLDER. It is an error to find none.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "fuzz_check.h"

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: replay FOLDER\n";
        return 2;
    }
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(argv[1]))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::ranges::sort(files);
    for (const fs::path& path : files) {
        std::cout << path.filename().string() << std::endl;  // the last line names the file that crashes
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::cout << files.size() << " files\n";
    return files.empty() ? 1 : 0;
}
