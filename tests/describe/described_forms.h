#pragma once

// Calls of whatever is described.

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "fake_screen.h"
#include "good_arguments.h"
#include "reference.h"

namespace tarvo::test {

// Pictures with and without masks, client pictures and results of both kinds of backing; and what may be left out.
std::vector<Variant> all_variants();

// One form of a described operation.
struct DescribedForm {
    const reference::Operation& operation;
    std::size_t index;

    const reference::Form& form() const { return operation.forms[index]; }
    const host::Callable& callable() const { return *form().callable; }
    // Null for the object in front of the dot.
    const reference::Argument* argument(const host::Parameter& parameter) const;
    bool has(const std::vector<std::size_t>& forms) const;
};

// Operations' forms, then those of classes' methods.
std::vector<DescribedForm> all_forms(const reference::Reference& reference);
// A name for each, fit for parameterised tests.
const std::vector<std::string>& form_names();

struct Range {
    std::size_t parameter;  // of the callable's
    double nearest_outside, last_inside;
};
// Both ends, as far as there are any, of the range of each argument that is handed in.
std::vector<Range> ranges_of(const DescribedForm& form, const std::vector<Value>& arguments);

// What an operation answered, when it was not success: a code, or nil without one.
struct Failure {
    int code;
    describe::Gives gives;
    friend auto operator<=>(const Failure&, const Failure&) = default;
};
void PrintTo(const Failure& failure, std::ostream* out);

struct Answer {
    Value result;
    std::optional<Failure> failure;
};
// So that a code that is there after a call is the call's.
void clear_code(Session& session);
Answer call(Session& session, const DescribedForm& form, std::vector<Value>& arguments);

// Tests of every form.
class EachForm : public testing::TestWithParam<std::size_t> {
protected:
    std::vector<Value> arguments(const Variant& variant, const std::optional<Fixed>& fixed = {}) {
        Random random(1);
        return good_arguments(session, random, form.callable(), variant, fixed);
    }

    FakeScreen screen{kUsualSize.width, kUsualSize.height};
    Session session;
    reference::Reference reference{session.caller};
    DescribedForm form = all_forms(reference).at(GetParam());
};
#define TARVO_FOR_EACH_FORM(Suite)                                                         \
    INSTANTIATE_TEST_SUITE_P(, Suite, testing::Range(std::size_t{0}, form_names().size()), \
                             [](const auto& instance) { return form_names()[instance.param]; })

}  // namespace tarvo::test
