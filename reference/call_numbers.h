#pragma once

// The numbers of a call, and what is told of them.

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "caller.h"
#include "tables.h"

namespace tarvo::reference {

class CallNumbers {
public:
    // The values are those of the method's parameters. They must outlive this.
    CallNumbers(const host::Callable& method, std::span<const host::Value> values) : method_(method), values_(values) {}

    // Returns a parameter's value; none where it is no number, or there is no such parameter.
    std::optional<double> named(std::string_view parameter) const;
    // Whether a value is within the argument's range, as far as that is known. What is not a number is within no range.
    bool is_within(const describe::Argument& argument, double value) const;
    // Returns the cautions that hold, of each argument the first one. Where a value is out of its range there is an
    // error, and no caution.
    std::vector<const describe::Caution*> cautions() const;

private:
    const host::Value* value_named(std::string_view parameter) const;
    double limit(const describe::Bound& bound) const;
    bool is_between(const describe::Bound& low, const describe::Bound& high, double value) const;
    std::optional<double> part_of(const describe::Quantity& quantity) const;
    bool holds(const describe::Condition& condition) const;

    const host::Callable& method_;
    const std::span<const host::Value> values_;
};

}  // namespace tarvo::reference
