#include "caller.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "call_frame.h"
#include "names.h"

namespace tarvo::host {
namespace {

constexpr std::string_view kConversionName = "operator_convert";

// Returns a text such as "(picture, integer)".
std::string types_of(std::span<const Value> values) {
    std::string result = "(";
    for (const Value& value : values) result += (result.size() > 1 ? ", " : "") + type_name(value);
    return result + ")";
}

// Returns a text such as "TRV_Rectangle.Area() as integer".
std::string describe(const Callable& callable) {
    return (callable.owner.empty() ? "" : callable.owner + ".") + callable.declaration.text;
}

std::string list_of(const std::vector<const Callable*>& callables) {
    std::string result;
    for (const Callable* callable : callables) result += "\n  " + describe(*callable);
    return result;
}

Parameter object_of(const RegisteredClass& owner) {
    Parameter self;
    self.name = "self";
    self.type = type_named(owner.name);
    self.extends = owner.is_extension;
    return self;
}

const RegisteredProperty* find_property(const std::deque<RegisteredClass>& classes, std::string_view class_name,
                                        std::string_view name) {
    for (const RegisteredClass& cls : classes) {
        if (!same_name(cls.name, class_name)) continue;
        for (const RegisteredProperty& property : cls.properties)
            if (same_name(property.name, name)) return &property;
    }
    return nullptr;
}

}  // namespace

bool Callable::changes_its_picture() const {
    const auto is_variable = [](const Parameter& parameter) { return parameter.by_ref; };
    return extends() && !declaration.result && std::none_of(parameters.begin(), parameters.end(), is_variable);
}

Callables::Callables(const Registry& registry) {
    for (const RegisteredMethod& method : registry.methods()) add(method, nullptr);
    for (const RegisteredClass& cls : registry.classes())
        for (const RegisteredMethod& method : cls.methods) add(method, &cls);
    for (const RegisteredClass& cls : registry.extensions())
        for (const RegisteredMethod& method : cls.methods) add(method, &cls);
}

void Callables::add(const RegisteredMethod& method, const RegisteredClass* owner) {
    Callable& callable = all_.emplace_back();
    callable.declaration = parse_declaration(method.declaration);
    callable.function = method.function;
    callable.setter = method.setter;
    callable.parameters = callable.declaration.parameters;
    if (owner) {
        callable.owner = owner->name;
        callable.parameters.insert(callable.parameters.begin(), object_of(*owner));
    }
    by_name_[folded(callable.declaration.name)].push_back(&callable);
}

const std::vector<const Callable*>& Callables::named(std::string_view name) const {
    const auto found = by_name_.find(folded(name));
    return found == by_name_.end() ? none_ : found->second;
}

Caller::Caller(Host& host) : host_(host), own_(std::make_unique<const Callables>(host.registry())), callables_(*own_) {}

// Returns a text such as "picture.TRV_Add(picture, integer)".
std::string Caller::describe_call(std::string_view name, const Arguments& arguments) {
    const std::string self = arguments.have_self() ? type_name(arguments.values.front()) + "." : "";
    return self + std::string(name) + types_of(arguments.variables);
}

// --- finding what is called -----------------------------------------------------------------------------------------

Caller::Candidates Caller::members_named(const Value& self, std::string_view name) const {
    Candidates result = named(name);
    const std::string type = type_name(self);
    std::erase_if(result,
                  [&](const Callable* callable) { return !callable->extends() && !same_name(callable->owner, type); });
    return result;
}

const RegisteredProperty& Caller::property_named(const Value& self, std::string_view name) const {
    const std::string type = type_name(self);
    const Registry& registry = host_.registry();
    const RegisteredProperty* property = find_property(registry.classes(), type, name);
    if (!property) property = find_property(registry.extensions(), type, name);
    if (!property) throw CallError(type + " has no property " + std::string(name));
    return *property;
}

std::optional<Fit> Caller::fit_of(const Value& argument, const Parameter& parameter) const {
    const std::optional<FittedValue> fitted = fit(argument, parameter.type);
    if (parameter.by_ref && (!fitted || fitted->fit != Fit::exact)) return std::nullopt;
    if (fitted) return fitted->fit;
    if (conversion(argument, parameter.type)) return Fit::converted;
    return std::nullopt;
}

std::optional<Caller::CallableMatch> Caller::match(const Callable& callable, const Arguments& arguments) const {
    const std::vector<Parameter>& parameters = callable.parameters;
    const std::size_t count = arguments.values.size();
    if (count > parameters.size()) return std::nullopt;
    if (count < parameters.size() && !parameters[count].default_value) return std::nullopt;
    CallableMatch result;
    result.callable = &callable;
    result.defaults = parameters.size() - count;
    for (std::size_t i = 0; i < count; ++i) {
        const std::optional<Fit> fit = fit_of(arguments.values[i], parameters[i]);
        if (!fit) return std::nullopt;
        result.fits.push_back(*fit);
    }
    return result;
}

const Callable& Caller::choose(const Candidates& candidates, std::string_view name, const Arguments& arguments) const {
    if (candidates.empty()) throw CallError("there is no method for " + describe_call(name, arguments));
    std::vector<CallableMatch> matches;
    for (const Callable* candidate : candidates)
        if (std::optional<CallableMatch> found = match(*candidate, arguments)) matches.push_back(std::move(*found));
    if (matches.empty())
        throw CallError("no method takes " + describe_call(name, arguments) + "; there is" + list_of(candidates));

    if (const CallableMatch* best = best_match(matches)) return *best->callable;
    Candidates equals;
    for (const CallableMatch& match : matches) equals.push_back(match.callable);
    throw CallError("several methods take " + describe_call(name, arguments) + " equally well:" + list_of(equals));
}

// --- calling --------------------------------------------------------------------------------------------------------

Value Caller::run(const Callable& callable, const Arguments& arguments, const Value* assigned) try {
    CallFrame frame;
    for (std::size_t i = 0; i < callable.parameters.size(); ++i) {
        const Parameter& parameter = callable.parameters[i];
        if (i >= arguments.values.size())
            frame.pass(value_of(*parameter.default_value));
        else if (parameter.by_ref)
            frame.pass_by_ref(arguments.values[i], arguments.variable(i));
        else
            frame.pass(convert(arguments.values[i], parameter.type));
    }
    std::optional<Type> result = callable.declaration.result;
    void* entry = callable.function;
    if (assigned) {
        frame.pass(convert(*assigned, *result));
        entry = callable.setter;
        result.reset();
    }
    const auto call = [&] {
        host_.watch_paper();
        Value returned = frame.call(entry, result, host_.objects());
        if (host_.cancelled()) throw Cancelled();  // which no plugin lets through
        return returned;
    };
    Value returned = call();
    if (host_.paper_may_show()) {
        returned = Nil{};
        host_.use_white_paper();
        returned = call();
    }
    frame.write_back();
    return returned;
} catch (const CallError& error) {
    throw CallError(describe(callable) + ": " + error.what());
}

Value Caller::call(std::string_view name, std::span<Value> values) {
    const Arguments arguments(values);
    Candidates candidates = named(name);
    std::erase_if(candidates, [](const Callable* callable) { return !callable->owner.empty(); });
    return run(choose(candidates, name, arguments), arguments);
}

Value Caller::call_on(const Value& self, std::string_view name, std::span<Value> values) {
    const Arguments arguments(self, values);
    return run(choose(members_named(self, name), name, arguments), arguments);
}

Value Caller::invoke(const Callable& callable, std::span<Value> values) {
    const Arguments arguments(values);
    if (!match(callable, arguments)) throw CallError(describe(callable) + " does not take " + types_of(values));
    return run(callable, arguments);
}

void Caller::assign(const Value& self, std::string_view name, std::span<Value> values, const Value& value) {
    const Arguments arguments(self, values);
    Candidates candidates = members_named(self, name);
    std::erase_if(candidates, [](const Callable* callable) { return !callable->assignable(); });
    if (candidates.empty()) throw CallError(describe_call(name, arguments) + " cannot be assigned to");
    run(choose(candidates, name, arguments), arguments, &value);
}

Value Caller::get(const Value& self, std::string_view name) {
    const RegisteredProperty& property = property_named(self, name);
    if (!property.getter) throw CallError(type_name(self) + "." + property.name + " cannot be read");
    CallFrame frame;
    frame.pass(self);
    frame.pass(property.parameter);
    return frame.call(property.getter, type_named(property.type), host_.objects());
}

void Caller::set(const Value& self, std::string_view name, const Value& value) {
    const RegisteredProperty& property = property_named(self, name);
    if (!property.setter) throw CallError(type_name(self) + "." + property.name + " is read-only");
    CallFrame frame;
    frame.pass(self);
    frame.pass(property.parameter);
    frame.pass(convert(value, type_named(property.type)));
    frame.call(property.setter, std::nullopt, host_.objects());
}

// --- conversions ----------------------------------------------------------------------------------------------------

std::optional<Fit> Caller::fit_of_class(std::string_view class_name, const Type& type) const {
    if (same_name(class_name, to_string(type))) return Fit::exact;
    if (!type.array && conversion_between(class_name, type)) return Fit::converted;
    return std::nullopt;
}

// Returns null when neither the value's class nor the wanted one has a conversion.
const Callable* Caller::conversion(const Value& value, const Type& type) const {
    return is_nil(value) || type.array ? nullptr : conversion_between(type_name(value), type);
}

const Callable* Caller::conversion_between(std::string_view value_type, const Type& type) const {
    for (const Callable* callable : named(kConversionName)) {
        const std::optional<Type>& result = callable->declaration.result;
        const std::vector<Parameter>& parameters = callable->parameters;
        const bool from_value = parameters.size() == 1 && result && same_name(callable->owner, value_type) &&
                                same_name(result->name, type.name);
        const bool takes_value = parameters.size() == 2 && same_name(callable->owner, type.name) &&
                                 same_name(to_string(parameters[1].type), value_type);
        if (from_value || takes_value) return callable;
    }
    return nullptr;
}

Value Caller::run_conversion(const Callable& conversion, const Value& value, const Type& type) {
    if (conversion.parameters.size() == 1) return run(conversion, Arguments(value, {}));
    const Value instance = host_.new_instance(type.name);
    if (is_nil(instance)) throw CallError("no new " + type.name + " can be made");
    Value source = value;
    run(conversion, Arguments(instance, {&source, 1}));
    return instance;
}

Value Caller::convert(const Value& value, const Type& type) {
    if (std::optional<FittedValue> fitted = fit(value, type)) return std::move(fitted->value);
    const Callable* by_class = conversion(value, type);
    if (!by_class) throw CallError("expected " + to_string(type) + ", found " + type_name(value));
    const std::optional<FittedValue> converted = fit(run_conversion(*by_class, value, type), type);
    if (!converted) throw CallError(describe(*by_class) + " gave no " + to_string(type));
    return converted->value;
}

Value Caller::value_of(const Literal& literal) {
    const auto make = [this](const auto& plain) -> Value {
        if constexpr (std::is_same_v<decltype(plain), const std::string&>)
            return host_.new_string(plain);
        else
            return plain;
    };
    return std::visit(make, literal);
}

}  // namespace tarvo::host
