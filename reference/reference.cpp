#include "reference.h"

#include <algorithm>
#include <array>

#include "names.h"
#include "wording.h"

namespace tarvo::reference {

using host::Callable;
using host::Caller;
using host::Parameter;
using host::same_name;
using host::Type;
using host::TypeKind;

namespace {

constexpr const char* kNone = "none";

// The word that programs which know nothing of the host's language have for a type.
std::string plain_name(const Type& type) {
    const std::string brackets = type.array ? "()" : "";
    switch (type.kind) {
        case TypeKind::integer: return "integer" + brackets;
        case TypeKind::real: return "double" + brackets;
        case TypeKind::boolean: return "boolean" + brackets;
        case TypeKind::color: return "color" + brackets;
        case TypeKind::string: return "string" + brackets;
        default: return (same_name(type.name, "MemoryBlock") ? "bytes" : type.name) + brackets;
    }
}

bool has_object(const Callable& callable) { return callable.extends() || !callable.owner.empty(); }

// The object in front of the dot included.
auto declared_by(const Callable& callable) {
    return [&](std::string_view name) {
        return std::ranges::find(callable.parameters, name, &Parameter::name) != callable.parameters.end();
    };
}

// Where a program can choose what backs the resulting client picture, one comes back, even if a picture is declared.
std::string result_of(const Callable& callable) {
    if (declared_by(callable)("as_picture")) return "TRV_ClientPicture";
    return callable.declaration.result ? plain_name(*callable.declaration.result) : kNone;
}

Form form_of(const Callable& callable, const describe::Operation& about) {
    const auto declares = declared_by(callable);
    return {.callable = &callable,
            .self = has_object(callable) ? plain_name(callable.parameters.front().type) : kNone,
            .result = result_of(callable),
            .yields = about.yields.have(declares),
            .keeps_mask = about.keeps_mask.have(declares),
            .changes_self = about.changes_self.have(declares)};
}

std::span<const Parameter> written_parameters(const Callable& callable) {
    const std::span all(callable.parameters);
    return has_object(callable) ? all.subspan(1) : all;
}

// The same declaration may be registered with a class and, without an object, as a plain function: that one is none.
std::vector<Form> forms_of(const Caller& caller, const describe::Operation& about, std::string_view owner) {
    std::vector<Form> forms;
    for (const Callable& callable : caller.callables()) {
        const bool of_class = !callable.owner.empty() && !callable.extends();
        if (!same_name(callable.declaration.name, about.name)) continue;
        if (of_class ? !same_name(callable.owner, owner) : !owner.empty()) continue;
        const Form form = form_of(callable, about);
        const auto same = std::ranges::find(forms, form.declaration(), &Form::declaration);
        if (same == forms.end())
            forms.push_back(form);
        else if (has_object(callable))
            *same = form;
    }
    return forms;
}

std::vector<Argument> arguments_of(const std::vector<Form>& forms, const describe::Operation& about) {
    std::vector<Argument> arguments;
    for (const describe::Argument& each : about.arguments) {
        const auto first = static_cast<std::ptrdiff_t>(arguments.size());
        for (std::size_t i = 0; i < forms.size(); ++i)
            for (const Parameter& parameter : written_parameters(*forms[i].callable)) {
                if (parameter.name != each.name) continue;
                const std::string type = plain_name(parameter.type);
                auto same = std::find_if(arguments.begin() + first, arguments.end(), [&](const Argument& old) {
                    return old.type == type && old.by_ref == parameter.by_ref;
                });
                if (same == arguments.end()) same = arguments.insert(same, {&each, type, parameter.by_ref, {}});
                same->forms.push_back(i);
            }
    }
    return arguments;
}

Error error_of(const std::vector<Form>& forms, const describe::Operation& about, const describe::Error& error) {
    Error result = {&error, std::string(error.when), {}};
    const auto* const argument = std::ranges::find(about.arguments, error.argument, &describe::Argument::name);
    if (argument != about.arguments.end()) result.when = beyond_text(*argument);
    for (std::size_t i = 0; i < forms.size(); ++i) {
        const auto declares = declared_by(*forms[i].callable);
        if (error.forms.have(declares) && (error.argument.empty() || declares(error.argument)))
            result.forms.push_back(i);
    }
    return result;
}

Operation operation_of(const Caller& caller, const describe::Operation& about, std::string_view family,
                       std::string_view owner = {}) {
    Operation operation = {&about, family, forms_of(caller, about, owner), {}, {}};
    operation.arguments = arguments_of(operation.forms, about);
    for (const describe::Error& each : about.errors) operation.errors.push_back(error_of(operation.forms, about, each));
    return operation;
}

Class class_of(const Caller& caller, const host::RegisteredClass& registered, const describe::Class& about) {
    Class result = {&about, {}, {}};
    for (const describe::Property& each : about.properties)
        for (const host::RegisteredProperty& property : registered.properties)
            if (same_name(property.name, each.name))
                result.properties.push_back({&each, plain_name(host::type_named(property.type)), !property.setter});
    for (const describe::Operation& each : about.methods) {
        Operation method = operation_of(caller, each, {}, about.name);
        if (!method.forms.empty()) result.methods.push_back(std::move(method));
    }
    return result;
}

std::string text_of_code(Caller& caller, int code) {
    std::array<host::Value, 1> arguments = {code};
    const host::Value text = caller.call("TRV_GetErrorMessage", arguments);
    const auto* const object = std::get_if<host::ObjectRef>(&text);
    const auto* const string = object ? dynamic_cast<const host::StringObject*>(object->get()) : nullptr;
    return string ? std::string(string->bytes()) : std::string();
}

}  // namespace

const Error* Operation::range_error(const Argument& argument) const {
    const auto found =
        std::ranges::find_if(errors, [&](const Error& each) { return each.about->argument == argument.about->name; });
    return found == errors.end() ? nullptr : &*found;
}

Reference::Reference(Caller& caller) {
    for (const describe::Family* family : describe::families())
        for (const describe::Operation& each : family->operations) {
            Operation operation = operation_of(caller, each, family->name);
            if (!operation.forms.empty()) operations_.push_back(std::move(operation));
        }
    for (const describe::Class* each : describe::classes())
        if (const host::RegisteredClass* registered = caller.host().registry().find_class(each->name))
            classes_.push_back(class_of(caller, *registered, *each));
    const auto knows_messages = [&](const Operation& each) {
        return each.about->name == std::string_view("TRV_GetErrorMessage");
    };
    if (!std::ranges::any_of(operations_, knows_messages)) return;
    for (const describe::ErrorName& each : describe::error_names())
        codes_.push_back({each.code, each.name, text_of_code(caller, each.code)});
}

}  // namespace tarvo::reference
