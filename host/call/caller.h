#pragma once

// Calls registered methods by their declarations, as a program does.

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "conversion.h"
#include "declaration.h"
#include "host.h"

namespace tarvo::host {

// A call that the language would refuse: there is no such method, no overload takes these arguments, or two do.
class CallError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// One method with its parsed declaration.
struct Callable {
    Declaration declaration;
    void* function = nullptr;
    void* setter = nullptr;
    std::string owner;  // the class whose member it is; empty for a global method
    // What the entry point takes: a member's object first, then what is declared. The object of a class extension's
    // method counts as one that the method `extends`.
    std::vector<Parameter> parameters = {};

    bool extends() const { return !parameters.empty() && parameters.front().extends; }
    bool assignable() const { return setter && declaration.result; }
    // Whether what is called for is a change of the object that the method extends, since nothing else comes of it.
    bool changes_its_picture() const;
};

// Everything that a registry has to call, its declarations parsed. Nothing changes afterwards: any number of callers
// may share it, on any threads. The registry outlives it.
class Callables {
public:
    // Throws DeclarationError when a registered declaration cannot be parsed.
    explicit Callables(const Registry& registry);
    Callables(Registry&&) = delete;
    Callables(const Callables&) = delete;
    Callables& operator=(const Callables&) = delete;

    // In order of registration, class members after the global methods.
    const std::deque<Callable>& all() const { return all_; }
    // Those of one name, in the same order; valid as long as this lives.
    const std::vector<const Callable*>& named(std::string_view name) const;

private:
    void add(const RegisteredMethod& method, const RegisteredClass* owner);

    std::deque<Callable> all_;
    std::map<std::string, std::vector<const Callable*>> by_name_;  // the keys are folded names
    std::vector<const Callable*> none_;
};

// Calls everything that can be called in a host. Without callables that are shared, it reads the registry once, so it
// is to be made after plugins are loaded.
//
// Arguments are given as values; a `ByRef` argument's value is replaced by what the method leaves in it. Every argument
// is held with a reference for the length of the call. What an object is decides what it can do, not what a declaration
// said it would be; where a declaration wants another class, conversions (`operator_convert`) of the object's or the
// wanted class are tried.
//
// Of several methods with the same name, the best match is called (see best_match). If there is none, the call is
// refused. ByRef arguments fit only exactly.
//
// Pixels that were in memory before are never in a result: a call in which a service failed, and which may have given
// back a picture that it did not paint, is made once more on white paper.
//
// A call whose host threw Cancelled while it yielded throws it too, once the plugin is out of the operation.
class Caller {
public:
    // Throws DeclarationError when a registered declaration cannot be parsed.
    explicit Caller(Host& host);
    // With the callables of the host's registry.
    Caller(Host& host, const Callables& shared) : host_(host), callables_(shared) {}

    // Calls a global method as a plain function: `TRV_MakeGradient(...)`. A method declared with `extends` takes its
    // object as first argument. Throws CallError.
    Value call(std::string_view name, std::span<Value> arguments);
    // Calls `self.name(arguments)`: a member of the object's class, a class extension's method, or a global method that
    // extends the class. Throws CallError.
    Value call_on(const Value& self, std::string_view name, std::span<Value> arguments);
    // Calls this very method of `callables()`, whatever overloads there are. A member takes its object as first
    // argument, which may be nil. Throws CallError.
    Value invoke(const Callable& callable, std::span<Value> arguments);
    // Read and assign a property: `self.name` and `self.name = value`. Throw CallError.
    Value get(const Value& self, std::string_view property);
    void set(const Value& self, std::string_view property, const Value& value);
    // Assigns through an assignable method: `self.name(arguments) = value`. Throws CallError.
    void assign(const Value& self, std::string_view name, std::span<Value> arguments, const Value& value);
    // Converts a value as a variable of the given type would, or refuses it with CallError.
    Value convert(const Value& value, const Type& type);
    // Returns the value of a literal. A text becomes a string object.
    Value value_of(const Literal& literal);

    // Everything that can be called, in order of registration, class members after the global methods.
    const std::deque<Callable>& callables() const { return callables_.all(); }
    // Returns the callables of one name, in the same order.
    const std::vector<const Callable*>& named(std::string_view name) const { return callables_.named(name); }
    // Returns how objects of a class fit a type: exactly, by a conversion, or not at all. The class is named as
    // `type_name` names it.
    std::optional<Fit> fit_of_class(std::string_view class_name, const Type& type) const;
    Host& host() { return host_; }

private:
    // The arguments of a call, held for as long as it lasts: the object that the method is called on, if any, and the
    // values of the variables, to which ByRef arguments are written back.
    struct Arguments {
        explicit Arguments(std::span<Value> of) : values(of.begin(), of.end()), variables(of) {}
        Arguments(const Value& self, std::span<Value> of) : Arguments(of) { values.insert(values.begin(), self); }
        bool have_self() const { return values.size() > variables.size(); }
        Value& variable(std::size_t i) const { return variables[i - (have_self() ? 1 : 0)]; }

        std::vector<Value> values;
        std::span<Value> variables;
    };
    using Candidates = std::vector<const Callable*>;
    struct CallableMatch : Match {
        const Callable* callable;
    };

    static std::string describe_call(std::string_view name, const Arguments& arguments);

    Candidates members_named(const Value& self, std::string_view name) const;
    const RegisteredProperty& property_named(const Value& self, std::string_view name) const;

    std::optional<Fit> fit_of(const Value& argument, const Parameter& parameter) const;
    std::optional<CallableMatch> match(const Callable& callable, const Arguments& arguments) const;
    const Callable& choose(const Candidates& candidates, std::string_view name, const Arguments& arguments) const;
    const Callable* conversion(const Value& value, const Type& type) const;
    const Callable* conversion_between(std::string_view value_type, const Type& type) const;
    Value run_conversion(const Callable& conversion, const Value& value, const Type& type);
    // Calls the method's function, or its setter if there is a value to assign.
    Value run(const Callable& callable, const Arguments& arguments, const Value* assigned = nullptr);

    Host& host_;
    std::unique_ptr<const Callables> own_;  // null for a caller that shares them
    const Callables& callables_;
};

}  // namespace tarvo::host
