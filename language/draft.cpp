#include "draft.h"

#include <optional>
#include <variant>

#include "call_binding.h"
#include "call_expression.h"
#include "names.h"
#include "search.h"

namespace tarvo::language {

namespace {

constexpr std::string_view kPicture = "picture";

// Returns the number that an argument stands for, whatever the picture.
std::optional<std::int32_t> constant(const Expression& expression) {
    if (const auto* literal = std::get_if<host::Literal>(&expression)) {
        const auto* number = std::get_if<std::int32_t>(literal);
        return number ? std::optional(*number) : std::nullopt;
    }
    const auto* formula = std::get_if<Formula>(&expression);
    if (!formula || needs_picture(*formula)) return std::nullopt;
    return integer_value(*formula, {});
}

// Returns what a call makes of a picture of that size, as far as its text tells.
std::optional<Size> scaled_size(const CallExpression& call, const Binding& binding, const Size& picture) {
    const describe::Operation* about = reference::description_of(*binding.method);
    if (!about || !about->scales) return std::nullopt;
    std::optional<std::int32_t> width, height;
    for (std::size_t i = 0; i < binding.fillings.size(); ++i) {
        const Filling& filling = binding.fillings[i];
        const std::string& name = binding.method->parameters[i].name;
        std::optional<std::int32_t>* const side = host::same_name(name, "width")    ? &width
                                                  : host::same_name(name, "height") ? &height
                                                                                    : nullptr;
        if (!side) continue;
        const Expression& value = call.arguments[filling.argument].value;
        switch (filling.source) {
            case Filling::Source::fitted_width: *side = fitted(std::get<Form>(value).numbers, picture).width; break;
            case Filling::Source::fitted_height: *side = fitted(std::get<Form>(value).numbers, picture).height; break;
            case Filling::Source::argument: *side = constant(value); break;
            default: break;
        }
    }
    if (!width || !height) return std::nullopt;
    return Size{*width, *height};
}

bool needs_picture(const CallExpression& call) {
    for (const ArgumentExpression& argument : call.arguments)
        if (const auto* form = std::get_if<Form>(&argument.value))
            for (const Number& number : form->numbers)
                if (needs_picture(number)) return true;
    return false;
}

}  // namespace

bool suits_smaller(const host::Caller& caller, std::string_view text, const Size& whole, const Size& smaller) {
    try {
        const CallExpression call = parse_call(text);
        if (needs_picture(call)) return false;
        const Binding binding = bind_call(caller, call, text, kPicture);
        const auto wanted = scaled_size(call, binding, whole);
        return wanted && scaled_size(call, binding, smaller) == wanted && smaller.width >= wanted->width &&
               smaller.height >= wanted->height;
    } catch (const PlacedError&) {
        return false;  // whoever makes the call is told
    }
}

}  // namespace tarvo::language
