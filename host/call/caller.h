#pragma once

// Calls of registered methods by their declarations, as a program makes them.

#include <deque>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "declaration.h"
#include "host.h"

namespace tarvo::host {

// A call that the language would refuse: no such method, no overload that takes these arguments, two that do.
class CallError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// One method, its declaration parsed.
struct Callable {
    Declaration declaration;
    void* function = nullptr;
    void* setter = nullptr;
    std::string owner;  // the class whose member it is; empty for a global method
};

// Everything that can be called in a host. Reads the registry once: make it after plugins are loaded.
//
// Arguments are given as values; a `ByRef` argument's value is replaced by what the method leaves in it. Every argument
// is held with a reference for the length of the call. What an object is decides what it can do, not what a declaration
// said it would be; where a declaration wants another class, conversions (`operator_convert`) of the object's or the
// wanted class are tried.
class Caller {
public:
    // Throws DeclarationError when a registered declaration cannot be parsed.
    explicit Caller(Host& host);

    // A global method called as a plain function: `TRV_MakeGradient(...)`. A method declared with `extends` takes its
    // object as first argument. Throws CallError.
    Value call(std::string_view name, std::span<Value> arguments);
    // `self.name(arguments)`: a member of the object's class, a class extension's method, or a global method that
    // extends the class. Throws CallError.
    Value call_on(const Value& self, std::string_view name, std::span<Value> arguments);
    // `self.name` and `self.name = value`. Throws CallError.
    Value get(const Value& self, std::string_view property);
    void set(const Value& self, std::string_view property, const Value& value);
    // `self.name(arguments) = value`: an assignable method. Throws CallError.
    void assign(const Value& self, std::string_view name, std::span<Value> arguments, const Value& value);
    // A value as a variable of the given type would take it: converted, or refused with CallError.
    Value convert(const Value& value, const Type& type);

    // Every callable, in order of registration; class members after the globals.
    const std::deque<Callable>& callables() const { return callables_; }
    Host& host() { return host_; }

private:
    Host& host_;
    std::deque<Callable> callables_;
};

}  // namespace tarvo::host
