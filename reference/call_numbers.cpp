#include "call_numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "conversion.h"
#include "search.h"

namespace tarvo::reference {

using describe::Bound;
using describe::Part;
using host::Value;

namespace {

std::optional<double> as_number(const Value& value) {
    if (const auto* integer = std::get_if<std::int32_t>(&value)) return *integer;
    if (const auto* real = std::get_if<double>(&value)) return *real;
    return std::nullopt;
}

// The language takes an integer for a colour, too.
std::optional<double> channel_of(const Value& value, int shift) {
    const auto* const color = std::get_if<host::Color>(&value);
    const auto* const bits = std::get_if<std::int32_t>(&value);
    if (!color && !bits) return std::nullopt;
    return (color ? color->rgb : static_cast<std::uint32_t>(*bits)) >> shift & 255;
}

const std::vector<std::int32_t>* elements_of(const Value& value) {
    const auto* const object = std::get_if<host::ObjectRef>(&value);
    const auto* const array = object ? dynamic_cast<const host::IntegerArray*>(object->get()) : nullptr;
    return array ? &array->elements : nullptr;
}

std::int32_t wrapped_sum(const std::vector<std::int32_t>& numbers) {
    std::uint32_t sum = 0;
    for (const std::int32_t number : numbers) sum += static_cast<std::uint32_t>(number);
    return static_cast<std::int32_t>(sum);
}

}  // namespace

const Value* CallNumbers::value_named(std::string_view parameter) const {
    for (std::size_t i = 0; i < values_.size(); ++i)
        if (method_.parameters[i].name == parameter) return &values_[i];
    return nullptr;
}

std::optional<double> CallNumbers::named(std::string_view parameter) const {
    const Value* const value = value_named(parameter);
    return value ? as_number(*value) : std::nullopt;
}

double CallNumbers::limit(const Bound& bound) const {
    return bound.times.empty() ? bound.value : bound.value * named(bound.times).value_or(0);
}

bool CallNumbers::is_between(const Bound& low, const Bound& high, double value) const {
    if (low.given() && !(low.exclusive() ? value > limit(low) : value >= limit(low))) return false;
    return !high.given() || (high.exclusive() ? value < limit(high) : value <= limit(high));
}

bool CallNumbers::is_within(const describe::Argument& argument, double value) const {
    return is_between(argument.minimum, argument.maximum, value);
}

std::optional<double> CallNumbers::part_of(const describe::Quantity& quantity) const {
    const Value* const value = value_named(quantity.argument);
    if (!value) return std::nullopt;
    switch (quantity.part) {
        case Part::value: return as_number(*value);
        case Part::red: return channel_of(*value, 16);
        case Part::green: return channel_of(*value, 8);
        case Part::blue: return channel_of(*value, 0);
        case Part::count:
            if (const auto* const elements = elements_of(*value)) return elements->size();
            break;
        case Part::sum:
            if (const auto* const elements = elements_of(*value)) return wrapped_sum(*elements);
            break;
    }
    return std::nullopt;
}

bool CallNumbers::holds(const describe::Condition& condition) const {
    double product = 1;
    for (const describe::Quantity& each : condition.product) {
        const std::optional<double> part = part_of(each);
        if (!part) return false;
        product *= std::trunc(*part * each.scale) + each.offset;
    }
    const bool is_inside = is_between(condition.minimum, condition.maximum, product);
    return is_inside != condition.outside && std::fmod(product, condition.multiple_of) == 0;
}

std::vector<const describe::Caution*> CallNumbers::cautions() const {
    std::vector<const describe::Caution*> told;
    const describe::Operation* const about = description_of(method_);
    if (!about) return told;
    const auto is_out_of_range = [&](std::string_view name) {
        const auto* const argument = std::ranges::find(about->arguments, name, &describe::Argument::name);
        const std::optional<double> value = named(name);
        return argument != about->arguments.end() && value && !is_within(*argument, *value);
    };
    for (const describe::Caution& each : about->cautions) {
        const bool is_told = std::ranges::find(told, each.argument, &describe::Caution::argument) != told.end();
        if (is_told || is_out_of_range(each.argument)) continue;
        if (std::ranges::all_of(each.when, [&](const auto& condition) { return holds(condition); }))
            told.push_back(&each);
    }
    return told;
}

}  // namespace tarvo::reference
