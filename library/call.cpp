// Calls, by name with values, and by text.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "argument_values.h"
#include "call_binding.h"
#include "call_expression.h"
#include "excerpt.h"
#include "failure.h"
#include "host_call.h"
#include "shown_text.h"
#include "suggestions.h"

namespace tarvo::library {
namespace {

using host::Callable;
using host::Value;

// Throws Failure for methods that all need an object, without one.
void check_object(const std::vector<const Callable*>& methods, const Value& self) {
    if (methods.empty() || !host::is_nil(self)) return;
    for (const Callable* method : methods)
        if (method->extends()) {
            Failure failure = wrong_use(method->declaration.name + ": there is no " +
                                        method->parameters.front().type.name + " to call it on");
            failure.operation = method->declaration.name;
            throw failure;
        }
}

std::string type_in_hand(const Value& self) { return host::is_nil(self) ? "" : host::type_name(self); }

language::CallExpression expression_of(HostCall& call, const char* operation,
                                       std::span<const tarvo_argument> arguments) {
    language::CallExpression expression{operation, 0, {}};
    bool named = false;
    for (const tarvo_argument& argument : arguments) {
        language::ArgumentExpression& made = expression.arguments.emplace_back();
        if (argument.name) made.name = argument.name;
        if (argument.name && made.name.empty()) throw wrong_use("an argument's name is empty");
        if (named && made.name.empty()) throw wrong_use("an argument without a name is behind one with a name");
        named = !made.name.empty();
        made.value = language::Given{call.value_of(argument.value)};
        made.begin = made.value_begin = made.value_end = 0;
    }
    return expression;
}

// Runs the work of a call. `placed(message, position)` tells an error of the call's text.
template <class Work, class Placed>
auto told_by(const HostCall& call, Placed placed, Work work) {
    try {
        return work();
    } catch (const language::PlacedError& error) {
        call.fail(TARVO_USE, placed(error.what(), error.position()), error.parameter());
    } catch (const host::CallError& error) {
        call.fail(TARVO_USE, placed(error.what(), 0));
    } catch (const host::Cancelled&) {
        call.fail(TARVO_CANCELLED, "stopped by its caller");
    }
}

tarvo_result* call_by_name(const char* operation, const tarvo_value* given_self,
                           std::span<const tarvo_argument> arguments, const tarvo_call_options* given_options) {
    const tarvo_call_options options = call_options(given_options);
    HostCall call(options);
    const auto message = [](const std::string& what, std::size_t) { return what; };
    return told_by(call, message, [&] {
        const Value self = given_self ? call.self_of(*given_self) : Value();
        const language::CallExpression expression = expression_of(call, operation, arguments);
        const std::string_view name = operation;
        const std::size_t dot = name.find('.');
        if (dot != std::string_view::npos)
            return call.run_member(name.substr(0, dot), name.substr(dot + 1), self, expression);
        const auto methods = language::methods_named(call.caller(), name);
        check_object(methods, self);
        call.name_operation(methods);
        const language::Binding binding =
            language::bind_call(call.caller(), expression, expression.name, type_in_hand(self));
        return call.run(expression, binding, self);
    });
}

// A call as a text.
class WrittenCall {
    template <class Work>
    auto told(Work work) {
        const auto message = [&](const std::string& what, std::size_t position) {
            return what + "\n" + language::excerpt(text_, position);
        };
        return told_by(call_, message, work);
    }

public:
    WrittenCall(const std::string& text, const tarvo_call_options& options) : text_(text), call_(options) {}

    tarvo_result* run(const tarvo_value* given_self) {
        return told([&] {
            parse();
            const Value self = given_self ? call_.self_of(*given_self) : Value();
            check_object(language::methods_named(call_.caller(), expression_.name), self);
            return call_.run(expression_, bind(type_in_hand(self)), self);
        });
    }

    // What comes of a call on an object of that class, if it is a picture; see tarvo_check.
    const char* check(const std::string& on) {
        return told([&]() -> const char* {
            parse();
            const language::Binding binding = bind(on);
            const auto& result = binding.method->declaration.result;
            if (!result || !language::is_picture_class(result->name)) return nullptr;
            // What comes of a client picture is one, or a picture, as it turns out; both do where one is wanted.
            const host::RegisteredClass* const cls = binding.has_object() ? registry().find_class(on) : nullptr;
            return cls ? cls->name.c_str() : result->name.c_str();
        });
    }

private:
    void parse() { expression_ = language::parse_call(text_); }

    // Who names no operation is told of those that are called nearly so.
    language::Binding bind(const std::string& on) {
        const auto methods = language::methods_named(call_.caller(), expression_.name);
        call_.name_operation(methods);
        try {
            return language::bind_call(call_.caller(), expression_, text_, on);
        } catch (const language::PlacedError& error) {
            if (!methods.empty()) throw;
            throw language::PlacedError(
                error.position(),
                error.what() + language::suggestions(reference::Reference(call_.caller()), expression_.name));
        }
    }

    const std::string& text_;
    HostCall call_;
    language::CallExpression expression_;
};

}  // namespace
}  // namespace tarvo::library

using namespace tarvo::library;

tarvo_status tarvo_call(const char* operation, const tarvo_value* self, const tarvo_argument* arguments, size_t count,
                        const tarvo_call_options* options, tarvo_result** result, tarvo_error** error) {
    if (result) *result = nullptr;
    return guarded(error, [&] {
        require(operation, "operation");
        require(result, "result");
        if (count != 0) require(arguments, "arguments");
        *result = call_by_name(operation, self, {arguments, count}, options);
    });
}

tarvo_status tarvo_apply(const char* text, tarvo_picture* picture, const tarvo_call_options* options,
                         tarvo_result** result, tarvo_error** error) {
    tarvo_value self = {};
    if (picture) self.type = TARVO_PICTURE;
    self.as.picture = picture;
    return tarvo_apply_on(text, &self, options, result, error);
}

tarvo_status tarvo_apply_on(const char* text, const tarvo_value* self, const tarvo_call_options* options,
                            tarvo_result** result, tarvo_error** error) {
    if (result) *result = nullptr;
    return guarded(error, [&] {
        require(text, "text");
        require(result, "result");
        const std::string words = text;
        const tarvo_call_options how = call_options(options);
        *result = WrittenCall(words, how).run(self);
    });
}

tarvo_status tarvo_check(const char* text, const char* on, const char** gives, tarvo_error** error) {
    if (gives) *gives = nullptr;
    return guarded(error, [&] {
        require(text, "text");
        const std::string words = text;
        const tarvo_call_options how = call_options(nullptr);
        const char* const given = WrittenCall(words, how).check(on ? on : "");
        if (gives) *gives = given;
    });
}
