// When the host gets control.

#include "yield_budget.h"

#include <gtest/gtest.h>

namespace tarvo::plugin {
namespace {

TEST(YieldBudget, LastsForRowsUntilItIsWorkedOff) {
    YieldBudget budget(25);
    EXPECT_EQ(budget.before_rows_until_due(10, 100, 1), 3);  // after the third row at least 25 pixels are worked on
    EXPECT_EQ(budget.before_rows_until_due(10, 100, 1), 0);
    YieldBudget in_units(95);
    EXPECT_EQ(in_units.before_rows_until_due(10, 100, 4), 8);
    EXPECT_EQ(in_units.before_rows_until_due(10, 1, 4), 1) << "all that are left are no whole unit";
}

TEST(YieldBudget, OfNothingLastsForAllRows) {
    for (const int yield : {0, -1}) EXPECT_EQ(YieldBudget(yield).before_rows_until_due(10, 100, 3), 100);
}

TEST(YieldBudget, LastsForRowsWithoutPixels) {
    YieldBudget budget(1);
    for (const int width : {0, -5}) EXPECT_EQ(budget.before_rows_until_due(width, 100, 3), 100);
    EXPECT_EQ(budget.before_rows_until_due(1, 100, 1), 1) << "nothing was worked on";
}

}  // namespace
}  // namespace tarvo::plugin
