#include "formula.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "placed_error.h"

namespace tarvo::language {
namespace {

using Kind = Term::Kind;

double computed(const Term& operation, double left, double right) {
    switch (operation.kind) {
        case Kind::add: return left + right;
        case Kind::subtract: return left - right;
        case Kind::multiply: return left * right;
        case Kind::divide:
            if (right == 0) throw PlacedError(operation.position, "division by zero");
            return left / right;
        default: return left;
    }
}

std::int32_t rounded(double value, std::size_t position) {
    using Limits = std::numeric_limits<std::int32_t>;
    const double nearest = std::round(value);
    if (nearest >= Limits::min() && nearest <= Limits::max()) return static_cast<std::int32_t>(nearest);
    throw PlacedError(
        position, "the result is too " + std::string(nearest < 0 ? "small" : "large") + " for an integer of 32 bits");
}

std::size_t first_position(const Formula& formula) {
    return std::ranges::min(formula.terms, {}, &Term::position).position;
}

// Returns what becomes of a part when its whole grows or shrinks, rounded to the nearest.
std::int32_t scaled(std::int32_t part, std::int32_t to, std::int32_t from) {
    const std::int64_t nearest = (std::int64_t{2} * part * to + from) / (std::int64_t{2} * from);
    return static_cast<std::int32_t>(std::max<std::int64_t>(nearest, 1));
}

std::int32_t limit_value(const Number& limit, const Size& picture) {
    const std::int32_t value = integer_value(limit, picture);
    if (value < 1) throw PlacedError(limit.position, "a side of " + std::to_string(value) + " pixels fits nothing");
    return value;
}

}  // namespace

bool needs_picture(const Formula& formula) {
    return std::ranges::any_of(formula.terms,
                               [](const Term& t) { return t.kind == Kind::width || t.kind == Kind::height; });
}

bool needs_picture(const Number& number) {
    const auto* formula = std::get_if<Formula>(&number.value);
    return formula && needs_picture(*formula);
}

bool is_of_integers(const Formula& formula) {
    return std::ranges::none_of(formula.terms, [](const Term& term) { return term.kind == Kind::real; });
}

double real_value(const Formula& formula, const Size& picture) {
    std::vector<double> values;
    for (const Term& term : formula.terms) {
        switch (term.kind) {
            case Kind::integer:
            case Kind::real: values.push_back(term.number); break;
            case Kind::width: values.push_back(picture.width); break;
            case Kind::height: values.push_back(picture.height); break;
            case Kind::negate: values.back() = -values.back(); break;
            default: {
                const double right = values.back();
                values.pop_back();
                values.back() = computed(term, values.back(), right);
                if (!std::isfinite(values.back())) throw PlacedError(term.position, "the result is too large");
            }
        }
    }
    return values.back();
}

double real_value(const Number& number, const Size& picture) {
    if (const auto* formula = std::get_if<Formula>(&number.value)) return real_value(*formula, picture);
    if (const auto* integer = std::get_if<std::int32_t>(&number.value)) return *integer;
    return std::get<double>(number.value);
}

std::int32_t integer_value(const Formula& formula, const Size& picture) {
    return rounded(real_value(formula, picture), first_position(formula));
}

std::int32_t integer_value(const Number& number, const Size& picture) {
    if (const auto* integer = std::get_if<std::int32_t>(&number.value)) return *integer;
    return rounded(real_value(number, picture), number.position);
}

Size fitted(std::span<const Number> limits, const Size& picture) {
    const std::int32_t width = limit_value(limits.front(), picture), height = limit_value(limits.back(), picture);
    if (picture.width < 1 || picture.height < 1)
        throw PlacedError(limits.front().position, "a picture without pixels has no proportions");
    const bool width_decides = std::int64_t{width} * picture.height <= std::int64_t{height} * picture.width;
    if (width_decides) return {width, scaled(picture.height, width, picture.width)};
    return {scaled(picture.width, height, picture.height), height};
}

}  // namespace tarvo::language
