// tarvo apply on many files.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "tool.h"
#include "watched.h"

namespace tarvo::cli {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Names = std::vector<std::string>;

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class BatchTest : public ToolTest {
protected:
    BatchTest() {
        fs::create_directories(folder() / "in" / "sub");
        for (int i = 1; i <= 4; ++i) ppm("in/" + std::to_string(i) + ".ppm", i, 1, std::vector<std::uint32_t>(i, 7));
    }
    Ending apply(const std::string& rest) const { return shell("tarvo apply " + rest); }
    Names names_in(const std::string& name) const {
        Names names;
        if (exists(name))
            for (const auto& entry : fs::recursive_directory_iterator(folder() / name))
                if (!entry.is_directory()) names.push_back(entry.path().lexically_relative(folder() / name).string());
        std::sort(names.begin(), names.end());
        return names;
    }
    int width_of(const std::string& name) const { return static_cast<int>(colors_of(file(name)).size()); }
    static std::vector<Json> json_in(const std::string& text) {
        std::istringstream lines(text);
        std::vector<Json> all;
        for (std::string line; std::getline(lines, line);) all.push_back(Json::parse(line));
        return all;
    }
};

TEST_F(BatchTest, ResultsKeepTheirNamesInAFolder) {
    const Ending run = apply("in/*.ppm 'Stretch(9, 1, 0)' --into out/new");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out,
              "in/1.ppm -> out/new/1.ppm: done\nin/2.ppm -> out/new/2.ppm: done\nin/3.ppm -> out/new/3.ppm: done\n"
              "in/4.ppm -> out/new/4.ppm: done\n4 done, 0 skipped, 0 failed\n");
    EXPECT_EQ(names_in("out/new"), (Names{"1.ppm", "2.ppm", "3.ppm", "4.ppm"}));
    EXPECT_EQ(width_of("out/new/3.ppm"), 9);
    EXPECT_EQ(apply("-q in/1.ppm in/2.ppm 'Stretch(9, 1, 0)' --into out/new").out, "");
}

// There is room for the stacks of some.
TEST_F(BatchTest, WhereNoMoreThreadsBeginThoseThatThereAreWillDo) {
    if (test::kAddressesWatched) GTEST_SKIP() << "the sanitizer's memory would count as well";
    for (int i = 1; i <= 40; ++i) ppm("in/sub/" + std::to_string(i) + ".ppm", 1, 1, {7});
    const Ending run = shell("ulimit -v 250000; tarvo apply --jobs 40 in/sub/*.ppm 'Stretch(2, 1)' --into out");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(names_in("out").size(), 40u);
}

TEST_F(BatchTest, NamesAreMadeByAPattern) {
    ppm("in/sub/9.ppm", 1, 1, {0});
    const Ending run = apply("in/1.ppm in/sub/9.ppm 'Stretch(2, 1, 0)' -o 'out/{dir}/{n}-{name}.{ext}.png'");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(names_in("out"), (Names{"in/1-1.ppm.png", "in/sub/2-9.ppm.png"}));
    // Also for a single file.
    EXPECT_EQ(apply("in/1.ppm 'Stretch(2, 1, 0)' -o '{name}x.png'").status, 0);
    EXPECT_TRUE(exists("1x.png"));
    // What has no place in a pattern stays as it is.
    EXPECT_EQ(apply("in/1.ppm 'Stretch(2, 1, 0)' -o '{other}.png'").status, 0);
    EXPECT_TRUE(exists("{other}.png"));
}

TEST_F(BatchTest, FilesAndCallsAreToldApart) {
    ppm("in/photo (1).ppm", 3, 1, {1, 2, 3});
    ppm("Trim(1)", 2, 1, {1, 2});
    EXPECT_EQ(apply("'in/photo (1).ppm' './Trim(1)' 'Stretch(5, 1, 0)' -o 'out/{n}.ppm'").status, 0);
    EXPECT_EQ(names_in("out"), (Names{"1.ppm", "2.ppm"}));
    EXPECT_EQ(apply("'Trim(1)' 'Stretch(5, 1, 0)' -o 'out/{name}.ppm'").status, 0);
    EXPECT_TRUE(exists("out/Trim(1).ppm"));
    // Behind the first call there are only calls.
    const Ending late = apply("in/1.ppm 'Stretch(5, 1, 0)' in/2.ppm --into out");
    EXPECT_EQ(late.status, 2);
    EXPECT_TRUE(holds(late.err, "call 2")) << late.err;
    EXPECT_EQ(apply("in/1.ppm in/2.ppm --into out").err, "tarvo: there is no call behind the file \"in/2.ppm\"\n");
    // Behind -- nothing is an option.
    fs::copy_file(file("in/1.ppm"), file("-1.ppm"));
    EXPECT_EQ(apply("--into out -- -1.ppm 'Stretch(5, 1, 0)'").status, 0);
    EXPECT_TRUE(exists("out/-1.ppm"));
}

TEST_F(BatchTest, RecipesHoldCalls) {
    text_file("recipe",
              "# twice as wide\n\n  Stretch(width * 2, height, 0)  \n# and again\nStretch(width * 2, height, 0)\r\n");
    EXPECT_EQ(apply("in/3.ppm @recipe 'Stretch(width + 1, 1, 0)' -o out.ppm").status, 0);
    EXPECT_EQ(width_of("out.ppm"), 13);
    EXPECT_EQ(apply("in/3.ppm in/2.ppm @recipe --into out").status, 0);
    EXPECT_EQ(width_of("out/2.ppm"), 8);
    EXPECT_EQ(apply("in/3.ppm @none -o out.ppm").status, 3);
    text_file("empty", "# nothing\n");
    EXPECT_EQ(apply("in/3.ppm @empty -o out.ppm").err, "tarvo: empty: there is no call in it\n");
}

TEST_F(BatchTest, NamesComeFromFilesAndPipes) {
    ppm("in/new\nline.ppm", 1, 1, {0});
    text_file("list", "in/1.ppm\n\nin/2.ppm\n");
    EXPECT_EQ(apply("'Stretch(5, 1, 0)' --files-from list --into a").status, 0);
    EXPECT_EQ(names_in("a"), (Names{"1.ppm", "2.ppm"}));
    EXPECT_EQ(apply("in/4.ppm 'Stretch(5, 1, 0)' --files-from - --into b <list").status, 0);
    EXPECT_EQ(names_in("b"), (Names{"1.ppm", "2.ppm", "4.ppm"}));
    EXPECT_EQ(shell("find in -name '*line*' -print0 | tarvo apply 'Stretch(5, 1, 0)' --files0-from - --into c").status,
              0);
    EXPECT_EQ(names_in("c"), (Names{"new\nline.ppm"}));
    EXPECT_EQ(apply("'Stretch(5, 1, 0)' --files-from none --into d").status, 3);
    // No file is no failure.
    const Ending none = apply("'Stretch(5, 1, 0)' --files-from /dev/null --into d");
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.out, "0 done, 0 skipped, 0 failed\n");
}

TEST_F(BatchTest, ClashesAreFoundBeforeAnyWork) {
    ppm("in/sub/1.ppm", 1, 1, {0});
    const auto error = [&](const std::string& rest) {
        const Ending run = apply(rest);
        EXPECT_EQ(run.status, 2) << rest;
        EXPECT_EQ(run.out, "");
        return run.err;
    };
    EXPECT_EQ(error("in/1.ppm in/sub/1.ppm 'Stretch(5, 1, 0)' --into out"),
              "tarvo: \"in/1.ppm\" and \"in/sub/1.ppm\" would both be written to \"out/1.ppm\"\n");
    EXPECT_EQ(error("in/1.ppm in/2.ppm 'Stretch(5, 1, 0)' -o out/x.ppm"),
              "tarvo: \"in/1.ppm\" and \"in/2.ppm\" would both be written to \"out/x.ppm\"\n");
    EXPECT_EQ(error("in/sub/1.ppm in/1.ppm 'Stretch(5, 1, 0)' -o 'in/{name}.ppm'"),
              "tarvo: the output of \"in/sub/1.ppm\" would replace the input \"in/1.ppm\"\n");
    EXPECT_EQ(error("in/1.ppm in/2.ppm 'Stretch(5, 1, 0)' --into in/sub/.."),
              "tarvo: the output of \"in/1.ppm\" would replace the input \"in/1.ppm\"; --in-place does that\n");
    // The same file by another name.
    ASSERT_EQ(shell("ln -s in other").status, 0);
    EXPECT_EQ(error("in/1.ppm in/2.ppm 'Stretch(5, 1, 0)' --into other"),
              "tarvo: the output of \"in/1.ppm\" would replace the input \"in/1.ppm\"; --in-place does that\n");
    EXPECT_EQ(error("in/1.ppm other/1.ppm 'Stretch(5, 1, 0)' --in-place"),
              "tarvo: \"other/1.ppm\" and \"in/1.ppm\" are one file\n");
    // A clash of another shard is one, too.
    EXPECT_EQ(error("in/1.ppm in/sub/1.ppm in/2.ppm 'Stretch(5, 1, 0)' --into out --shard 1/3"),
              "tarvo: \"in/1.ppm\" and \"in/sub/1.ppm\" would both be written to \"out/1.ppm\"\n");
    EXPECT_FALSE(exists("out"));
}

TEST_F(BatchTest, WrongUseIsTold) {
    for (const char* rest :
         {"in/1.ppm 'Stretch(5, 1, 0)' --into out -o x.ppm", "in/1.ppm 'Stretch(5, 1, 0)' --in-place -o x.ppm",
          "in/1.ppm 'Stretch(5, 1, 0)' --in-place --into out", "in/1.ppm 'Stretch(5, 1, 0)' --into out --jobs 0",
          "in/1.ppm 'Stretch(5, 1, 0)' --skip-existing", "in/1.ppm in/2.ppm 'Stretch(5, 1, 0)' -o 'out/{name}.bmp'",
          "in/1.ppm in/2.ppm 'Strech(5, 1, 0)' --into out"})
        EXPECT_EQ(apply(rest).status, 2) << rest;
    for (const char* shard : {"0/3", "4/3", "1", "1/", "/3", "1/3x", "1x3", "-1/3", "a/b"})
        EXPECT_EQ(apply("in/1.ppm 'Stretch(5, 1, 0)' --into out --shard=" + std::string(shard)).status, 2) << shard;
}

TEST_F(BatchTest, AFailureEndsItUnlessItIsToGoOn) {
    text_file("in/2.ppm", "no picture");
    const Ending ended = apply("in/*.ppm 'Stretch(5, 1, 0)' --into a --jobs 1");
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.out,
              "in/1.ppm -> a/1.ppm: done\nin/3.ppm -> a/3.ppm: skipped: not begun\nin/4.ppm -> a/4.ppm: skipped: not "
              "begun\n1 done, 2 skipped, 1 failed\n");
    EXPECT_EQ(names_in("a"), Names{"1.ppm"});
    EXPECT_TRUE(holds(ended.err, "tarvo: in/2.ppm: ")) << ended.err;
    EXPECT_TRUE(holds(ended.err, "tarvo: not all files were done\n"));
    const Ending gone_on = apply("in/*.ppm 'Stretch(5, 1, 0)' --into b --keep-going");
    EXPECT_EQ(gone_on.status, 1);
    EXPECT_TRUE(holds(gone_on.out, "3 done, 0 skipped, 1 failed\n"));
    EXPECT_EQ(names_in("b"), (Names{"1.ppm", "3.ppm", "4.ppm"}));
}

TEST_F(BatchTest, WhatIsThereCanBeLeftOut) {
    text_file("there.ppm", "mine");
    fs::create_directory(folder() / "out");
    fs::rename(file("there.ppm"), file("out/2.ppm"));
    const Ending run = apply("in/*.ppm 'Stretch(5, 1, 0)' --into out --skip-existing");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(holds(run.out, "in/2.ppm -> out/2.ppm: skipped: is there already\n"));
    EXPECT_TRUE(holds(run.out, "3 done, 1 skipped, 0 failed\n"));
    EXPECT_EQ(bytes_of(file("out/2.ppm")), "mine");
}

TEST_F(BatchTest, ADryRunWritesNothing) {
    const Ending run = apply("in/1.ppm in/2.ppm 'Stretch(5, 1, 0)' --into out --dry-run");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out,
              "in/1.ppm -> out/1.ppm: skipped: would be done\nin/2.ppm -> out/2.ppm: skipped: would be done\n"
              "0 done, 2 skipped, 0 failed\n");
    EXPECT_FALSE(exists("out"));
}

TEST_F(BatchTest, FilesCanBeReplacedInPlace) {
    EXPECT_EQ(apply("in/1.ppm in/2.ppm 'Stretch(9, 1, 0)' --in-place").status, 0);
    EXPECT_EQ(width_of("in/1.ppm"), 9);
    EXPECT_EQ(width_of("in/2.ppm"), 9);
    EXPECT_EQ(width_of("in/3.ppm"), 3);
}

TEST_F(BatchTest, ShardsAreDisjointAndWholeWhateverTheOrder) {
    Names all;
    for (const char* shard : {"1/3", "2/3", "3/3"}) {
        const std::string out = std::string("out") + shard[0];
        EXPECT_EQ(apply("in/1.ppm in/2.ppm in/3.ppm in/4.ppm 'Stretch(5, 1, 0)' --shard " + std::string(shard) +
                        " -o '" + out + "/{name}-{n}.ppm'")
                      .status,
                  0);
        const Names part = names_in(out);
        all.insert(all.end(), part.begin(), part.end());
        EXPECT_EQ(apply("in/4.ppm in/2.ppm in/1.ppm in/3.ppm 'Stretch(5, 1, 0)' --shard " + std::string(shard) +
                        " --into again" + shard[0])
                      .status,
                  0);
        Names again = names_in(std::string("again") + shard[0]);
        for (std::string& name : again) name = name.substr(0, 1) + '-' + name;
        EXPECT_EQ(again, part);
    }
    std::sort(all.begin(), all.end());
    // The number is that in the whole list.
    EXPECT_EQ(all, (Names{"1-1.ppm", "2-2.ppm", "3-3.ppm", "4-4.ppm"}));
}

TEST_F(BatchTest, ProgramsGetALineForEachFileInOrder) {
    text_file("in/3.ppm", "no picture");
    text_file("in/0.pam",
              "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" + std::string(4, '\1'));
    const Ending run =
        apply("in/0.pam in/*.ppm 'Stretch(5, 1, 0)' -o 'out/{name}.ppm' --json --keep-going --hash --jobs 3");
    EXPECT_EQ(run.status, 1);
    const std::vector<Json> lines = json_in(run.out);
    ASSERT_EQ(lines.size(), 6u) << run.out;
    for (std::size_t i = 0; i < 5; ++i) EXPECT_TRUE(holds(lines[i]["input"], std::to_string(i) + ".p"));
    const Json& second = lines[1];
    EXPECT_EQ(second["output"], "out/1.ppm");
    EXPECT_EQ(second["status"], "done");
    EXPECT_EQ(second["code"], 0);
    EXPECT_EQ(second["message"], "");
    EXPECT_EQ(second["width"], 5);
    EXPECT_EQ(second["height"], 1);
    EXPECT_EQ(second["losses"], Json::array());
    EXPECT_GT(second["milliseconds"], 0);
    EXPECT_EQ(second["sha256"], shell("tarvo hash out/1.ppm").out.substr(0, 64));
    EXPECT_EQ(lines[0]["losses"].size(), 1u) << "its mask";
    EXPECT_EQ(lines[3]["status"], "failed");
    EXPECT_TRUE(holds(lines[3]["message"], "in/3.ppm: "));
    EXPECT_EQ(lines[5], Json::parse(R"({"summary":{"done":4,"skipped":0,"failed":1}})"));
    EXPECT_EQ(json_in(apply("in/1.ppm 'Stretch(5, 1, 0)' --json").out)[0]["sha256"], nullptr);
}

TEST_F(BatchTest, OperationsThatFailHaveTheirCode) {
    const std::vector<Json> lines = json_in(apply("in/1.ppm in/2.ppm 'Stretch(0, 1, 0)' --json --keep-going").out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0]["status"], "failed");
    EXPECT_NE(lines[0]["code"], 0);
}

TEST_F(BatchTest, BytesAndLinesAreTheSameForAnyNumberOfJobs) {
    for (int i = 10; i < 60; ++i) ppm("in/" + std::to_string(i) + ".ppm", i, 2, std::vector<std::uint32_t>(2 * i, i));
    const auto run = [&](const std::string& jobs) {
        return apply("in/*.ppm 'Stretch(50, 40, 1)' -o '" + jobs + "/{name}.png' -q --jobs " + jobs).status;
    };
    for (const char* jobs : {"1", "2", "7"}) EXPECT_EQ(run(jobs), 0);
    EXPECT_EQ(shell("diff -r 1 2 && diff -r 1 7").out, "");
    EXPECT_EQ(names_in("7").size(), 54u);
    const std::string call = "in/*.ppm 'Stretch(50, 40, 1)' --dry-run --into out --jobs ";
    EXPECT_EQ(apply(call + "1").out, apply(call + "7").out);
}

TEST_F(BatchTest, MemoryDoesNotGrowWithTheNumberOfFiles) {
    if (test::kAddressesWatched) GTEST_SKIP() << "the sanitizer keeps what was given back";
    ppm("in/large.ppm", 600, 500, std::vector<std::uint32_t>(300000, 0x123456));
    const auto peak = [&](int count) {
        std::string list;
        for (int i = 0; i < count; ++i) {
            const std::string name = "in/many" + std::to_string(i) + ".ppm";
            if (!exists(name)) fs::create_hard_link(file("in/large.ppm"), file(name));
            list += file(name) + '\n';
        }
        text_file("list", list);
        const Ending run = tool({"apply", "-q", "--jobs", "2", "--files-from", file("list"), "-o",
                                 file("out/{name}.ppm"), "Stretch(300, 250, 0)"});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.peak;
    };
    const std::size_t few = peak(20);
    EXPECT_LT(peak(400), few + (std::size_t{6} << 20));
}

TEST_F(BatchTest, AnInterruptEndsItBehindWhatIsBegun) {
    std::string list;
    for (int i = 0; i < 300; ++i) {
        const std::string name = "in/many" + std::to_string(i) + ".ppm";
        if (i == 0)
            ppm(name, 900, 900, std::vector<std::uint32_t>(810000, 0x123456));
        else
            fs::create_hard_link(file("in/many0.ppm"), file(name));
        list += file(name) + '\n';
    }
    text_file("list", list);
    const pid_t process = start({TARVO_TOOL, "apply", "--jobs", "2", "--files-from", file("list"), "-o",
                                 file("out/{name}.png"), "Stretch(1800, 1800, 1)"});
    while (names_in("out").size() < 5) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ::kill(process, SIGINT);
    const Ending run = wait(process);
    EXPECT_EQ(run.status, 130);
    EXPECT_TRUE(holds(run.out, "skipped: not begun\n"));
    EXPECT_TRUE(holds(run.out, ", 0 failed\n")) << "the summary is printed";
    EXPECT_EQ(run.err, "tarvo: interrupted\n");
    // All that is there is whole, and nothing else.
    const Names made = names_in("out");
    EXPECT_LT(made.size(), 300u);
    for (const std::string& name : made) EXPECT_EQ(width_of("out/" + name), 1800 * 1800) << name;
    EXPECT_TRUE(holds(run.out, "\n" + std::to_string(made.size()) + " done, ")) << made.size();
}

TEST_F(BatchTest, ATerminalIsToldHowFarItIs) {
    const Ending run = shell("script -qec \"tarvo apply in/*.ppm 'Stretch(5, 1, 0)' --into out\" /dev/null");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(holds(run.out, "\r\033[K1 of 4, ") && holds(run.out, " a second, ") && holds(run.out, " s left"))
        << run.out;
    // Nobody else is.
    EXPECT_EQ(apply("in/*.ppm 'Stretch(5, 1, 0)' --into out").err, "");
}

TEST_F(BatchTest, PngFilesAreCompressedAsIsWished) {
    std::vector<std::uint32_t> colors(90000);
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const auto cell = static_cast<std::uint32_t>(i % 300 % 31 + i / 300 % 37 * 31);
        colors[i] = cell * cell * 0x9E3779B1u >> 8;
    }
    ppm("pattern.ppm", 300, 300, colors);
    const auto size = [&](const std::string& word) {
        const std::string name = word + ".png";
        EXPECT_EQ(shell("tarvo convert --compression " + word + " pattern.ppm -o " + name).status, 0);
        EXPECT_EQ(colors_of(file(name)), colors_of(file("pattern.ppm")));
        return fs::file_size(file(name));
    };
    EXPECT_LT(size("small"), size("fast"));
    EXPECT_EQ(size("normal"), [&] {
        EXPECT_EQ(shell("tarvo convert pattern.ppm -o usual.png").status, 0);
        return fs::file_size(file("usual.png"));
    }());
    EXPECT_EQ(shell("tarvo convert --compression tiny pattern.ppm -o x.png").status, 2);
}

TEST_F(BatchTest, HashesArePrintedBehindEachStep) {
    const Ending run = apply("-q --hash in/2.ppm 'Stretch(4, 1, 0)' 'Stretch(6, 1, 0)' -o out.ppm");
    std::istringstream lines(run.out);
    Names all;
    for (std::string line; std::getline(lines, line);) all.push_back(line);
    ASSERT_EQ(all.size(), 3u) << run.out;
    EXPECT_EQ(all[0] + '\n', shell("tarvo hash in/2.ppm").out);
    EXPECT_EQ(all[1].substr(64), "  TRV_Stretch");
    EXPECT_EQ(all[2].substr(0, 64), shell("tarvo hash out.ppm").out.substr(0, 64));
}

TEST_F(BatchTest, WhatANameLacksIsEmptyInAPattern) {
    fs::copy_file(file("in/1.ppm"), file("plain"));
    EXPECT_EQ(apply("plain in/2.ppm 'Stretch(2, 1, 0)' -o 'out/{dir}/{name}[{ext}].ppm'").status, 0);
    EXPECT_EQ(names_in("out"), (Names{"in/2[ppm].ppm", "plain[].ppm"}));
}

TEST_F(BatchTest, AFileMayBeThereTwiceInAShard) {
    EXPECT_EQ(apply("in/1.ppm in/1.ppm in/1.ppm 'Stretch(2, 1, 0)' -o 'out/{n}.ppm' --shard 2/3").status, 0);
    EXPECT_EQ(names_in("out"), Names{"2.ppm"});
}

TEST_F(BatchTest, NamesThatLeadNowhereFailByThemselves) {
    ASSERT_EQ(shell("ln -s loop loop").status, 0);
    const Ending run = apply("loop/1.ppm in/2.ppm 'Stretch(2, 1, 0)' --into out --keep-going");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(holds(run.err, "tarvo: loop/1.ppm: cannot be opened: ")) << run.err;
    EXPECT_EQ(names_in("out"), Names{"2.ppm"});
}

TEST_F(BatchTest, ALoneNameBehindAFileIsACallUnlessItIsAFile) {
    const Ending call = apply("in/1.ppm Stretch --into out");
    EXPECT_EQ(call.status, 2);
    EXPECT_TRUE(holds(call.err, "Stretch")) << call.err;
    EXPECT_FALSE(holds(call.err, "there is no call")) << call.err;
    fs::copy_file(file("in/1.ppm"), file("Stretch"));
    EXPECT_EQ(apply("in/1.ppm Stretch --into out").err, "tarvo: there is no call behind the file \"Stretch\"\n");
}

TEST_F(BatchTest, FoldersAreNoListsAndNoRecipes) {
    for (const char* rest : {"in/1.ppm @in -o out.ppm", "'Stretch(5, 1, 0)' --files-from in --into out"}) {
        const Ending run = apply(rest);
        EXPECT_EQ(run.status, 3) << rest;
        EXPECT_EQ(run.err, "tarvo: in: cannot be read\n");
    }
}

// With the file's name; programs get lines that are all of them records.
TEST_F(BatchTest, WhatCallsAnswerIsPrinted) {
    const Ending answers = apply("in/1.ppm in/2.ppm 'RowBytes()'");
    EXPECT_EQ(answers.status, 0) << answers.err;
    EXPECT_TRUE(holds(answers.out, "in/1.ppm: TRV_RowBytes = 4\nin/1.ppm: done\nin/2.ppm: TRV_RowBytes = 8\n"))
        << answers.out;
    EXPECT_EQ(json_in(apply("in/1.ppm in/2.ppm 'RowBytes()' --json").out).size(), 3u);
}

TEST_F(BatchTest, QuietOnesTellOnlyOfFailures) {
    const Ending run = apply("-q in/1.ppm in/2.ppm 'Stretch(0, 1, 0)' --into out --keep-going");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "0 done, 0 skipped, 2 failed\n");
    EXPECT_TRUE(run.err.starts_with("tarvo: in/1.ppm: TRV_Stretch: error ")) << run.err;
    EXPECT_TRUE(holds(run.err, "\ntarvo: in/2.ppm: TRV_Stretch: error ")) << run.err;
}

// Each line has the name of its file in front; message boxes and complaints are for quiet ones, too.
TEST_F(BatchTest, WhatOperationsTellHasTheNameOfTheFile) {
    const std::vector<std::string> files = {file("in/1.ppm"), file("in/2.ppm")};
    const auto sample = [&](const std::string& call, bool quiet) {
        std::vector<std::string> words = files;
        words.push_back(call);
        if (quiet) words.insert(words.begin(), "-q");
        return apply_sample(words);
    };
    const auto of_both = [&](const std::string& line) { return files[0] + line + files[1] + line; };
    for (const bool quiet : {false, true}) {
        EXPECT_EQ(sample("Show()", quiet).err, of_both(": note: look here\n"));
        const std::string complaints = sample("Misuse()", quiet).err;
        EXPECT_TRUE(complaints.starts_with(files[0] + ": warning: Misuse: ")) << complaints;
        EXPECT_TRUE(holds(complaints, '\n' + files[1] + ": warning: Misuse: ")) << complaints;
        const std::string defects = sample("SamePicture(9)", quiet).err;
        EXPECT_TRUE(defects.starts_with(files[0] + ": warning: SamePicture: error 9: ")) << defects;
        EXPECT_EQ(sample("ColorNumber(5)", quiet).err,
                  quiet ? "" : of_both(": note: ColorNumber: c: 5 is taken for &c000005\n"));
    }
}

// How long it takes is told by the first file, which comes out of a pipe after more than a second.
TEST_F(BatchTest, LongTimesAreToldInMinutesAndHours) {
    text_file("in/5.ppm", "no picture");
    const auto progress = [&](int files) {
        std::string list = "slow.ppm\n";
        for (int i = 1; i < files; ++i) list += "in/5.ppm\n";
        text_file("list", list);
        const Ending run = shell(
            "mkfifo slow.ppm; (exec 3>slow.ppm; sleep 1.1; cat in/1.ppm >&3) & "
            "script -qec \"tarvo apply 'Stretch(5, 1, 0)' --files-from list -o 'out/{n}.ppm' --jobs 1\" /dev/null; "
            "rm slow.ppm");
        const std::size_t begin = run.out.find("\r\033[K1 of " + std::to_string(files) + ", ");
        EXPECT_NE(begin, std::string::npos) << run.out.substr(0, 300);
        const std::string line = run.out.substr(std::min(begin, run.out.size()));
        return line.substr(0, line.find(" left"));
    };
    const std::string minutes = progress(200), hours = progress(8000);
    EXPECT_TRUE(holds(minutes, " a second, ") && holds(minutes, " min ") && minutes.ends_with(" s")) << minutes;
    EXPECT_TRUE(holds(hours, " h ") && hours.ends_with(" min")) << hours;
}

}  // namespace
}  // namespace tarvo::cli
