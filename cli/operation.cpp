#include "operation.h"

#include <chrono>
#include <cmath>
#include <numeric>
#include <optional>
#include <variant>

#include "border.h"
#include "excerpt.h"
#include "failure_reason.h"
#include "picture_io.h"
#include "shown_text.h"
#include "suggestions.h"
#include "value_text.h"

namespace tarvo::cli {

using host::Color;
using host::Literal;
using host::ObjectRef;
using host::Parameter;
using host::Picture;
using host::TypeKind;
using host::Value;

namespace {

CommandError call_error(ExitStatus status, const Operation& operation, std::string_view name,
                        const std::string& message, std::size_t position) {
    const std::string label = operation.label(name);
    return {status, label + (label.empty() ? "" : ": ") + message + '\n' + excerpt(operation.text, position)};
}

// Makes the values that the parameters of a call get.
class ValueMaker {
public:
    ValueMaker(PluginSession& session, const Operation& operation, const Binding& binding, const Value& in_hand,
               bool keep_depth)
        : session_(session),
          operation_(operation),
          binding_(binding),
          in_hand_(in_hand),
          size_(size_of(session, in_hand)),
          keep_depth_(keep_depth) {}

    std::vector<Value> make() {
        std::vector<Value> values;
        for (std::size_t i = 0; i < binding_.fillings.size(); ++i) {
            parameter_ = &binding_.method->parameters[i];
            values.push_back(value_for(binding_.fillings[i]));
        }
        return values;
    }

    std::vector<std::string> take_notes() { return std::move(notes_); }

    Value operator()(const Literal& literal) {
        const auto* text = std::get_if<std::string>(&literal);
        if (text && parameter_->type.kind != TypeKind::string) return picture(*text);
        const Value value = session_.caller().value_of(literal);
        note_if_odd(value);
        return value;
    }

    Value operator()(const FileName& file) { return picture(file.path); }

    Value operator()(const Formula& formula) {
        if (parameter_->type.kind == TypeKind::integer) return integer_value(formula, size_);
        return real_value(formula, size_);
    }

    Value operator()(const FormulaOrFile& both) {
        return parameter_->type.is_object() ? (*this)(both.file) : (*this)(both.formula);
    }

    Value operator()(const Form& form) {
        switch (form.kind) {
            case Form::Kind::rectangle: {
                const std::vector<std::int32_t> sides = integers(form);
                return rectangle({sides[0], sides[1], sides[2], sides[3]});
            }
            case Form::Kind::border: return rectangle(without_border(form));
            case Form::Kind::matrix: return matrix(form);
            case Form::Kind::convolution: return convolution(integers(form));
            case Form::Kind::fit: break;  // value_for fills its two parameters
        }
        return {};
    }

private:
    Value value_for(const Filling& filling) {
        argument_ = operation_.call.arguments.data() + filling.argument;
        switch (filling.source) {
            case Filling::Source::object: return in_hand_;
            case Filling::Source::fitted_width: return fitted_size().width;
            case Filling::Source::fitted_height: return fitted_size().height;
            case Filling::Source::default_value:
                return session_.caller().value_of(*default_of(*binding_.method, *parameter_));
            case Filling::Source::variable: return variable({});
            case Filling::Source::argument: break;
        }
        return parameter_->by_ref ? variable(argument_->value) : std::visit(*this, argument_->value);
    }

    Size fitted_size() const { return fitted(std::get<Form>(argument_->value).numbers, size_); }

    // Returns a variable for a ByRef parameter. It begins with the literal's value if that fits, else with 0 or false.
    Value variable(const Expression& written) {
        if (const auto* literal = std::get_if<Literal>(&written))
            if (const auto fitted = host::fit(session_.caller().value_of(*literal), parameter_->type))
                return fitted->value;
        return parameter_->type.kind == TypeKind::boolean ? Value(false) : host::fit(0, parameter_->type)->value;
    }

    Value picture(const std::string& path) { return read_picture(session_, path, keep_depth_); }

    Value instance(const std::string& class_name) {
        ObjectRef made = session_.host().new_instance(class_name);
        if (!made) throw PlacedError(argument_->value_begin, "the plugin has no class " + class_name);
        return made;
    }

    Value rectangle(const Area& area) {
        const Value made = instance("TRV_Rectangle");
        session_.caller().set(made, "left", area.left);
        session_.caller().set(made, "top", area.top);
        session_.caller().set(made, "width", area.width);
        session_.caller().set(made, "height", area.height);
        return made;
    }

    Area without_border(const Form& form) {
        const std::int32_t levels = form.numbers.empty() ? 0 : integer_value(form.numbers[0], size_);
        if (levels < 0) throw PlacedError(form.numbers[0].position, "a border cannot be within less than 0 levels");
        const Value picture = session_.caller().convert(in_hand_, host::type_named("picture"));
        const auto area = inside_border(dynamic_cast<const Picture&>(*std::get<ObjectRef>(picture).get()), levels);
        if (!area)
            throw PlacedError(argument_->value_begin,
                              "nothing is left without the border: the whole picture has the corner's color");
        return *area;
    }

    Value matrix(const Form& form) {
        const Value made = instance("TRV_ColorMatrix");
        for (std::int32_t i = 0; i < 9; ++i) {
            Value place[] = {i / 3, i % 3};
            const double element = real_value(form.numbers[static_cast<std::size_t>(i)], size_);
            session_.caller().assign(made, "Value", place, element);
        }
        return made;
    }

    Value convolution(const std::vector<std::int32_t>& coefficients) {
        const Value made = instance("TRV_Convolution");
        Value argument[] = {session_.host().new_integer_array(coefficients)};
        session_.caller().call_on(made, "SetCoefficients", argument);
        note_if_odd(coefficients);
        return made;
    }

    std::vector<std::int32_t> integers(const Form& form) const {
        std::vector<std::int32_t> result;
        for (const Number& number : form.numbers) result.push_back(integer_value(number, size_));
        return result;
    }

    void note(const std::string& text) { notes_.push_back(parameter_->name + ": " + text); }

    // Notes a literal that the language takes for something else than what was written.
    void note_if_odd(const Value& value) {
        const auto* real = std::get_if<double>(&value);
        const bool cut = real && parameter_->type.kind == TypeKind::integer && *real != std::trunc(*real);
        const auto fitted = host::fit(value, parameter_->type);
        if (!fitted || fitted->fit != host::Fit::loose || host::is_nil(value) || (real && !cut)) return;
        note(value_text(value) + (cut ? " is cut to " : " is taken for ") + value_text(fitted->value));
    }

    void note_if_odd(const std::vector<std::int32_t>& coefficients) {
        constexpr std::size_t kMost = 21;
        const std::size_t count = coefficients.size();
        if (count > kMost || (count % 2 == 0 && count > 0))
            note("a convolution takes an odd number of coefficients, at most " + std::to_string(kMost) + "; these " +
                 std::to_string(count) + " are ignored");
        else if (std::accumulate(coefficients.begin(), coefficients.end(), std::int64_t{0}) == 0)
            note("the coefficients add up to 0: such a convolution changes nothing");
    }

    PluginSession& session_;
    const Operation& operation_;
    const Binding& binding_;
    const Value& in_hand_;
    const Size size_;
    const bool keep_depth_;
    std::vector<std::string> notes_;
    const Parameter* parameter_ = nullptr;  // the parameter whose value is being made, and its argument
    const ArgumentExpression* argument_ = nullptr;
};

}  // namespace

std::string Operation::label(std::string_view name) const {
    const std::string shown_name = host::shown(host::beginning(name, 40));
    if (number == 0) return shown_name;
    return "call " + std::to_string(number) + (shown_name.empty() ? "" : ", ") + shown_name;
}

Operation parse_operation(const std::string& text, std::size_t number) {
    Operation operation{text, {}, number};
    try {
        operation.call = parse_call(text);
        return operation;
    } catch (const ExpressionError& error) {
        throw call_error(ExitStatus::wrong_usage, operation, "", error.what(), error.position());
    }
}

Binding bind_operation(PluginSession& session, const Operation& operation, std::string_view in_hand,
                       ExitStatus if_wrong) {
    try {
        return bind_call(session.caller(), operation.call, operation.text, in_hand);
    } catch (const PlacedError& error) {
        const std::vector<const host::Callable*> methods = methods_named(session.caller(), operation.call.name);
        std::string message = error.what();
        if (methods.empty()) message += suggestions(reference::Reference(session.caller()), operation.call.name);
        const std::string_view known_name = methods.empty() ? "" : std::string_view(methods.front()->declaration.name);
        throw call_error(if_wrong, operation, known_name, message, error.position());
    }
}

Size size_of(PluginSession& session, const Value& picture) {
    if (host::is_nil(picture)) return {};
    if (const auto* pixels = dynamic_cast<const Picture*>(std::get<ObjectRef>(picture).get()))
        return {pixels->width(), pixels->height()};
    const auto side = [&](const char* name) { return std::get<std::int32_t>(session.caller().get(picture, name)); };
    return {side("width"), side("height")};
}

Outcome run_operation(PluginSession& session, const Operation& operation, const Binding& binding, const Value& in_hand,
                      bool keep_depth) {
    const std::string& name = binding.method->declaration.name;
    try {
        ValueMaker maker(session, operation, binding, in_hand, keep_depth);
        std::vector<Value> values = maker.make();
        Outcome outcome;
        outcome.notes = maker.take_notes();
        outcome.declares_result = binding.method->declaration.result.has_value();
        const auto begin = std::chrono::steady_clock::now();
        outcome.result = session.caller().invoke(*binding.method, values);
        outcome.milliseconds =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
        outcome.code = session.last_error();
        if (outcome.code != 0 || (outcome.declares_result && host::is_nil(outcome.result)))
            outcome.reason = failure_reason(session, *binding.method, values, outcome.code);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const Parameter& parameter = binding.method->parameters[i];
            if (parameter.by_ref) outcome.outputs.push_back({parameter.name, values[i]});
        }
        return outcome;
    } catch (const PlacedError& error) {
        throw call_error(ExitStatus::operation_failed, operation, name, error.what(), error.position());
    } catch (const host::CallError& error) {
        throw call_error(ExitStatus::operation_failed, operation, name, error.what(), operation.call.name_begin);
    }
}

}  // namespace tarvo::cli
