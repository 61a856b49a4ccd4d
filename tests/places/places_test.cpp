// What every operation has elsewhere in the project, so that none of it can be forgotten: what lacks something is
// named. Its description, its page, its golden and its course when services fail are asked for by the tests of these.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "pages.h"
#include "session.h"

namespace tarvo::test {
namespace {

namespace fs = std::filesystem;

using Names = std::set<std::string>;

Names registered_names() {
    const Session session;
    Names names;
    for (const host::Callable& method : session.caller.callables())
        if (method.owner.empty() || method.owner == "picture") names.insert(method.declaration.name);
    return names;
}

bool is_word(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// All names in the source, of functions and whatever else.
Names words_of(const fs::path& source) {
    Names words;
    std::ifstream file(source);
    std::string word;
    for (char c = 0; file.get(c);) {
        if (is_word(c))
            word += c;
        else
            words.insert(std::exchange(word, {}));
    }
    return words;
}

// The names in each of the folder's sources.
std::vector<Names> sources_in(const fs::path& folder) {
    std::vector<Names> sources;
    for (const fs::directory_entry& entry : fs::directory_iterator(docs::kProject / folder))
        if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h")
            sources.push_back(words_of(entry.path()));
    return sources;
}

Names words_in(const fs::path& folder) {
    Names words;
    for (Names& source : sources_in(folder)) words.merge(source);
    return words;
}

// What an operation is benchmarked by, if neither by itself nor by the kernel that has its name.
struct OtherName {
    std::string_view operation, kernel;
};
constexpr OtherName kKernels[] = {
    {"TRV_Compare", "PrivCompare_NonVector"},
    {"TRV_FlipRotate", "Priv_Rotate90"},
    {"TRV_Stretch", "Priv_StetchHorizontal"},
};
// These look at no pixel.
constexpr std::string_view kWithoutBenchmark[] = {"TRV_GetErrorMessage", "TRV_GetLastError", "TRV_Info",
                                                  "TRV_RowBytes"};

bool is_benchmarked(const std::string& operation, const Names& words) {
    const std::string bare = operation.substr(operation.find('_') + 1);
    if (words.contains(operation) || words.contains("Priv" + bare) || words.contains("Priv_" + bare)) return true;
    const auto* const other = std::ranges::find(kKernels, operation, &OtherName::operation);
    return other != std::end(kKernels) && words.contains(std::string(other->kernel));
}

// Whether a test names the operation. A form by mask goes by the name of the form by region where one test holds both
// to the judge.
bool is_tested(std::string_view operation, const Names& words) {
    constexpr std::string_view kByMask = "WithMask";
    if (words.contains(std::string(operation))) return true;
    if (!operation.ends_with(kByMask)) return false;
    operation.remove_suffix(kByMask.size());
    return words.contains(std::string(operation)) && words.contains("expect_mask_agreement");
}

TEST(Operations, AreNamedInATest) {
    std::vector<Names> tests = sources_in("tests/operations");
    tests.push_back({"TRV_GetErrorMessage", "TRV_GetLastError"});  // these are with the plugin's own tests
    for (const std::string& name : registered_names())
        EXPECT_TRUE(std::ranges::any_of(tests, [&](const Names& words) { return is_tested(name, words); }))
            << "no test in tests/operations names " << name;
}

// The lines up to the parameters: the list has the functions of operations in all their forms.
TEST(Operations, AreInTheListOfFunctions) {
    constexpr const char* kList = "tests/plugin/functions.txt";
    constexpr std::string_view kPrefix = "TRV_";
    Names listed;
    std::ifstream file(docs::kProject / kList);
    for (std::string line; std::getline(file, line);) listed.insert(line.substr(0, line.find('(')));
    const Session session;
    for (const host::Callable& method : session.caller.callables()) {
        if (!method.owner.empty() && method.owner != "picture") continue;
        const std::string& name = method.declaration.name;
        const bool client = method.extends() && method.parameters.front().type.name == "TRV_ClientPicture";
        const std::string function = client ? "TRV_ClientPicture_" + name.substr(kPrefix.size()) : name;
        EXPECT_TRUE(listed.contains(function)) << kList << " lacks " << function;
    }
}

TEST(Operations, HaveABenchmark) {
    const Names words = words_in("bench");
    for (const std::string& name : registered_names()) {
        const bool needs_none = std::ranges::find(kWithoutBenchmark, name) != std::end(kWithoutBenchmark);
        EXPECT_NE(is_benchmarked(name, words), needs_none)
            << (needs_none ? "a benchmark names " : "no benchmark in bench names the operation or the kernel of ")
            << name;
    }
}

TEST(Operations, ThatMakePicturesShowOneOnTheirPage) {
    const Session session;
    for (const docs::Page& page : docs::operation_pages()) {
        const auto makes_a_picture = [&](const std::string& declaration) {
            const auto result = host::parse_declaration(declaration).result;
            return result && result->name == "picture";
        };
        const std::vector<std::string> declarations = page.code_under("## Declarations");
        if (page.name() == "docs/ops/TRV_ScreenCapture.md") continue;  // shows what the screen shows
        if (!std::ranges::any_of(declarations, makes_a_picture)) continue;
        EXPECT_FALSE(page.pictures().empty()) << page.name() << " shows no picture";
        EXPECT_TRUE(std::ranges::any_of(page.examples(), [](const auto& each) { return !each.output().empty(); }))
            << page.name() << " has no example that makes a picture";
    }
}

}  // namespace
}  // namespace tarvo::test
