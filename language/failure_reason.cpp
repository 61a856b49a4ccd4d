#include "failure_reason.h"

#include <algorithm>
#include <optional>
#include <variant>

#include "argument_values.h"
#include "call_numbers.h"
#include "names.h"
#include "search.h"
#include "value_text.h"
#include "wording.h"

namespace tarvo::language {

using host::Callable;
using host::Caller;
using host::Parameter;
using host::Value;

namespace {

class Reason {
public:
    Reason(Caller& caller, const Callable& method, std::span<const Value> values, std::int32_t code)
        : caller_(caller),
          method_(method),
          values_(values),
          code_(code),
          numbers_(method, values),
          about_(reference::description_of(method)) {}

    std::string text() const {
        if (std::string range = out_of_range(); !range.empty()) return range;
        const std::string sizes = sizes_given();
        if (sizes.empty()) return {};
        const std::string meaning = code_meaning();
        return meaning + (meaning.empty() ? "" : "; ") + sizes;
    }

    // Returns the first argument whose range gives the code; null when there is none.
    const describe::Argument* argument_out_of_range() const {
        if (!about_) return nullptr;
        for (const describe::Error& error : about_->errors) {
            if (error.code != code_ || error.argument.empty()) continue;
            const auto argument = std::ranges::find(about_->arguments, error.argument, &describe::Argument::name);
            if (argument == about_->arguments.end()) continue;
            const std::optional<double> value = numbers_.named(argument->name);
            if (value && !numbers_.is_within(*argument, *value)) return &*argument;
        }
        return nullptr;
    }

private:
    const Parameter& parameter(std::size_t i) const { return method_.parameters[i]; }

    // Whether the form that was called declares a parameter, or an object, of that name.
    bool declares(std::string_view name) const {
        return std::ranges::any_of(method_.parameters, [&](const Parameter& p) { return p.name == name; });
    }

    std::string out_of_range() const {
        const describe::Argument* const argument = argument_out_of_range();
        return argument ? range_told(*argument, *numbers_.named(argument->name)) : std::string();
    }

    std::string range_told(const describe::Argument& argument, double value) const {
        constexpr double kFullTurn = 360;
        const std::string unit = argument.unit.empty() ? "" : " " + std::string(argument.unit);
        std::string text = std::string(argument.name) + " is " + value_text(value) + unit + ", allowed is " +
                           reference::range_text(argument);
        for (const double turned : {value + kFullTurn, value - kFullTurn})
            if (argument.unit == "degrees" && numbers_.is_within(argument, turned))
                text += ": write " + value_text(turned);
        return text;
    }

    // Returns what the code means for this operation; nothing if it may mean several things.
    std::string code_meaning() const {
        std::string meaning;
        if (!about_ || code_ == 0) return meaning;
        for (const describe::Error& error : about_->errors) {
            const bool of_form = error.forms.have([&](std::string_view name) { return declares(name); });
            if (error.code != code_ || !of_form || error.when.empty()) continue;
            if (!meaning.empty()) return {};
            meaning = error.when;
        }
        return meaning;
    }

    // Returns "the picture is 2 x 2, addend is 2 x 1"; nothing if there is nothing to compare the picture with.
    std::string sizes_given() const {
        std::string text;
        std::size_t told = 0;
        for (std::size_t i = 0; i < values_.size(); ++i) {
            const std::string size = size_text(values_[i]);
            if (size.empty()) continue;
            const bool is_object = i == 0 && (method_.extends() || !method_.owner.empty());
            text += (text.empty() ? "" : ", ") + (is_object ? "the picture" : parameter(i).name) + " is " + size;
            ++told;
        }
        return told > 1 ? text : "";
    }

    std::string size_text(const Value& value) const {
        const std::string type = host::type_name(value);
        if (is_picture_class(type)) {
            const Size size = size_of(caller_, value);
            return std::to_string(size.width) + " x " + std::to_string(size.height);
        }
        if (!host::same_name(type, "TRV_Rectangle")) return {};
        std::string sides;
        for (const char* side : {"left", "top", "width", "height"})
            sides += (sides.empty() ? "rect(" : ", ") + value_text(caller_.get(value, side));
        return sides + ")";
    }

    Caller& caller_;
    const Callable& method_;
    std::span<const Value> values_;
    const std::int32_t code_;
    const reference::CallNumbers numbers_;
    const describe::Operation* about_;  // null for an operation that is not described
};

}  // namespace

std::string failure_reason(Caller& caller, const Callable& method, std::span<const Value> values, std::int32_t code) {
    return Reason(caller, method, values, code).text();
}

std::string failed_argument(Caller& caller, const Callable& method, std::span<const Value> values, std::int32_t code) {
    const describe::Argument* const argument = Reason(caller, method, values, code).argument_out_of_range();
    return argument ? std::string(argument->name) : std::string();
}

}  // namespace tarvo::language
