// What lies on the last number of a range is accepted, and the next one beyond it refused with the code that is told.

#include <gtest/gtest.h>

#include "described_forms.h"

namespace tarvo::test {
namespace {

class Bounds : public EachForm {
protected:
    std::optional<Failure> failure_with(std::size_t parameter, double number) {
        std::vector<Value> values = arguments({}, Fixed{parameter, number});
        clear_code(session);
        return call(session, form, values).failure;
    }
};

TEST_P(Bounds, AreWhereTheTableSays) {
    for (const Range& range : ranges_of(form, arguments({}))) {
        const host::Parameter& parameter = form.callable().parameters[range.parameter];
        const describe::Error& error = *form.operation.range_error(*form.argument(parameter))->about;
        SCOPED_TRACE(form.form().declaration() + ": " + parameter.name);
        const std::optional<Failure> inside = failure_with(range.parameter, range.last_inside);
        EXPECT_FALSE(inside) << range.last_inside << ": " << testing::PrintToString(*inside);
        const std::optional<Failure> outside = failure_with(range.parameter, range.nearest_outside);
        ASSERT_TRUE(outside) << range.nearest_outside;
        EXPECT_EQ(*outside, (Failure{error.code, error.gives})) << range.nearest_outside;
    }
}

TARVO_FOR_EACH_FORM(Bounds);

}  // namespace
}  // namespace tarvo::test
