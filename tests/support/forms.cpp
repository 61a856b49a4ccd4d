#include "forms.h"

#include <algorithm>
#include <stdexcept>

namespace tarvo::test {
namespace {

constexpr std::string_view kMaskSuffix = "WithMask", kAsPicture = "as_picture", kYield = "yield";

bool has_parameter(const host::Callable& method, std::string_view name) {
    return std::ranges::any_of(method.parameters, [&](const auto& each) { return each.name == name; });
}

// Empty for a method of another operation, or of another kind.
std::vector<Form> forms_in(const host::Callable& method, const OperationName& operation) {
    std::string_view name = method.declaration.name;
    const bool by_mask = name.ends_with(kMaskSuffix);
    if (by_mask) name.remove_suffix(kMaskSuffix.size());
    if (name != operation.name || !method.extends() || method.parameters.size() < 2) return {};
    if (!operation.parameter.empty() && !has_parameter(method, operation.parameter)) return {};
    if (method.parameters[1].name != (by_mask ? "mask" : "rect")) return {};
    const bool on_clients = method.parameters[0].type.name == "TRV_ClientPicture";
    std::vector<Form> forms = {{&method, on_clients, by_mask}};
    if (has_parameter(method, kAsPicture)) forms.push_back({&method, on_clients, by_mask, true});
    return forms;
}

Form only_form(const Session& session, const OperationName& operation, bool on_clients, Of of, bool as_picture) {
    for (const Form& form : forms_of(session, operation))
        if (form.on_clients == on_clients && form.by_mask == (of == Of::mask) && form.as_picture == as_picture)
            return form;
    throw std::runtime_error("no such form is registered of " + std::string(operation.name));
}

}  // namespace

std::string Form::name() const { return full_declaration(*method) + (as_picture ? ", as picture" : ""); }

Value Form::call(Session& session, const ObjectRef& p, const ObjectRef& second, const Numbers& numbers) const {
    Numbers variables = numbers;
    return call_by_ref(session, p, second, variables);
}

Value Form::call_by_ref(Session& session, const ObjectRef& p, const ObjectRef& second, Numbers& numbers) const {
    std::vector<Value> arguments = {value(p), value(second)};
    std::vector<std::size_t> places;  // of the numbers
    for (std::size_t i = 2; i < method->parameters.size(); ++i) {
        const std::string& parameter = method->parameters[i].name;
        if (parameter == kYield) {
            arguments.push_back(1);
        } else if (parameter == kAsPicture) {
            arguments.push_back(as_picture);
        } else {
            arguments.push_back(numbers.at(places.size()));
            places.push_back(i);
        }
    }
    Value result = session.caller.invoke(*method, arguments);
    for (std::size_t i = 0; i < places.size(); ++i) numbers[i] = arguments[places[i]];
    return result;
}

std::vector<Form> forms_of(const Session& session, const OperationName& operation) {
    std::vector<Form> all;
    for (const host::Callable& method : session.caller.callables())
        for (const Form& form : forms_in(method, operation)) all.push_back(form);
    return all;
}

Form picture_form(const Session& session, const OperationName& operation, Of of) {
    return only_form(session, operation, false, of, false);
}

Form client_form(const Session& session, const OperationName& operation, Of of, bool as_picture) {
    return only_form(session, operation, true, of, as_picture);
}

}  // namespace tarvo::test
