#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"

namespace tarvo::cli {

// How a run of the tool ended.
struct Ending {
    int status;  // negative: ended by that signal
    std::string out, err;
    std::size_t peak;  // the most memory it has had, bytes
};

// Tests that run the built tool, in a folder of their own.
class ToolTest : public testing::Test {
protected:
    Ending tool(std::vector<std::string> arguments) const;
    // Begins a run of the tool, or of that program; `wait` is to follow, and says how it ended.
    pid_t start(std::vector<std::string> words) const;
    Ending wait(pid_t process) const;
    // As `tool`, with a system's call that fails: "write 3 ENOSPC". True in `*happened` when it was made.
    Ending tool_with_fault(const std::string& fault, std::vector<std::string> arguments, bool* happened) const;
    // A line as people type it in a shell, in this folder; `tarvo` is the tool.
    Ending shell(const std::string& line) const;
    // The tool with the sample operations as its plugin, and its `apply`.
    Ending sample_tool(std::vector<std::string> arguments) const;
    Ending apply_sample(std::vector<std::string> arguments) const;

    const std::filesystem::path& folder() const { return folder_.path(); }
    std::string file(const std::string& name) const { return folder_.file(name); }
    bool exists(const std::string& name) const { return std::filesystem::exists(file(name)); }
    std::vector<std::string> entries() const;
    // A PPM file of these colours, 0x00RRGGBB.
    std::string ppm(const std::string& name, int width, int height, const std::vector<std::uint32_t>& colors) const;
    std::string text_file(const std::string& name, const std::string& bytes) const;
    // The colours of a picture file; depth and mask are seen by the tool's own words.
    static std::vector<std::uint32_t> colors_of(const std::string& path);
    static std::string bytes_of(const std::string& path);

private:
    Ending run(std::vector<std::string> words) const;

    test::TemporaryFolder folder_;
};

}  // namespace tarvo::cli
