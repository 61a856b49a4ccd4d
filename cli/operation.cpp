#include "operation.h"

#include <algorithm>
#include <chrono>
#include <variant>

#include "command_error.h"
#include "names.h"
#include "picture_io.h"
#include "scanner.h"

namespace tarvo::cli {

using host::Callable;
using host::Literal;
using host::ObjectRef;
using host::Parameter;
using host::TypeKind;
using host::Value;

namespace {

CommandError call_error(const std::string& text, std::size_t column, const std::string& message) {
    std::string line = text;
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return {ExitStatus::wrong_usage, message + "\n  " + line + "\n  " + std::string(column - 1, ' ') + '^'};
}

// Returns an error that points at the call's name.
CommandError name_error(const Operation& operation, const std::string& message) {
    return call_error(operation.text, operation.text.find_first_not_of(" \t") + 1, message);
}

// The methods that a call can mean, going by its name and the number of its arguments.
class Meanings {
public:
    Meanings(const host::Caller& caller, const CallExpression& call) {
        for (const Callable& callable : caller.callables())
            if (host::same_name(callable.declaration.name, call.name)) callables_.push_back(&callable);
        known_ = !callables_.empty();
        plain_ = known_ && std::ranges::all_of(callables_, is_plain);
        std::erase_if(callables_, [&](const Callable* c) { return !takes(*c, call.arguments.size()); });
    }

    // Whether any method has that name.
    bool known() const { return known_; }
    // Whether the call has no object.
    bool plain() const { return plain_; }

    bool declares_result() const {
        return std::ranges::any_of(callables_, [](const Callable* c) { return c->declaration.result.has_value(); });
    }

    // Returns the ByRef parameter that an argument is for; null if it is for another sort of parameter.
    const Parameter* output(std::size_t argument) const {
        return find(argument, [](const Parameter& parameter) { return parameter.by_ref; });
    }

    bool wants_object(std::size_t argument) const {
        return find(argument, [](const Parameter& parameter) { return parameter.type.kind == TypeKind::object; });
    }

    // Returns what an argument may be, such as "integer or color"; empty when no method takes so many arguments.
    std::string wanted_types(std::size_t argument) const {
        std::vector<std::string> types;
        for (const Callable* callable : callables_) {
            std::string type = host::to_string(parameter(*callable, argument).type);
            if (std::ranges::find(types, type) == types.end()) types.push_back(std::move(type));
        }
        std::string text;
        for (const std::string& type : types) text += (text.empty() ? "" : " or ") + type;
        return text;
    }

private:
    static bool is_plain(const Callable* callable) { return callable->owner.empty() && !callable->extends(); }

    std::size_t first_parameter() const { return plain_ ? 0 : 1; }

    bool takes(const Callable& callable, std::size_t arguments) const {
        const bool has_object = !callable.owner.empty() || callable.extends();
        const std::size_t count = arguments + first_parameter();
        if (has_object == plain_ || count > callable.parameters.size()) return false;
        return count == callable.parameters.size() || callable.parameters[count].default_value;
    }

    const Parameter& parameter(const Callable& callable, std::size_t argument) const {
        return callable.parameters[argument + first_parameter()];
    }

    template <class Test>
    const Parameter* find(std::size_t argument, Test test) const {
        for (const Callable* callable : callables_)
            if (test(parameter(*callable, argument))) return &parameter(*callable, argument);
        return nullptr;
    }

    std::vector<const Callable*> callables_;
    bool known_ = false;
    bool plain_ = false;
};

// Makes the values that written arguments stand for.
class ArgumentReader {
public:
    ArgumentReader(PluginSession& session, const Operation& operation, const Meanings& meanings, bool keep_depth)
        : session_(session), operation_(operation), meanings_(meanings), keep_depth_(keep_depth) {}

    std::vector<Value> read() {
        std::vector<Value> values;
        for (index_ = 0; index_ < operation_.call.arguments.size(); ++index_) {
            const Expression& written = operation_.call.arguments[index_].value;
            const Parameter* output = meanings_.output(index_);
            values.push_back(output ? variable(output->type, written) : std::visit(*this, written));
        }
        return values;
    }

    Value operator()(const Literal& literal) {
        const auto* text = std::get_if<std::string>(&literal);
        if (text && meanings_.wants_object(index_)) return picture(*text);
        return session_.caller().value_of(literal);
    }

    Value operator()(const FileName& name) {
        const std::string wanted = meanings_.wanted_types(index_);
        if (!wanted.empty() && !meanings_.wants_object(index_))
            throw argument_error("expected " + wanted + ", found the file name " + host::quoted(name.path));
        return picture(name.path);
    }

    Value operator()(const RectangleExpression& rectangle) {
        const Value made = instance("TRV_Rectangle");
        session_.caller().set(made, "left", rectangle.left);
        session_.caller().set(made, "top", rectangle.top);
        session_.caller().set(made, "width", rectangle.width);
        session_.caller().set(made, "height", rectangle.height);
        return made;
    }

    Value operator()(const MatrixExpression& matrix) {
        const Value made = instance("TRV_ColorMatrix");
        for (std::int32_t i = 0; i < 9; ++i) {
            Value place[] = {i / 3, i % 3};
            session_.caller().assign(made, "Value", place, matrix.elements[static_cast<std::size_t>(i)]);
        }
        return made;
    }

    Value operator()(const ConvolutionExpression& convolution) {
        const Value made = instance("TRV_Convolution");
        Value coefficients[] = {session_.host().new_integer_array(convolution.coefficients)};
        session_.caller().call_on(made, "SetCoefficients", coefficients);
        return made;
    }

private:
    // Returns a variable for a ByRef argument. It begins with the literal's value if that fits, else with 0 or false.
    Value variable(const host::Type& type, const Expression& written) {
        if (const auto* literal = std::get_if<Literal>(&written))
            if (const auto fitted = host::fit(session_.caller().value_of(*literal), type)) return fitted->value;
        return type.kind == TypeKind::boolean ? Value(false) : host::fit(0, type)->value;
    }

    Value picture(const std::string& path) { return read_picture(session_, path, keep_depth_); }

    Value instance(const std::string& class_name) {
        ObjectRef made = session_.host().new_instance(class_name);
        if (!made) throw argument_error("the plugin has no class " + class_name);
        return made;
    }

    CommandError argument_error(const std::string& message) const {
        return call_error(operation_.text, operation_.call.arguments[index_].column, message);
    }

    PluginSession& session_;
    const Operation& operation_;
    const Meanings& meanings_;
    const bool keep_depth_;
    std::size_t index_ = 0;
};

}  // namespace

Operation parse_operation(const std::string& text) {
    try {
        return {text, parse_call(text)};
    } catch (const ExpressionError& error) {
        throw call_error(text, error.column(), error.what());
    }
}

void check_known(PluginSession& session, const Operation& operation) {
    const std::string& name = operation.call.name;
    if (!Meanings(session.caller(), operation.call).known()) throw name_error(operation, "there is no method " + name);
}

Outcome run_operation(PluginSession& session, const Operation& operation, const Value& self, bool keep_depth) {
    const Meanings meanings(session.caller(), operation.call);
    try {
        std::vector<Value> arguments = ArgumentReader(session, operation, meanings, keep_depth).read();
        Outcome outcome;
        outcome.declares_result = meanings.declares_result();
        const auto begin = std::chrono::steady_clock::now();
        outcome.result = meanings.plain() ? session.caller().call(operation.call.name, arguments)
                                          : session.caller().call_on(self, operation.call.name, arguments);
        outcome.milliseconds =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
        outcome.code = session.last_error();
        for (std::size_t i = 0; i < arguments.size(); ++i)
            if (const Parameter* output = meanings.output(i)) outcome.outputs.push_back({output->name, arguments[i]});
        return outcome;
    } catch (const host::CallError& error) {
        throw name_error(operation, error.what());
    }
}

}  // namespace tarvo::cli
