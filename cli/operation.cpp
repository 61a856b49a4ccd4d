#include "operation.h"

#include <chrono>

#include "argument_values.h"
#include "excerpt.h"
#include "failure_reason.h"
#include "picture_io.h"
#include "shown_text.h"
#include "suggestions.h"

namespace tarvo::cli {

using host::Parameter;
using host::Value;

namespace {

CommandError call_error(ExitStatus status, const Operation& operation, std::string_view name,
                        const std::string& message, std::size_t position) {
    const std::string label = operation.label(name);
    return {status, label + (label.empty() ? "" : ": ") + message + '\n' + language::excerpt(operation.text, position)};
}

}  // namespace

std::string Operation::label(std::string_view name) const {
    const std::string shown_name = host::shown(host::beginning(name, 40));
    if (number == 0) return shown_name;
    return "call " + std::to_string(number) + (shown_name.empty() ? "" : ", ") + shown_name;
}

Operation parse_operation(const std::string& text, std::size_t number) {
    Operation operation{text, {}, number};
    try {
        operation.call = language::parse_call(text);
        return operation;
    } catch (const language::ExpressionError& error) {
        throw call_error(ExitStatus::wrong_usage, operation, "", error.what(), error.position());
    }
}

language::Binding bind_operation(PluginSession& session, const Operation& operation, std::string_view in_hand,
                                 ExitStatus if_wrong) {
    try {
        return language::bind_call(session.caller(), operation.call, operation.text, in_hand);
    } catch (const language::PlacedError& error) {
        const std::vector<const host::Callable*> methods =
            language::methods_named(session.caller(), operation.call.name);
        std::string message = error.what();
        if (methods.empty())
            message += language::suggestions(reference::Reference(session.caller()), operation.call.name);
        const std::string_view known_name = methods.empty() ? "" : std::string_view(methods.front()->declaration.name);
        throw call_error(if_wrong, operation, known_name, message, error.position());
    }
}

Outcome run_operation(PluginSession& session, const Operation& operation, const language::Binding& binding,
                      const Value& in_hand) {
    const std::string& name = binding.method->declaration.name;
    try {
        auto [values, notes] =
            language::make_values(session.caller(), operation.call, binding, in_hand,
                                  [&](const std::string& path) { return read_picture(session, path).picture; });
        Outcome outcome;
        outcome.notes = std::move(notes);
        outcome.declares_result = binding.method->declaration.result.has_value();
        const auto begin = std::chrono::steady_clock::now();
        outcome.result = session.caller().invoke(*binding.method, values);
        outcome.milliseconds =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
        outcome.code = session.last_error();
        if (outcome.code != 0 || (outcome.declares_result && host::is_nil(outcome.result)))
            outcome.reason = language::failure_reason(session.caller(), *binding.method, values, outcome.code);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const Parameter& parameter = binding.method->parameters[i];
            if (parameter.by_ref) outcome.outputs.push_back({parameter.name, values[i]});
        }
        return outcome;
    } catch (const language::PlacedError& error) {
        throw call_error(ExitStatus::operation_failed, operation, name, error.what(), error.position());
    } catch (const host::CallError& error) {
        throw call_error(ExitStatus::operation_failed, operation, name, error.what(), operation.call.name_begin);
    }
}

}  // namespace tarvo::cli
