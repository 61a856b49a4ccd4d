// tarvo verify with manifests in which recipes stand above groups.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tool.h"

namespace tarvo::cli {
namespace {

using Json = nlohmann::json;

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

const std::string kFirstLine = "tarvo-manifest 1: SHA-256 of pixels, as tarvo hash prints it\n";
const std::string kAnyHash(64, '0');

class RecipesTest : public ToolTest {
protected:
    RecipesTest() {
        std::filesystem::create_directories(folder() / "now" / "sub");
        ppm("now/a.ppm", 4, 2, {1, 2, 3, 4, 5, 6, 7, 8});
        ppm("now/sub/b.ppm", 2, 2, {0x102030, 2, 3, 0xFFEEDD});
        text_file("twice.txt",
                  "# as large\nStretch(width * 2, height * 2)\n\n  AdjustContrast(nil, &c808080, 2, 2, 2)\r\n");
    }
    void list(const std::string& text) const { text_file("list", kFirstLine + text); }
    std::string manifest() const { return bytes_of(file("list")); }
    Ending verify(const std::string& options = "") const { return shell("tarvo verify list now " + options); }
    void record(const std::string& recipe) const {
        const Ending run = verify("--record --recipe '" + recipe + "'");
        ASSERT_EQ(run.status, 0) << run.err;
    }
    // The line of a manifest that lists what `apply` makes by these words.
    std::string line_of(const std::string& name, const std::string& words, const std::string& sides) const {
        const Ending made = shell("tarvo apply " + words + " -q -o made.png && tarvo hash made.png && rm made.png");
        EXPECT_EQ(made.status, 0) << made.err;
        return made.out.substr(0, 64) + "  " + sides + "  " + name + '\n';
    }
    std::string error_of(const std::string& options, int status) const {
        const Ending run = verify(options);
        EXPECT_EQ(run.status, status) << run.err;
        return run.err;
    }
};

TEST_F(RecipesTest, ListWhatApplyMakesOfTheFiles) {
    const Ending run = verify("--record --recipe @twice.txt");
    EXPECT_EQ(run.status, 0) << run.err;
    const std::string calls = " @ Stretch(width * 2, height * 2) @ AdjustContrast(nil, &c808080, 2, 2, 2)";
    EXPECT_EQ(run.out, "a.ppm" + calls + ": added\nsub/b.ppm" + calls + ": added\n2 listed\n");
    EXPECT_EQ(manifest(), kFirstLine +
                              "\n@ Stretch(width * 2, height * 2)\n@ AdjustContrast(nil, &c808080, 2, 2, 2)\n" +
                              line_of("a.ppm", "now/a.ppm @twice.txt", "8x4 rgb") +
                              line_of("sub/b.ppm", "now/sub/b.ppm @twice.txt", "4x4 rgb"));
    const Ending same = verify();
    EXPECT_EQ(same.status, 0) << same.err;
    EXPECT_EQ(same.out, "a.ppm" + calls + ": same\nsub/b.ppm" + calls + ": same\n2 same\n");
    EXPECT_EQ(verify("-q").out, "2 same\n");
}

TEST_F(RecipesTest, AnotherArgumentInTheRecipeShowsAsAChange) {
    record("AdjustContrast(nil, &c000000, 2, 2, 2)");
    ASSERT_EQ(shell("sed -i 's/2, 2, 2/2, 2, 3/' list").status, 0);
    const Ending run = verify();
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tarvo: list: the pictures are not as they are listed\n");
    EXPECT_EQ(run.out,
              "a.ppm @ AdjustContrast(nil, &c000000, 2, 2, 3): changed\n"
              "sub/b.ppm @ AdjustContrast(nil, &c000000, 2, 2, 3): changed\n2 changed\n");
    ASSERT_EQ(shell("sed -i 's/^@.*/@ Stretch(3, 1)/' list").status, 0);
    EXPECT_TRUE(contains(verify("-q").out, "a.ppm @ Stretch(3, 1): changed: 4 x 2 before and 3 x 1 now\n"));
    // What is right is taken, and the recipe stays as it is.
    EXPECT_EQ(verify("--update-all -q").out, "2 updated, 0 added, 0 removed, 0 as they were\n");
    EXPECT_EQ(manifest(), kFirstLine + "\n@ Stretch(3, 1)\n" +
                              line_of("a.ppm", "now/a.ppm 'Stretch(3, 1)'", "3x1 rgb") +
                              line_of("sub/b.ppm", "now/sub/b.ppm 'Stretch(3, 1)'", "3x1 rgb"));
}

// Whatever order groups and files come in.
TEST_F(RecipesTest, ManifestsHaveOneOrder) {
    const auto made_by = [&](const std::string& lines) {
        const Ending run = shell("set -e; rm -f list; " + lines);
        EXPECT_EQ(run.status, 0) << run.err;
        return manifest();
    };
    const std::string once = made_by(
        "tarvo verify list now --record; tarvo verify list now --add --recipe 'Stretch(3, 1)'; "
        "tarvo verify list now --add --recipe 'MakeGradient(4, 2, &c000000, &cFF00FF)'; "
        "tarvo verify list now --add --recipe 'Stretch(3, 1)' --recipe 'Downsample(1)'");
    EXPECT_EQ(
        made_by("rm -r now; mkdir -p now/sub; printf 'P6 2 2 255 \\020\\040\\060\\0\\0\\2\\0\\0\\3\\377\\356\\335' "
                ">now/sub/b.ppm; printf 'P6 4 2 255 \\0\\0\\1\\0\\0\\2\\0\\0\\3\\0\\0\\4\\0\\0\\5\\0\\0\\6\\0\\0\\7"
                "\\0\\0\\10' >now/a.ppm; "
                "tarvo verify list now --record --recipe 'Stretch(3, 1)' --recipe 'Downsample(1)'; "
                "tarvo verify list now --add --recipe 'MakeGradient(4, 2, &c000000, &cFF00FF)'; "
                "tarvo verify list now --add; tarvo verify list now --add --recipe ' Stretch(3, 1) '"),
        once);
    EXPECT_EQ(once, kFirstLine + line_of("a.ppm", "now/a.ppm 'Stretch(4, 2)'", "4x2 rgb") +
                        line_of("sub/b.ppm", "now/sub/b.ppm 'Stretch(2, 2)'", "2x2 rgb") +
                        "\n@ MakeGradient(4, 2, &c000000, &cFF00FF)\n" +
                        line_of("MakeGradient", "'MakeGradient(4, 2, &c000000, &cFF00FF)'", "4x2 rgb") +
                        "\n@ Stretch(3, 1)\n" + line_of("a.ppm", "now/a.ppm 'Stretch(3, 1)'", "3x1 rgb") +
                        line_of("sub/b.ppm", "now/sub/b.ppm 'Stretch(3, 1)'", "3x1 rgb") +
                        "\n@ Stretch(3, 1)\n@ Downsample(1)\n" +
                        line_of("a.ppm", "now/a.ppm 'Stretch(3, 1)' 'Downsample(1)'", "3x1 rgb") +
                        line_of("sub/b.ppm", "now/sub/b.ppm 'Stretch(3, 1)' 'Downsample(1)'", "3x1 rgb"));
    EXPECT_EQ(verify("-q").out, "7 same\n");
}

TEST_F(RecipesTest, ManifestsWithoutARecipeStayByteForByte) {
    // Of a program from before there were recipes.
    const std::string a =
        "3bd77a9a6dd6fa1e6b79c3be7e0a9ea3a8fb5c95be4be9a6ca5dd7cc4d9ce8a4  4x2 rgb tolerance=1:2  a.ppm\n";
    const std::string b = line_of("sub/b.ppm", "now/sub/b.ppm 'Stretch(2, 2)'", "2x2 rgb");
    list(a + b);
    EXPECT_EQ(verify("--update-all -q").out, "1 updated, 0 added, 0 removed, 1 as they were\n");
    EXPECT_EQ(manifest(), kFirstLine + line_of("a.ppm", "now/a.ppm 'Stretch(4, 2)'", "4x2 rgb tolerance=1:2") + b);
    const std::string before = manifest();
    EXPECT_EQ(verify("--update a.ppm -q").status, 0);
    EXPECT_EQ(manifest(), before);
    EXPECT_EQ(verify().out, "a.ppm: same\nsub/b.ppm: same\n2 same\n");
}

TEST_F(RecipesTest, EveryLineIsToldInItsGroup) {
    ASSERT_EQ(shell("tarvo verify list now --record; tarvo verify list now --add --recipe 'Stretch(3, 1)'").err, "");
    ppm("now/a.ppm", 4, 2, std::vector<std::uint32_t>(8, 9));
    ppm("now/c.ppm", 1, 1, {0});
    std::filesystem::remove(file("now/sub/b.ppm"));
    const Ending run = verify();
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out,
              "a.ppm: changed\nc.ppm: not listed\nsub/b.ppm: missing\na.ppm @ Stretch(3, 1): changed\n"
              "sub/b.ppm @ Stretch(3, 1): missing\n2 changed, 2 missing, 1 not listed\n");
}

TEST_F(RecipesTest, AFileIsListedThatStandsInAnyGroup) {
    record("Stretch(3, 1)");
    EXPECT_EQ(verify().status, 0);
    ppm("now/c.ppm", 1, 1, {0});
    EXPECT_EQ(verify("-q").out, "c.ppm: not listed\n2 same, 1 not listed\n");
    EXPECT_EQ(error_of("", 1), "tarvo: list: the pictures are not as they are listed\n");
}

// It has one line, and its name is no file's.
TEST_F(RecipesTest, MayMakeTheirPictureOfNothing) {
    const std::string recipe = "MakeGradient(4, 2, &c000000, &cFF00FF)";
    const Ending run = shell("mkdir empty; tarvo verify list empty --record --recipe '" + recipe + "'");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "MakeGradient @ " + recipe + ": added\n1 listed\n");
    EXPECT_EQ(manifest(), kFirstLine + "\n@ " + recipe + '\n' + line_of("MakeGradient", "'" + recipe + "'", "4x2 rgb"));
    ASSERT_EQ(shell("sed -i 's/MakeGradient$/a.ppm/' list").status, 0);
    EXPECT_EQ(shell("tarvo verify list empty").out, "a.ppm @ " + recipe + ": same\n1 same\n");
    // So a file of that name is not listed by it.
    EXPECT_EQ(verify("-q").out, "a.ppm: not listed\nsub/b.ppm: not listed\n1 same, 2 not listed\n");
    ASSERT_EQ(shell("sed -i 's/FF00FF/FF00FE/' list").status, 0);
    EXPECT_EQ(shell("tarvo verify list empty").status, 1);
    EXPECT_EQ(shell("tarvo verify list empty --update a.ppm -q").out,
              "1 updated, 0 added, 0 removed, 0 as they were\n");
    EXPECT_EQ(shell("tarvo verify list empty").status, 0);
    EXPECT_EQ(error_of("--update sub/b.ppm --recipe 'MakeGradient(4, 2, &c000000, &cFF00FE)'", 2),
              "tarvo: \"sub/b.ppm\" is not listed: the recipe makes its picture of nothing\n");
    // New files go to a group that takes files.
    EXPECT_EQ(verify("--update sub/b.ppm -q").out, "0 updated, 1 added, 0 removed, 1 as they were\n");
    EXPECT_TRUE(contains(manifest(), "rgb  sub/b.ppm\n\n@ MakeGradient"));
    EXPECT_EQ(verify("--update-all --recipe 'MakeGradient(4, 2, &c000000, &cFF00FE)' -q").out,
              "0 updated, 0 added, 0 removed, 2 as they were\n");
}

TEST_F(RecipesTest, GroupsAreAddedToAManifestThatIsThere) {
    record("Stretch(3, 1)");
    const std::string before = manifest();
    EXPECT_EQ(error_of("--record --recipe 'Stretch(5, 1)'", 3),
              "tarvo: list is there already; --update NAME... or --update-all change it\n");
    EXPECT_EQ(error_of("--add --recipe 'Stretch(3, 1)'", 3),
              "tarvo: list has a group with this recipe already; --update NAME... or --update-all change it\n");
    EXPECT_EQ(manifest(), before);
    EXPECT_EQ(verify("--add --recipe 'Stretch(5, 1)' -q").out, "0 updated, 2 added, 0 removed, 2 as they were\n");
    EXPECT_EQ(verify("--add -q").out, "0 updated, 2 added, 0 removed, 4 as they were\n");
    EXPECT_EQ(error_of("--add", 3),
              "tarvo: list has a group without a recipe already; --update NAME... or --update-all change it\n");
    EXPECT_EQ(verify("-q").out, "6 same\n");
    EXPECT_EQ(shell("tarvo verify none now --add --recipe 'Stretch(5, 1)'").status, 3);
    EXPECT_FALSE(exists("none"));
    EXPECT_EQ(shell("mkdir empty; tarvo verify none empty --record --recipe 'Stretch(5, 1)'").err,
              "tarvo: empty: there is no picture in it\n");
    EXPECT_FALSE(exists("none"));
}

TEST_F(RecipesTest, ANameIsUpdatedInEveryGroupUnlessOneIsTold) {
    ASSERT_EQ(
        shell("tarvo verify list now --record; tarvo verify list now --add --recipe 'Stretch(3, 1)'; tarvo verify "
              "list now --add --recipe 'Stretch(5, 1)'; sed -i '/3, 1/,/a.ppm/s/ rgb  a/ rgb tolerance=1:3  a/' list")
            .err,
        "");
    ppm("now/a.ppm", 4, 2, std::vector<std::uint32_t>(8, 9));
    const Ending one = verify("--update a.ppm --recipe 'Stretch(3, 1)'");
    EXPECT_EQ(one.out, "a.ppm @ Stretch(3, 1): updated\n1 updated, 0 added, 0 removed, 5 as they were\n");
    EXPECT_TRUE(contains(manifest(), "3x1 rgb tolerance=1:3  a.ppm\n"));
    EXPECT_EQ(verify("-q").out, "a.ppm: changed\na.ppm @ Stretch(5, 1): changed\n4 same, 2 changed\n");
    EXPECT_EQ(verify("--update ./a.ppm").out,
              "a.ppm: updated\na.ppm @ Stretch(5, 1): updated\n2 updated, 0 added, 0 removed, 4 as they were\n");
    EXPECT_EQ(verify("-q").out, "6 same\n");

    // Of several groups a new file goes to that without a recipe; or to the one that is told.
    ppm("now/c.ppm", 1, 1, {0});
    EXPECT_EQ(verify("--update c.ppm").out, "c.ppm: added\n0 updated, 1 added, 0 removed, 6 as they were\n");
    EXPECT_EQ(verify("--update c.ppm --recipe 'Stretch(5, 1)'").out,
              "c.ppm @ Stretch(5, 1): added\n0 updated, 1 added, 0 removed, 7 as they were\n");
    // What has gone goes everywhere, and a group without pictures goes too.
    ASSERT_EQ(shell("rm now/a.ppm now/c.ppm").status, 0);
    EXPECT_EQ(verify("--update-all -q").out, "0 updated, 0 added, 5 removed, 3 as they were\n");
    EXPECT_EQ(shell("rm now/sub/b.ppm; tarvo verify list now --update sub/b.ppm --recipe 'Stretch(3, 1)' -q").out,
              "0 updated, 0 added, 1 removed, 2 as they were\n");
    EXPECT_FALSE(contains(manifest(), "Stretch(3, 1)"));
    EXPECT_TRUE(contains(manifest(), "Stretch(5, 1)"));

    EXPECT_EQ(error_of("--update sub/b.ppm --recipe 'Stretch(3, 1)'", 2),
              "tarvo: list has no group with this recipe; --add makes one\n");
    EXPECT_EQ(error_of("--update-all --recipe 'Stretch(3, 1)'", 2),
              "tarvo: list has no group with this recipe; --add makes one\n");
    EXPECT_EQ(error_of("--update none.ppm", 2), "tarvo: \"none.ppm\" is neither listed in list nor a picture in now\n");
}

TEST_F(RecipesTest, NewFilesGoToTheOnlyGroup) {
    record("Stretch(3, 1)");
    ppm("now/c.ppm", 1, 1, {0});
    ppm("now/d.ppm", 1, 1, {0});
    EXPECT_EQ(verify("--update c.ppm").out,
              "c.ppm @ Stretch(3, 1): added\n0 updated, 1 added, 0 removed, 2 as they were\n");
    EXPECT_EQ(verify("--update-all").out,
              "d.ppm @ Stretch(3, 1): added\n0 updated, 1 added, 0 removed, 3 as they were\n");
    EXPECT_EQ(verify().status, 0);
    // Of several to the one that is told.
    EXPECT_EQ(verify("--add --recipe 'Stretch(5, 1)'").status, 0);
    ppm("now/e.ppm", 1, 1, {0});
    EXPECT_EQ(verify("--update-all --recipe 'Stretch(3, 1)'").out,
              "e.ppm @ Stretch(3, 1): added\n0 updated, 1 added, 0 removed, 8 as they were\n");
}

TEST_F(RecipesTest, ACallThatFailsOnAPictureIsAFinding) {
    record("Stretch(8 / (height - 1), 1)");
    ASSERT_EQ(shell("tarvo verify list now --add --recipe 'FreeRotateByShear(100 * (width - 1), &c000000)'").err, "");
    const std::string before = manifest();
    ppm("now/sub/b.ppm", 1, 1, {7});
    ppm("now/a.ppm", 9, 2, std::vector<std::uint32_t>(18, 7));
    const Ending run = verify();
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(
        run.out,
        "a.ppm @ FreeRotateByShear(100 * (width - 1), &c000000): changed: there is no picture now: "
        "TRV_FreeRotateByShear: error 31: Rotate Error: \"rotation\" parameter is out of bounds\n"
        "    rotation is 800 degrees, allowed is 0 to below 360\n"
        "sub/b.ppm @ FreeRotateByShear(100 * (width - 1), &c000000): changed: 3 x 3 before and 1 x 1 now\n"
        "a.ppm @ Stretch(8 / (height - 1), 1): changed\n"
        "sub/b.ppm @ Stretch(8 / (height - 1), 1): changed: there is no picture now: TRV_Stretch: division by zero\n"
        "  Stretch(8 / (height - 1), 1)\n            ^\n4 changed\n");
    // Nothing is taken then.
    EXPECT_TRUE(contains(error_of("--update-all", 1),
                         "tarvo: a.ppm @ FreeRotateByShear(100 * (width - 1), &c000000): "
                         "TRV_FreeRotateByShear: error 31"));
    EXPECT_EQ(manifest(), before);
    const Ending recorded = shell("tarvo verify new now --record --recipe 'Stretch(8 / (height - 1), 1)'");
    EXPECT_EQ(recorded.status, 1);
    EXPECT_TRUE(
        contains(recorded.err, "tarvo: sub/b.ppm @ Stretch(8 / (height - 1), 1): TRV_Stretch: division by zero"));
    EXPECT_FALSE(exists("new"));
}

TEST_F(RecipesTest, FilesThatCannotBeReadAreUnreadableInEveryGroup) {
    ppm("lid.ppm", 1, 1, {0});
    record("Composite(lid.ppm, 0.5, 0, 0)");
    text_file("now/a.ppm", "no picture");
    const Ending run = verify();
    EXPECT_EQ(run.status, 3);
    EXPECT_TRUE(contains(run.out, "a.ppm @ Composite(lid.ppm, 0.5, 0, 0): unreadable: now/a.ppm: ")) << run.out;
    EXPECT_EQ(run.err, "tarvo: list: 1 picture cannot be read\n");
    EXPECT_TRUE(error_of("--update-all", 3).starts_with("tarvo: now/a.ppm: "));
    // Also those that calls name.
    std::filesystem::remove(file("lid.ppm"));
    EXPECT_TRUE(contains(verify().out, "sub/b.ppm @ Composite(lid.ppm, 0.5, 0, 0): unreadable: "));
    EXPECT_EQ(verify().status, 3);
}

TEST_F(RecipesTest, LimitsHoldForWhatIsMade) {
    record("Stretch(10, 10)");
    EXPECT_EQ(verify("--max-pixels 100").status, 0);
    const Ending run = verify("--max-pixels 99 -q");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(contains(run.out,
                         "a.ppm @ Stretch(10, 10): changed: there is no picture now: TRV_Stretch gave no result; "
                         "the host made no room for it: a picture of 10 x 10 pixels, 32 bits: the limit is 99 "
                         "pixels (--max-pixels)\n"));
    EXPECT_TRUE(contains(verify("--max-memory 431 -q").out, "the limit is 431 (--max-memory)"));
}

TEST_F(RecipesTest, LossesAreTold) {
    text_file("now/a.ppm", std::string("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n") +
                               std::string("\1\2\3\x7F", 4));
    const std::string note = "note: a.ppm @ Downsample(1): TRV_Downsample: the result has no mask\n";
    const Ending run = verify("--record --recipe 'Downsample(1)' -q");
    EXPECT_EQ(run.err, note);
    EXPECT_TRUE(contains(manifest(), "  1x1 rgb  a.ppm\n"));
    EXPECT_EQ(verify("-q").err, note);
}

TEST_F(RecipesTest, WhatCallsAnswerIsNotTold) {
    record("RowBytes()");
    const Ending run = verify();
    EXPECT_EQ(run.out, "a.ppm @ RowBytes(): same\nsub/b.ppm @ RowBytes(): same\n2 same\n");
    EXPECT_EQ(run.err, "");
}

TEST_F(RecipesTest, MasksAreSeen) {
    const std::string pam = "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
    text_file("now/a.ppm", pam + "\1\2\3\xFF");
    record("AdjustContrast(nil, &c808080, 1, 1, 1)");
    EXPECT_TRUE(contains(manifest(), "  1x1 rgba  a.ppm\n"));
    ppm("now/a.ppm", 1, 1, {0x010203});
    EXPECT_TRUE(contains(verify("-q").out, "changed: it has no mask now\n"));
}

// What was made then may have any name, since it is known by its pixels; the files' own have theirs.
TEST_F(RecipesTest, ExpectedPicturesAreFoundByTheirPixels) {
    ASSERT_EQ(shell("tarvo verify list now --record; tarvo verify list now --add --recipe 'Stretch(3, 2)'").err, "");
    ASSERT_EQ(shell("cp -r now then; mkdir then/threes; echo none >then/threes/0.png; "
                    "tarvo apply -q now/a.ppm 'Stretch(3, 2)' -o then/threes/any.png")
                  .err,
              "");
    ppm("now/a.ppm", 4, 2, {1, 2, 3, 4, 5, 6, 7, 0x408});
    ppm("now/sub/b.ppm", 2, 2, {0x102030, 2, 3, 0});
    const Ending run = verify("--expected then --report page.html -q");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(
        run.out,
        "a.ppm: changed: 1 of 8 pixels differ, by up to 4; the first is (3, 1), #000008 before and #000408 now\n"
        "sub/b.ppm: changed: 1 of 4 pixels differ, by up to 255; the first is (1, 1), #FFEEDD before and #000000 now\n"
        "a.ppm @ Stretch(3, 2): changed: 1 of 6 pixels differ, by up to 3; the first is (2, 1), #000007 before and "
        "#000307 now\n"
        "sub/b.ppm @ Stretch(3, 2): changed: no picture in then is the one that is listed\n4 changed\n");
    const std::string page = bytes_of(file("page.html"));
    EXPECT_TRUE(contains(page, "<h2>a.ppm @ Stretch(3, 2)</h2>"));
    ASSERT_EQ(shell("sed '1,/<h2>a.ppm @/d' page.html | grep -o 'base64,[^\"]*' | cut -c8- | while read p; do "
                    "n=$((n + 1)); echo $p | base64 -d >p$n.png; done")
                  .err,
              "");
    ASSERT_EQ(shell("tarvo apply -q now/a.ppm 'Stretch(3, 2)' -o made.png").err, "");
    EXPECT_EQ(colors_of(file("p1.png")), colors_of(file("then/threes/any.png")));
    EXPECT_EQ(colors_of(file("p2.png")), colors_of(file("made.png")));
    EXPECT_EQ(colors_of(file("p3.png")), (std::vector<std::uint32_t>{0, 0, 0, 0, 0, 0x00FF00}));

    // Tolerances are measured so too.
    ASSERT_EQ(shell("sed -i '/Stretch/,$s/ rgb  a/ rgb tolerance=1:4  a/' list").status, 0);
    EXPECT_TRUE(
        contains(verify("--expected then -q").out, "a.ppm @ Stretch(3, 2): same within its tolerance: 1 of 6 "));
}

TEST_F(RecipesTest, LinesOfJsonHaveTheRecipe) {
    ASSERT_EQ(shell("tarvo verify list now --record; tarvo verify list now --add --recipe twice.txt").err, "");
    std::istringstream lines(verify("--json").out);
    std::vector<Json> all;
    for (std::string line; std::getline(lines, line);) all.push_back(Json::parse(line));
    ASSERT_EQ(all.size(), 5u);
    EXPECT_FALSE(all[0].contains("recipe"));
    EXPECT_EQ(all[2]["name"], "a.ppm");
    EXPECT_EQ(all[2]["result"], "same");
    EXPECT_EQ(all[2]["recipe"], Json({"Stretch(width * 2, height * 2)", "AdjustContrast(nil, &c808080, 2, 2, 2)"}));
    EXPECT_EQ(all[4]["summary"]["same"], 4);
}

TEST_F(RecipesTest, VerifyingThemWritesNothing) {
    ASSERT_EQ(shell("tarvo verify list now --record --recipe twice.txt").err, "");
    ppm("now/a.ppm", 1, 1, {0});
    const auto everything = [&] {
        return shell("find . -mindepth 1 ! -name 'tool.*' -printf '%p %s %i %T@\\n' | sort").out;
    };
    const std::string before = everything();
    EXPECT_EQ(verify("--expected now").status, 1);
    EXPECT_EQ(verify("--json").status, 1);
    EXPECT_EQ(everything(), before);
}

TEST_F(RecipesTest, OfACommandAreCheckedBeforeAnyWork) {
    EXPECT_TRUE(contains(error_of("--record --recipe 'Strech(3, 1)'", 2), "there is no operation \"Strech\""));
    EXPECT_TRUE(
        contains(error_of("--record --recipe twice.txt --recipe 'Stretch(3)'", 2), "tarvo: call 3, TRV_Stretch: "));
    EXPECT_TRUE(contains(error_of("--record --recipe none.txt", 3), "tarvo: none.txt: cannot be opened: "));
    EXPECT_EQ(error_of("--record --recipe '\nStretch(3, 1)'", 3).substr(0, 7), "tarvo: ");
    EXPECT_EQ(error_of("--record --recipe 'Stretch(3,\n1)'", 2),
              "tarvo: a call of a recipe stands in one line: \"Stretch(3,\\x0A1)\"\n");
    EXPECT_EQ(error_of("--recipe 'Stretch(3, 1)'", 2),
              "tarvo: --recipe is for --record, --add and --update: a manifest has recipes of its own\n");
    EXPECT_EQ(verify("--record --add").status, 2);
    EXPECT_EQ(verify("--add --update a.ppm").status, 2);
    EXPECT_EQ(verify("--add --update-all").status, 2);
    EXPECT_FALSE(exists("list"));
}

TEST_F(RecipesTest, OfAManifestAreCheckedLineByLine) {
    const auto error = [&](const std::string& text) {
        list(text);
        EXPECT_EQ(verify("--update-all").status, 3) << text;
        EXPECT_EQ(manifest(), kFirstLine + text);
        return error_of("", 3);
    };
    const std::string picture = kAnyHash + "  1x1 rgb  a.ppm\n";
    EXPECT_EQ(error("@ Stretch(3, 1)\n"), "tarvo: list: line 2 ends a recipe that has no pictures below it\n");
    EXPECT_EQ(error("@ Stretch(3, 1)\n\n@ Stretch(5, 1)\n" + picture),
              "tarvo: list: line 2 ends a recipe that has no pictures below it\n");
    EXPECT_EQ(error("@ Stretch(3, 1)\n" + picture + picture), "tarvo: list: line 4 has a name again: \"a.ppm\"\n");
    EXPECT_EQ(
        error("@ Stretch(3, 1)\n" + picture + "\n@ Stretch(5, 1)\n" + picture + "\n@  Stretch(3, 1) \r\n" + picture),
        "tarvo: list: line 8 has a recipe again: \"Stretch(3, 1)\"\n");
    EXPECT_EQ(error("# a comment\n@ Stretch(3, 1)\n# another\n@ Stretch(3)\n" + picture),
              "tarvo: list: line 5 has a wrong call: call 2, TRV_Stretch: missing: height\n"
              "    TRV_Stretch(width, height, [yield])\n  Stretch(3)\n  ^\n");
    EXPECT_TRUE(contains(error(picture + "@ Strech(3, 1)\n" + picture),
                         "list: line 3 has a wrong call: there is no operation"));
    EXPECT_EQ(error("@ MakeGradient(4, 2, &c000000, &cFF00FF)\n" + picture + kAnyHash + "  1x1 rgb  b\n"),
              "tarvo: list: line 4 is one too many: the recipe makes its picture of nothing, and has one\n");
    for (const std::string line : {"@", "@ ", "@\t", "@twice.txt", "@Stretch(3, 1)"})
        EXPECT_TRUE(contains(error(line + '\n' + picture), "list: line 2 is not @ CALL: \"")) << line;
    EXPECT_TRUE(contains(error("@ @twice.txt\n" + picture), "list: line 2 has a wrong call: "));
    EXPECT_TRUE(contains(error("@ Stretch(3, 1)\nno picture\n"), "list: line 3 is not HASH  "));
}

// Time and memory are in step with the manifest, also where every line repeats a long recipe.
TEST_F(RecipesTest, LongManifestsAreRead) {
    constexpr int kLines = 3000;
    std::string groups, calls, pictures;
    for (int i = 1; i <= kLines; ++i) {
        const std::string number = std::to_string(i);
        groups += "@ MakeGradient(" + number + ", 1, &c000000, &cFFFFFF)\n" + kAnyHash + "  1x1 rgb  g\n";
        calls += "@ Stretch(" + number + ", 1)\n";
        pictures += kAnyHash + "  1x1 rgb  " + number + ".ppm\n";
    }
    list(groups);
    EXPECT_TRUE(contains(verify("-q").out, "\n3000 changed, 2 not listed\n"));
    list(calls + pictures);
    const Ending run = verify("-q");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(contains(run.out, "\n3000 missing, 2 not listed\n"));
    EXPECT_LT(run.out.size(), std::size_t{kLines} * 400);
    list("@ Stretch(" + std::string(1000000, '(') + '\n' + pictures);
    EXPECT_LT(error_of("", 3).size(), 5000u);
}

}  // namespace
}  // namespace tarvo::cli
