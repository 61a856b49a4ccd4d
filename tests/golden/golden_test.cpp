// Results of the built library, byte for byte as they are kept, on every machine.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "cases.h"
#include "golden.h"
#include "holdings.h"
#include "picture_file.h"

namespace tarvo::test {
namespace {

namespace fs = std::filesystem;

#ifdef TARVO_PICTURE_LIBRARIES
constexpr const char* kEnding = ".png";
#else
constexpr const char* kEnding = ".pam";
#endif

// Writes what came, to be looked at. Where to.
fs::path keep(const GoldenCase& shown, const ObjectRef& actual) {
    const fs::path folder = TARVO_ACTUAL_PATH;
    fs::create_directories(folder);
    const fs::path path = folder / (std::string(shown.name) + kEnding);
    host::write_picture_file(pixels(actual), path.string());
    return path;
}

class Goldens : public testing::TestWithParam<std::size_t> {
protected:
    Stage stage;
    const GoldenCase& shown = golden_cases()[GetParam()];
};

TEST_P(Goldens, AreWhatComes) {
    const ObjectRef actual = result_of(shown, stage);
    ASSERT_TRUE(actual) << "nothing came, code " << stage.session.last_error();
    EXPECT_EQ(stage.session.last_error(), 0);
    const Checksums kept = read_checksums();
    ASSERT_TRUE(kept.contains(shown.name)) << "no golden is kept of " << shown.name;
    if (checksum(pam_of(actual)) != kept.find(shown.name)->second) {
        FAIL() << "golden: " << golden_picture(shown.name).string() << "\nactual: " << keep(shown, actual).string();
    }
}

#ifdef TARVO_PICTURE_LIBRARIES
// So that the machines which cannot read the pictures are held to them all the same.
TEST_P(Goldens, HaveTheChecksumOfTheirPicture) {
    const ObjectRef golden = host::read_picture_file(stage.session.host, golden_picture(shown.name).string());
    EXPECT_EQ(read_checksums()[std::string(shown.name)], checksum(pam_of(golden)));
}
#endif

INSTANTIATE_TEST_SUITE_P(, Goldens, testing::Range(std::size_t{0}, golden_cases().size()), [](const auto& instance) {
    std::string name(golden_cases()[instance.param].name);
    std::ranges::replace_if(
        name, [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
});

bool makes_a_picture(const host::Callable& method) {
    const auto& result = method.declaration.result;
    const bool of_a_class = !method.parameters.empty() && method.parameters.front().type.name.starts_with("TRV_");
    return result && result->name == "picture" && !of_a_class && !is_declared_crookedly(method);
}

TEST(GoldenCases, ThereIsOneOfEachOperationThatMakesAPicture) {
    const Session session;
    for (const host::Callable& method : session.caller.callables()) {
        if (!makes_a_picture(method)) continue;
        const auto declares = [&](const auto& row) { return is_declared(method, row.declaration); };
        const bool kept = std::ranges::any_of(golden_cases(), declares);
        const bool cannot_be = std::ranges::any_of(not_kept(), declares);
        EXPECT_NE(kept, cannot_be) << full_declaration(method);
    }
}

TEST(GoldenCases, HaveAllTheFiles) {
    std::set<std::string> cases, files, sums;
    for (const GoldenCase& each : golden_cases()) cases.emplace(each.name);
    for (const auto& entry : fs::directory_iterator(golden_folder() / "pictures"))
        files.insert(entry.path().stem().string());
    for (const auto& [name, sum] : read_checksums()) sums.insert(name);
    EXPECT_EQ(cases.size(), golden_cases().size()) << "two cases have one name";
    EXPECT_EQ(cases, files);
    EXPECT_EQ(cases, sums);
}

}  // namespace
}  // namespace tarvo::test
