#include "tool.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "host.h"
#include "picture_file.h"
#include "pixels.h"

namespace tarvo::cli {

namespace fs = std::filesystem;

namespace {

// Where what the tool prints goes.
constexpr const char* kOut = "tool.out";
constexpr const char* kErr = "tool.err";

}  // namespace

pid_t ToolTest::start(std::vector<std::string> words) const {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, file(kOut).c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, file(kErr).c_str(), flags, 0600);
    pid_t process = 0;
    const int failed = posix_spawn(&process, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throw std::runtime_error(words[0] + " cannot be run");
    return process;
}

Ending ToolTest::wait(pid_t process) const {
    int status = 0;
    struct rusage used {};
    ::wait4(process, &status, 0, &used);
    Ending ending{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), bytes_of(file(kOut)),
                  bytes_of(file(kErr)), static_cast<std::size_t>(used.ru_maxrss) * 1024};
    fs::remove(file(kOut));
    fs::remove(file(kErr));
    return ending;
}

Ending ToolTest::run(std::vector<std::string> words) const { return wait(start(std::move(words))); }

Ending ToolTest::tool_with_fault(const std::string& fault, std::vector<std::string> arguments, bool* happened) const {
    const std::string sign = file("sign");
    const char* checker = std::getenv("ASAN_OPTIONS");  // which wants to come first, and need not
    arguments.insert(
        arguments.begin(),
        {"/usr/bin/env", "LD_PRELOAD=" TARVO_SYSTEM_FAULTS, "TARVO_FAULT=" + fault, "TARVO_FAULT_SIGN=" + sign,
         std::string("ASAN_OPTIONS=verify_asan_link_order=0:") + (checker ? checker : ""), TARVO_TOOL});
    Ending ending = run(std::move(arguments));
    *happened = fs::remove(sign);
    return ending;
}

Ending ToolTest::tool(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), TARVO_TOOL);
    return run(std::move(arguments));
}

Ending ToolTest::shell(const std::string& line) const {
    const std::string programs = fs::path(TARVO_TOOL).parent_path();
    return run({"/bin/sh", "-c", "cd \"$0\" && PATH=\"$1:$PATH\" && eval \"$2\"", folder(), programs, line});
}

Ending ToolTest::apply_sample(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "apply");
    return sample_tool(std::move(arguments));
}

Ending ToolTest::sample_tool(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), TARVO_SAMPLE_TOOL);
    return run(std::move(arguments));
}

std::vector<std::string> ToolTest::entries() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder())) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::string ToolTest::ppm(const std::string& name, int width, int height,
                          const std::vector<std::uint32_t>& colors) const {
    std::string bytes = "P6\n" + std::to_string(width) + ' ' + std::to_string(height) + "\n255\n";
    for (const std::uint32_t color : colors)
        for (const int shift : {16, 8, 0}) bytes += static_cast<char>(color >> shift & 255);
    return text_file(name, bytes);
}

std::string ToolTest::text_file(const std::string& name, const std::string& bytes) const {
    std::ofstream(file(name), std::ios::binary) << bytes;
    return file(name);
}

std::vector<std::uint32_t> ToolTest::colors_of(const std::string& path) {
    host::Host host;
    const host::ObjectRef read = host::read_picture_file(host, path);
    const auto& picture = dynamic_cast<const host::Picture&>(*read.get());
    std::vector<std::uint32_t> colors;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) colors.push_back(host::load_pixel(picture.row(y), x, 32));
    return colors;
}

std::string ToolTest::bytes_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tarvo::cli
