// What the tool does with files when something goes wrong: signals, limits of the system, failing calls, planted files.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

#include "tool.h"

namespace tarvo::cli {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

class CarefulFiles : public ToolTest {
protected:
    // Noise, which takes long to be compressed.
    std::string noise(int width, int height) const {
        std::mt19937 random(1);
        std::string bytes = "P6\n" + std::to_string(width) + ' ' + std::to_string(height) + "\n255\n";
        for (int i = 0; i < width * height * 3; ++i) bytes += static_cast<char>(random());
        return text_file("noise.ppm", bytes);
    }

    bool has_part() const {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder()))
            if (entry.path().filename().string().rfind(".tarvo-", 0) == 0) return true;
        return false;
    }

    // False after a while that nothing takes.
    bool part_comes() const {
        for (int i = 0; i < 60000; ++i) {
            if (has_part()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

    const std::string kOld = "the old file";
};

TEST_F(CarefulFiles, SignalsThatEndTheToolTakeThePartFileWithThem) {
    const std::string source = noise(1500, 1500);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const std::string target = text_file("out.png", kOld);
        const pid_t process = start({TARVO_TOOL, "convert", source, "-o", target});
        ASSERT_TRUE(part_comes());
        ::kill(process, signal);
        EXPECT_EQ(wait(process).status, -signal);
        EXPECT_EQ(entries(), (Names{"noise.ppm", "out.png"})) << signal;
        EXPECT_EQ(bytes_of(target), kOld);
    }
}

TEST_F(CarefulFiles, SignalsThatAreIgnoredStayIgnored) {
    const std::string source = noise(1000, 1000);
    const pid_t process = start(
        {"/bin/sh", "-c", "trap '' HUP; exec \"$0\" \"$@\"", TARVO_TOOL, "convert", source, "-o", file("out.png")});
    ASSERT_TRUE(part_comes());
    ::kill(process, SIGHUP);
    EXPECT_EQ(wait(process).status, 0);
    EXPECT_EQ(entries(), (Names{"noise.ppm", "out.png"}));
}

TEST_F(CarefulFiles, FilesLargerThanTheyMayBeAreErrors) {
    noise(300, 300);
    text_file("out.png", kOld);
    const Ending run = shell("ulimit -f 20; tarvo convert noise.ppm -o out.png");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "tarvo: out.png: cannot be written: File too large\n");
    EXPECT_EQ(bytes_of(file("out.png")), kOld);
    EXPECT_EQ(entries(), (Names{"noise.ppm", "out.png"}));
}

TEST_F(CarefulFiles, WhatIsNotKeptOfAnOldFileIsNoted) {
    const std::string source = ppm("in.ppm", 1, 1, {0x123456});
    const std::string target = text_file("out.ppm", kOld);
    fs::create_hard_link(target, file("other.ppm"));
    ::chmod(target.c_str(), 0444);
    const Ending run = tool({"convert", source, "-o", target});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "note: " + target + " had other names: they keep the old file\nnote: " + target +
                           " was read-only: it is replaced all the same\n");
    EXPECT_EQ(bytes_of(file("other.ppm")), kOld);
}

TEST_F(CarefulFiles, APipeThatNobodyWritesToIsToldOf) {
    const std::string black = ppm("black.ppm", 1, 1, {0}), out = file("out.ppm");
    const struct {
        const char* name;
        std::vector<std::string> words;
    } rows[] = {
        {"pipe.ppm", {TARVO_TOOL, "convert", file("pipe.ppm"), "-o", out}},
        {"pipe.trv", {TARVO_TOOL, "convert", file("pipe.trv"), "-o", out}},
        {"other.ppm", {TARVO_TOOL, "apply", "-q", black, "Add(\"" + file("other.ppm") + "\")", "-o", out}},
    };
    for (const auto& [name, words] : rows) {
        ASSERT_EQ(::mkfifo(file(name).c_str(), 0600), 0);
        const pid_t process = start(words);
        const std::string told = "note: " + file(name) + " is a pipe that nobody writes to: waiting\n";
        for (int i = 0; i < 60000 && bytes_of(file("tool.err")) != told; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        text_file(name, std::string_view(name) == "pipe.trv" ? std::string("\0\0\0\1\0\0\0\1\0\x20\0abc", 14)
                                                             : std::string("P6 1 1 255 abc"));
        const Ending run = wait(process);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, told);
        EXPECT_EQ(colors_of(out), std::vector<std::uint32_t>{0x616263});
    }
}

// The n-th call of each kind, of all that the tool makes: the old file or the new one, whole, and the status says
// which.
TEST_F(CarefulFiles, EveryFailingCallEndsWithTheRightStatus) {
    const std::string source = noise(200, 150);
    ASSERT_EQ(tool({"convert", source, "-o", file("new.ppm")}).status, 0);
    const std::string whole = bytes_of(file("new.ppm"));
    const struct {
        std::string call, error;
        int expected;  // status; -1: either, as the file says
    } rows[] = {
        {"open", "EIO", -1},       {"openat", "EIO", -1},     {"read", "EIO", 3},     {"write", "EIO", 3},
        {"write", "ENOSPC", 3},    {"fsync", "EIO", 3},       {"fsync", "ENOSPC", 3}, {"renameat", "EIO", 3},
        {"renameat", "ENOSPC", 3}, {"fchmod", "EIO", 3},      {"close", "EIO", -1},   {"close", "ENOSPC", -1},
        {"open", "EINTR", -1},     {"openat", "EINTR", 0},    {"read", "EINTR", 0},   {"write", "EINTR", 0},
        {"read", "short", 0},      {"write", "short", 0},     {"fsync", "EINTR", 0},  {"renameat", "EINTR", 0},
        {"fchmod", "EINTR", 0},    {"readlinkat", "EIO", -1},
    };
    for (const auto& row : rows) {
        int failures = 0, n = 0;
        for (bool happened = true; happened;) {
            const std::string fault = row.call + ' ' + std::to_string(++n) + ' ' + row.error;
            SCOPED_TRACE(fault);
            const std::string target = text_file("out.ppm", kOld);
            const Ending run = tool_with_fault(fault, {"convert", source, "-o", target}, &happened);
            const int expected = !happened ? 0 : row.expected >= 0 ? row.expected : run.status;
            EXPECT_EQ(run.status, expected) << run.err;
            EXPECT_EQ(run.err.empty(), run.status == 0) << run.err;
            EXPECT_TRUE(bytes_of(target) == (run.status == 0 ? whole : kOld));
            EXPECT_EQ(entries(), (Names{"new.ppm", "noise.ppm", "out.ppm"}));
            failures += run.status != 0;
        }
        EXPECT_GT(n, 1) << row.call;
        const bool some_must_fail = row.expected != 0 && row.error != "EINTR";
        EXPECT_EQ(failures > 0, some_must_fail) << row.call << ' ' << row.error;
    }
}

// Whoever can write where the tool is run could have it run his own code.
TEST_F(CarefulFiles, NoPluginIsLoadedWhereverOneIsPlanted) {
    for (const char* planted : {"libTarvoGraphics.so", "lib/libTarvoGraphics.so", "lib/tarvo/libTarvoGraphics.so",
                                "bin/libTarvoGraphics.so", "bin/libTarvoPlatform.so"}) {
        fs::create_directories(fs::path(file(planted)).parent_path());
        fs::copy_file(TARVO_PLANTED, file(planted));
    }
    fs::copy_file(TARVO_TOOL, file("bin/tarvo"));
    for (const char* line : {"tarvo list", "cd bin && tarvo list", "bin/tarvo list", "cd bin && ./tarvo list"}) {
        const Ending run = shell(line);
        EXPECT_EQ(run.status, 0) << line << ": " << run.err;
        EXPECT_EQ(run.out, tool({"list"}).out) << line;
    }
    EXPECT_EQ(shell("ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD=bin/libTarvoGraphics.so tarvo list").status, 99)
        << "it would be seen";
}

TEST_F(CarefulFiles, HelpThatCannotBeWrittenIsAnError) {
    for (const char* line : {"tarvo --help >/dev/full", "tarvo apply --help >/dev/full", "tarvo list >/dev/full"}) {
        const Ending run = shell(line);
        EXPECT_EQ(run.status, 3) << line;
        EXPECT_EQ(run.err, "tarvo: the output cannot be written\n") << line;
    }
    EXPECT_EQ(shell("tarvo --help").status, 0);
    EXPECT_EQ(shell("tarvo --nonsense >/dev/full").status, 2);
}

}  // namespace
}  // namespace tarvo::cli
