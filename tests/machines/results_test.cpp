// The same calls on every machine: what comes of each is kept, and equal.

#include <gtest/gtest.h>

#include "calls.h"
#include "holdings.h"
#include "results.h"

namespace tarvo::test {
namespace {

TEST(Results, OfEveryCallAreThoseThatAreKept) {
    const Results kept = read_results(), actual = results_of_all_calls();
    ASSERT_FALSE(kept.empty());
    for (const auto& [name, sum] : actual) {
        ASSERT_TRUE(kept.contains(name)) << "nothing is kept of " << name;
        EXPECT_EQ(sum, kept.find(name)->second) << name;
    }
    EXPECT_EQ(actual.size(), kept.size());
}

TEST(Results, AreThereOfEveryCallable) {
    const auto& all = linked_plugin().callables.all();
    const Results kept = read_results();
    int crooked = 0;
    for (const host::Callable& method : all) {
        EXPECT_TRUE(kept.contains(full_declaration(method))) << full_declaration(method);
        crooked += is_declared_crookedly(method);
    }
    EXPECT_EQ(kept.size(), all.size() + linked_plugin().registry.classes().size()) << "two have one declaration";
    EXPECT_EQ(crooked, 6);
}

}  // namespace
}  // namespace tarvo::test
