// tarvo hash and tarvo verify.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tool.h"

namespace tarvo::cli {
namespace {

using Json = nlohmann::json;

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class HashTest : public ToolTest {};

// The digest is sha256sum's, of the bytes that are promised.
TEST_F(HashTest, IsOfSidesAndPixels) {
    ppm("a.ppm", 2, 1, {0x010203, 0xFFFE00});
    const Ending run = shell("tarvo hash a.ppm; printf 'tarvo-pixels 1 2 1 3\\n\\1\\2\\3\\377\\376\\0' | sha256sum");
    std::istringstream words(run.out);
    std::string hash, name, expected;
    words >> hash >> name >> expected;
    EXPECT_EQ(run.out, hash + "  a.ppm\n" + hash + "  -\n");
    EXPECT_EQ(hash, expected);
}

TEST_F(HashTest, IsTheSameInEveryFormatAndOtherWithAMask) {
    ppm("a.ppm", 3, 2, {1, 2, 3, 4, 5, 6});
    text_file("a.pam", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" +
                           std::string("\0\0\0\xFF", 4));
    ASSERT_EQ(
        shell("tarvo convert a.ppm -o a.png; tarvo convert a.pam -o b.png; printf 'P6 1 1 255 \\0\\0\\0' >c.ppm").err,
        "");
    const auto hash = [&](const std::string& name) { return tool({"hash", file(name)}).out.substr(0, 64); };
    EXPECT_EQ(hash("a.ppm"), hash("a.png"));
    EXPECT_EQ(hash("a.pam"), hash("b.png"));
    EXPECT_NE(hash("b.png"), hash("c.ppm"));
    EXPECT_EQ(shell("tarvo hash b.png | cut -c-64; printf 'tarvo-pixels 1 1 1 4\\n\\0\\0\\0\\377' | sha256sum | cut "
                    "-c-64 >two; cat two")
                  .out,
              hash("b.png") + '\n' + hash("b.png") + '\n');
}

TEST_F(HashTest, EscapesNamesAsSha256sumDoes) {
    const std::string hash = tool({"hash", ppm("a.ppm", 1, 1, {0})}).out.substr(0, 64);
    ASSERT_EQ(shell("cp a.ppm 'new\nline\\.ppm'").status, 0);
    EXPECT_EQ(shell("tarvo hash 'new\nline\\.ppm'").out, '\\' + hash + "  new\\nline\\\\.ppm\n");
}

TEST_F(HashTest, EscapesCarriageReturns) {
    const std::string hash = tool({"hash", ppm("a.ppm", 1, 1, {0})}).out.substr(0, 64);
    ASSERT_EQ(shell("cp a.ppm \"$(printf 'one\\rline.ppm')\"").status, 0);
    EXPECT_EQ(shell("tarvo hash one*").out, '\\' + hash + "  one\\rline.ppm\n");
}

TEST_F(HashTest, GoesOnBehindAFileThatCannotBeRead) {
    ppm("a.ppm", 1, 1, {0});
    const Ending run = shell("tarvo hash none.ppm a.ppm");
    EXPECT_EQ(run.status, 3);
    EXPECT_TRUE(holds(run.out, "  a.ppm\n"));
    EXPECT_EQ(run.err,
              "tarvo: none.ppm: cannot be opened: No such file or directory\ntarvo: 1 of 2 files were not hashed\n");
}

class VerifyTest : public ToolTest {
protected:
    VerifyTest() {
        std::filesystem::create_directories(folder() / "now" / "sub");
        ppm("now/a.ppm", 4, 2, std::vector<std::uint32_t>(8, 0x102030));
        ppm("now/b.ppm", 2, 2, {1, 2, 3, 4});
        ppm("now/sub/c.ppm", 1, 1, {0xFFFFFF});
    }
    // Lists what is there, and keeps it as it is expected.
    void record() {
        const Ending run = shell("tarvo verify list now --record && cp -r now then");
        ASSERT_EQ(run.status, 0) << run.err;
    }
    // One pixel of a.ppm is another by so much of green; the number is at least 0.
    void change_by(int green) {
        std::vector<std::uint32_t> colors(8, 0x102030);
        colors[6] += static_cast<std::uint32_t>(green) << 8;
        ppm("now/a.ppm", 4, 2, colors);
    }
    std::string manifest() const { return bytes_of(file("list")); }
    Ending verify(const std::string& options = "") const { return shell("tarvo verify list now " + options); }
    std::vector<Json> json_lines() const {
        std::istringstream lines(verify("--expected then --json").out);
        std::vector<Json> all;
        for (std::string line; std::getline(lines, line);) all.push_back(Json::parse(line));
        return all;
    }
};

TEST_F(VerifyTest, RecordsEveryPictureInOrder) {
    text_file("now/notes.txt", "no picture");
    std::filesystem::create_directory(folder() / "now" / ".hidden");
    ppm("now/.hidden/d.ppm", 1, 1, {0});
    const Ending run = shell("tarvo verify list now --record");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "a.ppm: added\nb.ppm: added\nsub/c.ppm: added\n3 listed\n");
    const auto hash = [&](const std::string& name) { return tool({"hash", file(name)}).out.substr(0, 64); };
    EXPECT_EQ(manifest(), "tarvo-manifest 1: SHA-256 of pixels, as tarvo hash prints it\n" + hash("now/a.ppm") +
                              "  4x2 rgb  a.ppm\n" + hash("now/b.ppm") + "  2x2 rgb  b.ppm\n" + hash("now/sub/c.ppm") +
                              "  1x1 rgb  sub/c.ppm\n");
    EXPECT_EQ(verify().out, "a.ppm: same\nb.ppm: same\nsub/c.ppm: same\n3 same\n");
    EXPECT_EQ(verify("-q").out, "3 same\n");
    EXPECT_EQ(verify().status, 0);
}

TEST_F(VerifyTest, NeverReplacesAManifestByRecording) {
    text_file("list", "mine");
    const Ending run = shell("tarvo verify list now --record");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "tarvo: list is there already; --update NAME... or --update-all change it\n");
    EXPECT_EQ(manifest(), "mine");
    // Nor where a name leads nowhere.
    ASSERT_EQ(shell("ln -sf nowhere list").status, 0);
    EXPECT_EQ(shell("tarvo verify list now --record").status, 3);
    EXPECT_FALSE(exists("nowhere"));
    const Ending looped = shell("ln -s loop loop; tarvo verify loop/list now --record -q");
    EXPECT_EQ(looped.status, 3);
    EXPECT_TRUE(holds(looped.err, "loop/list: ")) << looped.err;
}

TEST_F(VerifyTest, TellsWhatIsChangedMissingAndNotListed) {
    record();
    change_by(5);
    std::filesystem::remove(file("now/b.ppm"));
    ppm("now/sub/d.ppm", 1, 1, {0});
    const Ending run = verify();
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out,
              "a.ppm: changed\nb.ppm: missing\nsub/c.ppm: same\nsub/d.ppm: not listed\n"
              "1 same, 1 changed, 1 missing, 1 not listed\n");
    EXPECT_EQ(run.err, "tarvo: list: the pictures are not as they are listed\n");
    EXPECT_EQ(verify("--expected then -q").out,
              "a.ppm: changed: 1 of 8 pixels differ, by up to 5; the first is (2, 1), #102030 before and #102530 now\n"
              "b.ppm: missing\nsub/d.ppm: not listed\n1 same, 1 changed, 1 missing, 1 not listed\n");
}

TEST_F(VerifyTest, EachOfTheFourFailsAlone) {
    record();
    const auto status_after = [&](const std::string& line) {
        EXPECT_EQ(shell("rm -r now; cp -r then now; " + line).status, 0);
        return verify().status;
    };
    EXPECT_EQ(status_after("true"), 0);
    EXPECT_EQ(status_after("cp now/b.ppm now/a.ppm"), 1);
    EXPECT_EQ(status_after("rm now/a.ppm"), 1);
    EXPECT_EQ(status_after("cp now/a.ppm now/new.ppm"), 1);
    EXPECT_EQ(status_after("echo no picture >now/a.ppm"), 3);
    EXPECT_EQ(status_after("echo no picture >now/new.png"), 3);
}

TEST_F(VerifyTest, TellsFilesThatCannotBeRead) {
    record();
    text_file("now/a.ppm", "no picture");
    const Ending run = verify();
    EXPECT_EQ(run.status, 3);
    EXPECT_TRUE(holds(run.out, "a.ppm: unreadable: now/a.ppm: ")) << run.out;
    EXPECT_EQ(shell("tarvo verify none now").status, 3);
    EXPECT_EQ(shell("tarvo verify list nowhere").status, 3);
}

TEST_F(VerifyTest, SidesAndMasksAreNeverTolerated) {
    record();
    ASSERT_EQ(
        shell("sed -i 's/ rgb  a/ rgb tolerance=1000:255  a/; s/ rgb  b/ rgb tolerance=1000:255  b/' list").status, 0);
    ppm("now/a.ppm", 2, 4, std::vector<std::uint32_t>(8, 0x102030));
    text_file("now/b.ppm", std::string("P7\nWIDTH 2\nHEIGHT 2\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n") +
                               std::string("\0\0\1\xFF\0\0\2\xFF\0\0\3\xFF\0\0\4\xFF", 16));
    const Ending run = verify("--expected then -q");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(
        holds(run.out, "a.ppm: changed: 4 x 2 before and 2 x 4 now\nb.ppm: changed: it has a mask now: 0 of 4 "))
        << run.out;
}

// Even where the hash is the picture's.
TEST_F(VerifyTest, SidesAndKindAreComparedToo) {
    record();
    ASSERT_EQ(shell("sed -i 's/4x2 rgb/5x2 rgb/; s/2x2 rgb/2x3 rgb/; s/1x1 rgb/1x1 rgba/' list").status, 0);
    EXPECT_EQ(verify().out,
              "a.ppm: changed: 5 x 2 before and 4 x 2 now\nb.ppm: changed: 2 x 3 before and 2 x 2 now\n"
              "sub/c.ppm: changed: it has no mask now\n3 changed\n");
}

TEST_F(VerifyTest, ManifestsThatCannotBeReadToTheirEndAreTold) {
    const std::string list = text_file("list", "tarvo-manifest 1\n" + std::string(100000, '#'));
    bool happened = false;
    const Ending run = tool_with_fault("read 2 EIO", {"verify", list, file("now")}, &happened);
    EXPECT_TRUE(happened);
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "tarvo: " + list + ": cannot be read\n");
}

TEST_F(VerifyTest, TolerancesStandInTheManifestAndAreCounted) {
    record();
    ASSERT_EQ(shell("sed -i 's/ rgb  a/ rgb tolerance=1:3  a/' list").status, 0);
    EXPECT_EQ(verify("-q").out, "3 same\n");
    change_by(3);
    const Ending tolerated = verify("--expected then -q");
    EXPECT_EQ(tolerated.status, 0);
    EXPECT_EQ(tolerated.out,
              "a.ppm: same within its tolerance: 1 of 8 pixels differ, by up to 3; the first is (2, 1), #102030 before "
              "and #102330 now\n2 same, 1 same within its tolerance\n");
    // Without the pictures as they were there is nothing to measure by.
    EXPECT_EQ(verify("-q").out, "a.ppm: changed: its tolerance needs --expected\n2 same, 1 changed\n");
    change_by(4);
    EXPECT_EQ(verify("--expected then").status, 1);
    ASSERT_EQ(shell("sed -i 's/tolerance=1:3/tolerance=0:9/' list").status, 0);
    EXPECT_EQ(verify("--expected then").status, 1);
    // A tolerance is one of the picture that is listed, not of any that is there.
    ASSERT_EQ(shell("sed -i 's/tolerance=0:9/tolerance=8:255/' list; cp now/a.ppm then").status, 0);
    EXPECT_EQ(verify("--expected then -q").out,
              "a.ppm: changed: the picture in then is not the one that is listed\n2 same, 1 changed\n");
}

TEST_F(VerifyTest, UpdatesWhatIsNamedAlone) {
    record();
    ASSERT_EQ(shell("sed -i 's/ rgb  a/ rgb tolerance=1:3  a/' list").status, 0);
    change_by(9);
    ppm("now/b.ppm", 1, 1, {7});
    ppm("now/new.ppm", 1, 1, {7});
    const Ending run = verify("--update a.ppm ./new.ppm");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "a.ppm: updated\nnew.ppm: added\n1 updated, 1 added, 0 removed, 2 as they were\n");
    EXPECT_EQ(verify("-q").out, "b.ppm: changed: 2 x 2 before and 1 x 1 now\n3 same, 1 changed\n");
    EXPECT_TRUE(holds(manifest(), "4x2 rgb tolerance=1:3  a.ppm\n"));

    const std::string before = manifest();
    const Ending unknown = verify("--update b.ppm nothing.ppm");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err, "tarvo: \"nothing.ppm\" is neither listed in list nor a picture in now\n");
    EXPECT_EQ(manifest(), before);
}

TEST_F(VerifyTest, UpdatesAll) {
    record();
    change_by(9);
    std::filesystem::remove(file("now/b.ppm"));
    ASSERT_EQ(shell("chmod 640 list").status, 0);
    EXPECT_EQ(verify("--update-all").out,
              "a.ppm: updated\nb.ppm: removed\n1 updated, 0 added, 1 removed, 1 as they were\n");
    EXPECT_EQ(verify().status, 0);
    EXPECT_EQ(shell("stat -c %a list").out, "640\n");
    EXPECT_EQ(entries(), (std::vector<std::string>{"list", "now", "then"}));
    // What cannot be read changes nothing.
    const std::string before = manifest();
    text_file("now/a.ppm", "no picture");
    EXPECT_EQ(verify("--update-all").status, 3);
    EXPECT_EQ(manifest(), before);
}

// What is listed by hand is there as long as the file is, whatever it is called.
TEST_F(VerifyTest, ListedNamesMayEndAsTheyLike) {
    ASSERT_EQ(
        shell("mv now/b.ppm now/b.data; tarvo verify list now --record; sed -n 's/ a.ppm/ b.data/p' list >>list").err,
        "");
    EXPECT_EQ(verify("--update-all").out, "b.data: updated\n1 updated, 0 added, 0 removed, 2 as they were\n");
    EXPECT_EQ(verify("-q").out, "3 same\n");
    std::filesystem::remove(file("now/b.data"));
    EXPECT_EQ(verify("--update-all -q").out, "0 updated, 0 added, 1 removed, 2 as they were\n");
}

// As pictures are: through links, and with a note of what is not kept.
TEST_F(VerifyTest, ManifestsAndReportsAreReplacedAsPicturesAre) {
    record();
    change_by(9);
    ASSERT_EQ(shell("mkdir far; mv list far/; ln -s far/list list; chmod 444 far/list; ln far/list far/same").err, "");
    const std::string before = bytes_of(file("far/same"));
    const Ending updated = verify("--update a.ppm");
    EXPECT_EQ(updated.status, 0);
    EXPECT_EQ(updated.err,
              "note: list had other names: they keep the old file\n"
              "note: list was read-only: it is replaced all the same\n");
    EXPECT_TRUE(std::filesystem::is_symlink(file("list")));
    EXPECT_EQ(bytes_of(file("far/same")), before);
    EXPECT_NE(manifest(), before);
    EXPECT_EQ(shell("stat -c %a far/list; ls far").out, "444\nlist\nsame\n");

    text_file("far/page", "old");
    ASSERT_EQ(shell("ln -s far/page page; ln far/page far/old").err, "");
    EXPECT_EQ(verify("--expected then --report page").err, "note: page had other names: they keep the old file\n");
    EXPECT_TRUE(std::filesystem::is_symlink(file("page")));
    EXPECT_TRUE(holds(bytes_of(file("far/page")), "</html>"));
    EXPECT_EQ(bytes_of(file("far/old")), "old");
    EXPECT_EQ(entries(), (std::vector<std::string>{"far", "list", "now", "page", "then"}));
}

TEST_F(VerifyTest, VerifyingWritesNothing) {
    record();
    change_by(9);
    const std::string before = manifest();
    verify("--expected then");
    EXPECT_EQ(manifest(), before);
    EXPECT_EQ(entries(), (std::vector<std::string>{"list", "now", "then"}));
}

TEST_F(VerifyTest, ManifestsAreCheckedLineByLine) {
    const auto error = [&](const std::string& text) {
        text_file("list", text);
        const Ending run = verify();
        EXPECT_EQ(run.status, 3) << text;
        return run.err;
    };
    const std::string first = "tarvo-manifest 1\n", hash(64, '0');
    EXPECT_EQ(error(""), "tarvo: list: is no manifest\n");
    EXPECT_TRUE(holds(error("tarvo-manifest 2\n"), "its first line is \"tarvo-manifest 2\", not \"tarvo-manifest 1\""));
    for (const std::string& line :
         {hash + "  1x1  a", hash + " 1x1 rgb  a", hash + "  1x1 rgb", hash + "  1x1 rgb  ", hash + "  1x rgb  a",
          hash + "  1x1 cmyk  a", hash + "  1x1 rgb tolerance=1  a", hash + "  1x1 rgb tolerance=1:256  a",
          hash + "  1x1 rgb tolerance=-1:2  a", hash + "  1x1 rgb more  a", hash + "  1x1 rgb  a\\x",
          hash + "  1x1 rgb  a\\", hash.substr(1) + "  1x1 rgb  a", hash.substr(1),
          'A' + hash.substr(1) + "  1x1 rgb  a", hash + "  99999x1 rgb  a"})
        EXPECT_TRUE(holds(error(first + "# a comment\n\n" + line + "\n"), "list: line 4 is not HASH  ")) << line;
    EXPECT_TRUE(
        holds(error(first + hash + "  1x1 rgb  a\n" + hash + "  1x1 rgba  a\n"), "line 3 has a name again: \"a\""));
}

TEST_F(VerifyTest, TellsProgramsInLinesOfJson) {
    record();
    change_by(5);
    std::filesystem::remove(file("now/b.ppm"));
    ppm("now/sub/d.ppm", 1, 1, {0});
    const std::vector<Json> lines = json_lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0]["name"], "a.ppm");
    EXPECT_EQ(lines[0]["result"], "changed");
    EXPECT_EQ(lines[0]["difference"], Json::parse(R"({"pixels":1,"largest":[0,5,0,0],"rectangle":[2,1,2,1],
                              "first":{"x":2,"y":1,"expected":[16,32,48,255],"found":[16,37,48,255]}})"));
    EXPECT_EQ(lines[0]["found"]["sha256"], tool({"hash", file("now/a.ppm")}).out.substr(0, 64));
    EXPECT_EQ(lines[1]["result"], "missing");
    EXPECT_EQ(lines[2]["result"], "same");
    EXPECT_EQ(lines[3]["result"], "not listed");
    EXPECT_EQ(lines[4], Json::parse(R"({"summary":{"same":1,"tolerated":0,"changed":1,"missing":1,"not_listed":1,
                                                  "unreadable":0}})"));
}

TEST_F(VerifyTest, TheReportShowsBothPicturesAndTheDifference) {
    record();
    change_by(5);
    ASSERT_EQ(shell("mv now/b.ppm 'now/<b>.ppm'; cp 'now/<b>.ppm' then").status, 0);
    const Ending run = verify("--expected then --report out.html");
    EXPECT_EQ(run.status, 1);
    const std::string page = bytes_of(file("out.html"));
    EXPECT_TRUE(holds(page, "<td>1</td>") && holds(page, "red 0, green 5, blue 0, alpha 0") && holds(page, "(2, 1)"));
    EXPECT_TRUE(holds(page, "16, 32, 48, 255") && holds(page, "16, 37, 48, 255"));
    EXPECT_TRUE(holds(page, "the difference, 51 times as large"));
    EXPECT_TRUE(holds(page, "<h2>&lt;b&gt;.ppm</h2>")) << "names are text";
    EXPECT_FALSE(holds(page, "http")) << "the page needs nothing from elsewhere";
    // The pictures in it are the expected one, the found one, and one that is bright where they differ.
    ASSERT_EQ(shell("grep -o 'base64,[^\"]*' out.html | head -5 | cut -c8- | while read p; do n=$((n + 1)); "
                    "echo $p | base64 -d >p$n.png; done")
                  .status,
              0);
    // What is not there at all comes first: b.ppm as it was, and <b>.ppm.
    EXPECT_EQ(colors_of(file("p1.png")), colors_of(file("now/<b>.ppm")));
    EXPECT_EQ(colors_of(file("p3.png")), colors_of(file("then/a.ppm")));
    EXPECT_EQ(colors_of(file("p4.png")), colors_of(file("now/a.ppm")));
    EXPECT_EQ(colors_of(file("p5.png")), (std::vector<std::uint32_t>{0, 0, 0, 0, 0, 0, 0x00FF00, 0}));

    EXPECT_EQ(verify("--report out.html").status, 2);
    EXPECT_EQ(verify("--expected then --report none/out.html").status, 3);
}

// The last one is a pipe: when that is read, all others have been, and the report reads them again.
TEST_F(VerifyTest, FilesMayChangeWhileTheyAreVerified) {
    const auto paint = [&](std::uint32_t color) {
        for (const char* name : {"gone", "gone-then", "higher", "wider"})
            ppm(std::string("now/") + name + ".ppm", 2, 2, std::vector<std::uint32_t>(4, color));
    };
    paint(7);
    ppm("now/z.ppm", 1, 1, {7});
    record();
    paint(9);
    const Ending run = shell(
        "rm now/z.ppm; mkfifo now/z.ppm; tarvo verify list now --expected then --report page -q >told & "
        "exec 3>now/z.ppm; rm now/gone.ppm then/gone-then.ppm; printf 'P6 2 1 255 yyyyyy' >now/higher.ppm; "
        "printf 'P6 1 2 255 yyyyyy' >now/wider.ppm; cat then/z.ppm >&3; exec 3>&-; wait $!");
    EXPECT_EQ(run.status, 1) << run.err;
    EXPECT_TRUE(holds(bytes_of(file("told")), "\n4 same, 4 changed\n")) << bytes_of(file("told"));
    EXPECT_EQ(shell("grep -o '<figcaption>[^<]*' page | cut -d'>' -f2 | tr '\n' ' '").out,
              "found expected expected found expected found ")
        << "gone-then, gone, higher, wider";
}

TEST_F(VerifyTest, NamesMayHaveAnyCharacters) {
    ASSERT_EQ(shell("mv now/a.ppm 'now/two  blanks \\ and\na line.ppm'").status, 0);
    record();
    EXPECT_TRUE(holds(manifest(), "  two  blanks \\\\ and\\na line.ppm\n")) << manifest();
    EXPECT_EQ(verify().status, 0);
}

TEST_F(VerifyTest, NoPicturesAreAsTheyAreListed) {
    const Ending run = shell("mkdir empty; echo 'tarvo-manifest 1' >list; tarvo verify list empty");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "no pictures\n");
}

TEST_F(VerifyTest, TheFolderIsTheManifestsUnlessItIsTold) {
    ASSERT_EQ(shell("tarvo verify now/list --record").status, 0);
    EXPECT_EQ(shell("tarvo verify now/list").status, 0);
    EXPECT_EQ(shell("cd now && tarvo verify list -q").out, "3 same\n");
}

TEST_F(VerifyTest, MasksAreToldApart) {
    const auto pam = [&](const std::string& name, char alpha) {
        text_file(name, "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" +
                            std::string("\1\2\3") + alpha);
    };
    pam("now/m.pam", '\x40');
    record();
    EXPECT_TRUE(holds(manifest(), "  1x1 rgba  m.pam\n")) << manifest();
    pam("now/m.pam", '\x7F');
    const std::string changed = verify("--expected then").out;
    EXPECT_TRUE(holds(changed, "#010203 of alpha 64 before and #010203 of alpha 127 now\n")) << changed;
    text_file("now/m.pam", "P6 1 1 255\n\1\2\3");
    pam("now/sub/c.ppm", '\x40');
    const std::string told = verify("--expected then").out;
    EXPECT_TRUE(holds(told, "m.pam: changed: it has no mask now: 1 of 1 pixels differ")) << told;
    EXPECT_TRUE(holds(told, "sub/c.ppm: changed: it has a mask now: 1 of 1 pixels differ")) << told;
}

TEST_F(VerifyTest, ProgramsAreToldWhatIsToleratedAndWhatIsWrong) {
    record();
    ASSERT_EQ(shell("sed -i 's/ rgb  a/ rgb tolerance=1:3  a/' list").status, 0);
    change_by(3);
    text_file("now/b.ppm", "no picture");
    const std::vector<Json> lines = json_lines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0]["result"], "same");
    EXPECT_EQ(lines[0]["tolerated"], true);
    EXPECT_FALSE(lines[2].contains("tolerated"));
    EXPECT_TRUE(holds(lines[1]["message"], "now/b.ppm")) << lines[1];
    EXPECT_FALSE(lines[0].contains("message"));
    text_file("now/a.ppm", "no picture");
    EXPECT_TRUE(holds(verify().err, "2 pictures cannot be read")) << verify().err;
}

TEST_F(VerifyTest, NamesComeBackWhateverIsInThem) {
    ASSERT_EQ(shell("cp now/b.ppm \"$(printf 'now/one\\rline.ppm')\"; cp now/b.ppm 'now/b&\"c.ppm'; tarvo convert "
                    "now/b.ppm -o now/s.trv")
                  .status,
              0);
    record();
    EXPECT_TRUE(holds(manifest(), "  s.trv\n")) << manifest();
    EXPECT_EQ(verify("-q").out, "6 same\n");
    ASSERT_EQ(shell("cp now/a.ppm 'now/b&\"c.ppm'").status, 0);
    EXPECT_EQ(verify("--expected then --report page").status, 1);
    EXPECT_TRUE(holds(bytes_of(file("page")), "b&amp;&quot;c.ppm"));
}

}  // namespace
}  // namespace tarvo::cli
