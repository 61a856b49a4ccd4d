// What the tool prints for others: its manual page, and what shells complete.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "tool.h"
#include "watched.h"

namespace tarvo::cli {
namespace {

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class ManualTest : public ToolTest {};

TEST_F(ManualTest, TellsOfCommandsAndOperations) {
    const std::string page = tool({"manual", "2026-01-31"}).out;
    EXPECT_TRUE(page.starts_with(".TH TARVO 1 2026-01-31 \"Tarvo Graphics " TARVO_VERSION "\"\n"))
        << page.substr(0, 80);
    for (const char* part :
         {".SH NAME\ntarvo \\- ", ".SH SYNOPSIS\n\\fBtarvo\\fR \\fBapply\\fR [", ".SH DESCRIPTION\n", ".SH OPTIONS\n",
          ".SH COMMANDS\n", ".SH OPERATIONS\n", ".SH EXIT STATUS\n", "\\fB\\-o\\fR", "TRV_Stretch", ".SS verify\n"})
        EXPECT_TRUE(holds(page, part)) << part;
    EXPECT_FALSE(holds(page, "\nExit status")) << "which has a section, and is no command's own";
    EXPECT_FALSE(holds(page, ".SS manual")) << "which is for those who build packages";
}

// Text of the tool's own is never taken for a request.
TEST_F(ManualTest, HasNoRequestsButItsOwn) {
    std::istringstream lines(tool({"manual"}).out);
    std::string line;
    std::getline(lines, line);
    EXPECT_TRUE(line.starts_with(".TH TARVO 1 \"\" ")) << line;
    int requests = 0;
    while (std::getline(lines, line)) {
        EXPECT_FALSE(line.starts_with('\'')) << line;
        if (!line.starts_with('.')) continue;
        ++requests;
        const std::string name = line.substr(0, line.find(' '));
        EXPECT_TRUE(name == ".SH" || name == ".SS" || name == ".TP" || name == ".PP" || name == ".br" ||
                    name == ".nf" || name == ".fi" || name == ".RS" || name == ".RE")
            << line;
    }
    EXPECT_GT(requests, 50);
}

class CompleteTest : public ToolTest {
protected:
    std::string offered(std::vector<std::string> words) const {
        words.insert(words.begin(), {"complete", "--"});
        const Ending run = tool(words);
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out;
    }
};

TEST_F(CompleteTest, WithoutAWordOffersWhatBegins) {
    EXPECT_TRUE(holds(offered({}), "apply\t"));
    EXPECT_EQ(offered({}), offered({""}));
}

TEST_F(CompleteTest, OptionsThatTakeNoValueAreNoPlacesForOne) {
    const std::string files = offered({"apply", ""});
    EXPECT_TRUE(files.starts_with(":files\n")) << files;
    for (const char* option : {"-q", "--unheard-of", "--strip"})
        EXPECT_EQ(offered({"apply", option, ""}), files) << option;
    EXPECT_EQ(offered({"apply", "--quality", ""}), "");
    EXPECT_EQ(offered({"apply", "-o", ""}), ":files\n");
    EXPECT_EQ(offered({"verify", "-q", "list", ""}), ":files\n");
}

TEST_F(CompleteTest, NothingIsOfferedWhereACommandTakesNothing) {
    EXPECT_EQ(offered({"convert", "a.png", ""}), "");
    EXPECT_EQ(offered({"capture", ""}), "");
    EXPECT_EQ(offered({"nothing", ""}), "");
}

TEST_F(CompleteTest, NamesHaveTheirPrefixForThoseWhoWriteIt) {
    EXPECT_TRUE(holds(offered({"help", "stre"}), "Stretch\t"));
    EXPECT_TRUE(holds(offered({"help", "trv_stre"}), "TRV_Stretch\t"));
    std::istringstream plain(offered({"help", ""})), prefixed(offered({"help", "TRV_"}));
    std::string line, other;
    while (std::getline(prefixed, line)) {
        std::getline(plain, other);
        EXPECT_EQ(line, "TRV_" + other);
    }
    EXPECT_FALSE(std::getline(plain, other)) << other;
}

// What is long is told by its beginning and its end, and no letter is cut in two.
TEST_F(ManualTest, LongMessagesAreShortened) {
    for (const char* end : {"", "a"}) {
        std::string word;
        for (int i = 0; i < 3000; ++i) word += "\xC3\xA4";
        word += end;
        const Ending run = tool({"convert", word, "-o", file("out.ppm")});
        EXPECT_EQ(run.status, 3);
        EXPECT_LT(run.err.size(), 4100u);
        const std::size_t gap = run.err.find(" ... ");
        ASSERT_NE(gap, std::string::npos);
        EXPECT_EQ(run.err.substr(gap - 2, 2), "\xC3\xA4");
        EXPECT_EQ(run.err.substr(gap + 5, 2), "\xC3\xA4");
    }
}

// Every allocation may be the one that there is no memory for.
TEST_F(ManualTest, WithoutMemoryCommandsSaySo) {
    if (test::kAddressesWatched) GTEST_SKIP() << "the sanitizer has allocations of its own";
    const std::string in = ppm("in.ppm", 2, 2, {1, 2, 3, 4}), out = file("out.ppm");
    const std::vector<std::string> commands[] = {{"list", "--json"}, {"apply", "-q", in, "Stretch(4, 4)", "-o", out}};
    for (const std::vector<std::string>& command : commands) {
        int told = 0;
        bool happened = true;
        for (int n = 200; n < 6000 && happened; n += 400) {
            const Ending run = tool_with_fault("allocate " + std::to_string(n) + " ENOMEM", command, &happened);
            EXPECT_NE(run.status, 2) << n << ": " << run.err;
            EXPECT_EQ(run.status == 0, run.err.empty()) << n << ": " << run.err;
            EXPECT_TRUE(run.status == 0 || !exists("out.ppm")) << n;
            told += run.status == 1 && run.err == "tarvo: not enough memory\n";
            std::filesystem::remove(out);
        }
        EXPECT_GT(told, 2) << command[0];
    }
}

}  // namespace
}  // namespace tarvo::cli
