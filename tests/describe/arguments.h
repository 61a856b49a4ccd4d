#pragma once

// Calls of whatever is described, with arguments made up from what is told of them and from their types.

#include <ostream>
#include <string>
#include <vector>

#include "client_pictures.h"
#include "reference.h"

namespace tarvo::test {

// How the pictures of a call are made.
struct Setting {
    bool masked = false;
    bool own_memory = false;  // of client pictures
    bool as_picture = false;  // where a call asks for it
    bool left_out = false;    // what may be left out has the value that stands for it
};
std::vector<Setting> all_settings();
void PrintTo(const Setting& setting, std::ostream* out);

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

inline constexpr int kWidth = 7, kHeight = 6;  // of all pictures of a call

// An argument that is to have this number.
struct Fixed {
    std::size_t parameter;  // of the callable's
    double number;
};

// With which the operation succeeds: the object in front of the dot, if there is one, then what is declared. What
// depends on an argument that is fixed fits it.
std::vector<Value> good_arguments(Session& session, Random& random, const DescribedForm& form, const Setting& setting,
                                  const std::optional<Fixed>& fixed = {});

// A number as the parameter takes it.
Value number_of(const host::Parameter& parameter, double number);
// A bound's value, given the other arguments of the call.
double value_of(const describe::Bound& bound, const DescribedForm& form, const std::vector<Value>& arguments);

// One beyond the bound, or the next number that there is, in the direction of `step` (1 or -1).
double next_number(const host::Parameter& parameter, double number, int step);

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

}  // namespace tarvo::test
