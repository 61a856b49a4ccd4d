#include "call_binding.h"

#include <algorithm>
#include <functional>
#include <variant>

#include "argument_fit.h"
#include "conversion.h"
#include "names.h"
#include "scanner.h"
#include "search.h"
#include "shown_text.h"
#include "suggestions.h"

namespace tarvo::language {

using host::Callable;
using host::Caller;
using host::Fit;
using host::Literal;
using host::Parameter;
using host::same_name;
using host::Type;
using host::TypeKind;

namespace {

using Source = Filling::Source;

constexpr std::string_view kPrefix = "TRV_";

bool is_plain(const Callable* method) { return method->owner.empty() && !method->extends(); }

// Returns a text such as "a or b", without repetitions.
std::string alternatives(const std::vector<std::string>& texts) {
    std::vector<std::string_view> told;
    std::string result;
    for (const std::string& text : texts) {
        if (std::ranges::find(told, text) != told.end()) continue;
        told.push_back(text);
        result += (result.empty() ? "" : " or ") + text;
    }
    return result;
}

// --- one method -----------------------------------------------------------------------------------------------------

// Why a method does not take a call.
struct Failure {
    enum Rank : std::size_t { wrong_object, wrong_count, first_argument };
    std::size_t rank;  // the higher, the more of the call the method would take; two for each argument
    std::size_t position;
    std::string message;
    std::string parameter = {}, wanted = {};  // set for an argument of a wrong type; `message` says what was found
    const Callable* method = nullptr;
    bool other_object = false;  // whether the method is for objects of another class
};

struct BoundCall : host::Match {
    Binding binding;
};

// Returns a text such as "TRV_Stretch(width, height, [yield])". What may be left out is in brackets.
std::string form_of(const Callable& method) {
    std::string list;
    for (const Parameter& parameter : method.declaration.parameters) {
        if (parameter.extends) continue;
        const bool optional = parameter.by_ref || default_of(method, parameter);
        list += (list.empty() ? "" : ", ") + (optional ? "[" + parameter.name + "]" : parameter.name);
    }
    return method.declaration.name + "(" + list + ")";
}

bool is_side(const Parameter& parameter, std::string_view name) {
    return parameter.type.kind == TypeKind::integer && !parameter.type.array && same_name(parameter.name, name);
}

// Lays out the arguments of a call on the parameters of one method.
class Layout {
public:
    Layout(const Caller& caller, const CallExpression& call, std::string_view text, const Callable& method)
        : caller_(caller), call_(call), text_(text), method_(method), filled_(method.parameters.size()) {}

    // `in_hand` is empty for plain methods.
    std::variant<BoundCall, Failure> lay_out(std::string_view in_hand) {
        try {
            if (!in_hand.empty()) put_object(in_hand);
            check_count();
            for (index_ = 0; index_ < call_.arguments.size(); ++index_) put(call_.arguments[index_]);
            return finished();
        } catch (Failure& failure) {
            failure.method = &method_;
            failure.other_object = match_.fits.empty() || match_.fits[0] != Fit::exact;
            return std::move(failure);
        }
    }

private:
    const std::vector<Parameter>& parameters() const { return method_.parameters; }

    void put_object(std::string_view in_hand) {
        const Type& type = parameters()[0].type;
        const std::optional<Fit> fit = caller_.fit_of_class(in_hand, type);
        if (!fit)
            throw Failure{Failure::wrong_object, call_.name_begin,
                          "it works on a " + type.name + ", not on a " + std::string(in_hand)};
        filled_[0] = Filling{Source::object};
        match_.fits.push_back(*fit);
        first_ = next_ = 1;
    }

    void check_count() const {
        const std::size_t most = parameters().size() - first_, found = call_.arguments.size();
        if (found <= most) return;
        throw Failure{Failure::wrong_count, call_.arguments[most].begin,
                      "it takes at most " + std::to_string(most) + (most == 1 ? " argument" : " arguments") +
                          ", found " + std::to_string(found)};
    }

    void put(const ArgumentExpression& argument) {
        const auto* form = std::get_if<Form>(&argument.value);
        if (form && form->kind == Form::Kind::fit) return put_fit(argument);
        const std::size_t place = argument.name.empty() ? next_++ : place_named(argument);
        if (place >= parameters().size()) fail(argument.begin, "there is no parameter for it behind fit(...)");
        put_value(argument, place);
    }

    // Fills two parameters with one argument.
    void put_fit(const ArgumentExpression& argument) {
        const bool fits = argument.name.empty() && next_ + 1 < parameters().size() &&
                          is_side(parameters()[next_], "width") && is_side(parameters()[next_ + 1], "height");
        if (!fits) fail(argument.begin, "fit(...) stands for a width and a height, in their place");
        match_.fits.push_back(Fit::exact);
        filled_[next_++] = Filling{Source::fitted_width, index_};
        filled_[next_++] = Filling{Source::fitted_height, index_};
    }

    std::size_t place_named(const ArgumentExpression& argument) const {
        std::vector<std::string_view> names;
        for (std::size_t i = first_; i < parameters().size(); ++i) {
            if (same_name(parameters()[i].name, argument.name)) return i;
            names.push_back(parameters()[i].name);
        }
        fail(argument.begin, "it has no argument " + host::quoted(argument.name) +
                                 did_you_mean({std::string(closest_name(argument.name, names))}));
    }

    void put_value(const ArgumentExpression& argument, std::size_t place) {
        const Parameter& parameter = parameters()[place];
        if (filled_[place]) fail(argument.begin, parameter.name + " is given twice");
        const std::optional<Fit> fit =
            parameter.by_ref ? Fit::exact : fit_to_type(caller_, argument.value, parameter.type);
        if (!fit)
            throw Failure{rank() + 1, argument.value_begin, "found " + found_in(argument, text_), parameter.name,
                          std::holds_alternative<Given>(argument.value) ? host::to_string(parameter.type)
                                                                        : wanted_for(parameter.type)};
        filled_[place] = Filling{Source::argument, index_};
        match_.fits.push_back(*fit);
    }

    BoundCall finished() {
        std::string missing;
        for (std::size_t i = 0; i < filled_.size(); ++i) {
            if (filled_[i]) continue;
            const Parameter& parameter = parameters()[i];
            ++match_.defaults;
            if (parameter.by_ref)
                filled_[i] = Filling{Source::variable};
            else if (default_of(method_, parameter))
                filled_[i] = Filling{Source::default_value};
            else
                missing += (missing.empty() ? "" : ", ") + parameter.name;
        }
        if (!missing.empty()) fail(call_.name_begin, "missing: " + missing);
        match_.binding.method = &method_;
        for (const std::optional<Filling>& filling : filled_) match_.binding.fillings.push_back(*filling);
        return std::move(match_);
    }

    [[noreturn]] void fail(std::size_t position, const std::string& message) const {
        throw Failure{rank(), position, message};
    }

    // The rank of an argument that has no place. One whose place is known and whose type is wrong ranks above it.
    std::size_t rank() const { return Failure::first_argument + 2 * index_; }

    const Caller& caller_;
    const CallExpression& call_;
    std::string_view text_;
    const Callable& method_;
    BoundCall match_;
    std::vector<std::optional<Filling>> filled_;
    std::size_t first_ = 0, next_ = 0;
    std::size_t index_ = 0;
};

// --- all methods of a name ------------------------------------------------------------------------------------------

// Returns what the methods that would take most of the call say. Most operations have a twin for another class of
// pictures; twins for other classes than the object's are mentioned only when there is nothing else.
PlacedError no_match(std::vector<Failure> failures) {
    if (!std::ranges::all_of(failures, &Failure::other_object))
        std::erase_if(failures, std::mem_fn(&Failure::other_object));
    const std::size_t furthest = std::ranges::max(failures, {}, &Failure::rank).rank;
    std::erase_if(failures, [&](const Failure& failure) { return failure.rank < furthest; });

    const Failure& first = failures.front();
    if (!first.parameter.empty()) {  // the rank tells so of all of them
        std::vector<std::string> parameters, wanted;
        for (const Failure& failure : failures) {
            parameters.push_back(failure.parameter);
            wanted.push_back(failure.wanted);
        }
        return {first.position, alternatives(parameters) + ": expected " + alternatives(wanted) + ", " + first.message,
                first.parameter};
    }
    if (failures.size() == 1) return {first.position, first.message + "\n    " + form_of(*first.method)};
    std::string list;
    for (const Failure& failure : failures) list += "\n    " + form_of(*failure.method) + ": " + failure.message;
    return {first.position, "none of these takes the call:" + list};
}

// Removes plain functions if any method of the name has an object.
std::vector<const Callable*> meant(std::vector<const Callable*> methods) {
    if (!std::ranges::all_of(methods, is_plain)) std::erase_if(methods, is_plain);
    return methods;
}

// --- numbers ----------------------------------------------------------------------------------------------------

struct NeedsPicture {
    bool operator()(const Literal&) const { return false; }
    bool operator()(const FileName&) const { return false; }
    bool operator()(const Given&) const { return false; }
    bool operator()(const Formula& formula) const { return needs_picture(formula); }
    bool operator()(const FormulaOrFile& both) const { return needs_picture(both.formula); }
    bool operator()(const Form& form) const {
        if (form.kind == Form::Kind::fit || form.kind == Form::Kind::border) return true;
        return std::ranges::any_of(form.numbers, [](const Number& number) { return needs_picture(number); });
    }
};

void compute_constants(const Form& form) {
    for (const Number& number : form.numbers) {
        if (needs_picture(number)) continue;
        if (form.kind == Form::Kind::matrix)
            real_value(number, {});
        else if (form.kind == Form::Kind::fit)
            fitted({&number, 1}, {1, 1});
        else
            integer_value(number, {});
    }
}

void compute_constants(const Expression& expression, const Type& wanted) {
    if (const auto* form = std::get_if<Form>(&expression)) return compute_constants(*form);
    const auto* both = std::get_if<FormulaOrFile>(&expression);
    const auto* formula = both ? &both->formula : std::get_if<Formula>(&expression);
    if (!formula || wanted.is_object() || needs_picture(*formula)) return;
    if (wanted.kind == TypeKind::integer)
        integer_value(*formula, {});
    else
        real_value(*formula, {});
}

void check_numbers(const Binding& binding, const CallExpression& call, std::string_view in_hand) {
    for (std::size_t i = 0; i < binding.fillings.size(); ++i) {
        const Filling& filling = binding.fillings[i];
        const bool has_value = filling.source == Source::argument || filling.source == Source::fitted_width;
        const Parameter& parameter = binding.method->parameters[i];
        if (!has_value || parameter.by_ref) continue;
        const ArgumentExpression& argument = call.arguments[filling.argument];
        const bool is_file = parameter.type.is_object() && std::holds_alternative<FormulaOrFile>(argument.value);
        if (in_hand.empty() && !is_file && std::visit(NeedsPicture{}, argument.value))
            throw PlacedError(argument.value_begin, parameter.name + ": there is no picture in hand to measure",
                              parameter.name);
        compute_constants(argument.value, parameter.type);
    }
}

}  // namespace

std::optional<Literal> default_of(const Callable& method, const Parameter& parameter) {
    if (parameter.default_value) return parameter.default_value;
    const describe::Operation* about = reference::description_of(method);
    if (!about) return std::nullopt;
    const auto argument = std::ranges::find(about->arguments, parameter.name, &describe::Argument::name);
    if (argument == about->arguments.end() || argument->left_out.empty()) return std::nullopt;
    return host::Scanner(argument->left_out).take_literal();
}

std::vector<const Callable*> methods_named(const Caller& caller, std::string_view name) {
    std::vector<const Callable*> methods = caller.named(name);
    if (methods.empty()) methods = caller.named(std::string(kPrefix) + std::string(name));
    std::erase_if(methods, [](const Callable* method) { return !method->owner.empty() && !method->extends(); });
    return methods;
}

Binding bind_call(const Caller& caller, const CallExpression& call, std::string_view text, std::string_view in_hand) {
    return bind_to(caller, meant(methods_named(caller, call.name)), call, text, in_hand);
}

Binding bind_to(const Caller& caller, const std::vector<const Callable*>& methods, const CallExpression& call,
                std::string_view text, std::string_view in_hand) {
    if (methods.empty()) throw PlacedError(call.name_begin, "there is no operation " + host::quoted(call.name));
    const bool plain = is_plain(methods.front());
    if (!plain && in_hand.empty())
        throw PlacedError(call.name_begin, "it needs a picture: name a file before the calls");

    std::vector<BoundCall> matches;
    std::vector<Failure> failures;
    for (const Callable* method : methods) {
        auto result = Layout(caller, call, text, *method).lay_out(plain ? "" : in_hand);
        if (auto* bound = std::get_if<BoundCall>(&result))
            matches.push_back(std::move(*bound));
        else
            failures.push_back(std::move(std::get<Failure>(result)));
    }
    if (matches.empty()) throw no_match(std::move(failures));
    // A method that takes the object as it is goes before one for which it would be converted.
    const auto is_own = [](const BoundCall& match) { return match.fits[0] == Fit::exact; };
    if (!plain && std::ranges::any_of(matches, is_own)) std::erase_if(matches, std::not_fn(is_own));
    const BoundCall* best = host::best_match(matches);
    if (!best) {
        std::string list;
        for (const BoundCall& match : matches) list += "\n    " + form_of(*match.binding.method);
        throw PlacedError(call.name_begin, "several methods take the call equally well:" + list);
    }
    check_numbers(best->binding, call, in_hand);
    return best->binding;
}

}  // namespace tarvo::language
