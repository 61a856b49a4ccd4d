#include "argument_values.h"

#include <cmath>
#include <optional>
#include <span>
#include <variant>

#include "border.h"
#include "call_numbers.h"
#include "conversion.h"
#include "names.h"
#include "placed_error.h"
#include "value_text.h"

namespace tarvo::language {

using host::Caller;
using host::Literal;
using host::ObjectRef;
using host::Parameter;
using host::Picture;
using host::TypeKind;
using host::Value;

namespace {

class ValueMaker {
public:
    ValueMaker(Caller& caller, const CallExpression& call, const Binding& binding, const Value& in_hand,
               const PictureReader& read)
        : caller_(caller),
          call_(call),
          binding_(binding),
          in_hand_(in_hand),
          size_(size_of(caller, in_hand)),
          read_(read) {}

    std::vector<Value> make() {
        std::vector<Value> values;
        for (std::size_t i = 0; i < binding_.fillings.size(); ++i) {
            parameter_ = &binding_.method->parameters[i];
            values.push_back(value_for(binding_.fillings[i]));
        }
        for (const describe::Caution* each : reference::CallNumbers(*binding_.method, values).cautions())
            note(each->argument, each->text);
        return values;
    }

    std::vector<std::string> take_notes() { return std::move(notes_); }

    Value operator()(const Literal& literal) {
        const auto* text = std::get_if<std::string>(&literal);
        if (text && parameter_->type.kind != TypeKind::string) return picture(*text);
        const Value value = caller_.value_of(literal);
        note_if_odd(value);
        return value;
    }

    Value operator()(const FileName& file) { return picture(file.path); }

    Value operator()(const Given& given) { return given.value; }

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
        argument_ = call_.arguments.data() + filling.argument;
        switch (filling.source) {
            case Filling::Source::object: return in_hand_;
            case Filling::Source::fitted_width: return fitted_size().width;
            case Filling::Source::fitted_height: return fitted_size().height;
            case Filling::Source::default_value: return caller_.value_of(*default_of(*binding_.method, *parameter_));
            case Filling::Source::variable: return variable({});
            case Filling::Source::argument: break;
        }
        return parameter_->by_ref ? variable(argument_->value) : std::visit(*this, argument_->value);
    }

    Size fitted_size() const { return fitted(std::get<Form>(argument_->value).numbers, size_); }

    // Returns a variable for a ByRef parameter. It begins with the value that was written or given if that fits, else
    // with 0 or false.
    Value variable(const Expression& written) {
        Value begin;
        if (const auto* literal = std::get_if<Literal>(&written)) begin = caller_.value_of(*literal);
        if (const auto* given = std::get_if<Given>(&written)) begin = given->value;
        if (const auto fitted = host::fit(begin, parameter_->type)) return fitted->value;
        return parameter_->type.kind == TypeKind::boolean ? Value(false) : host::fit(0, parameter_->type)->value;
    }

    Value picture(const std::string& path) { return read_(path); }

    Value instance(const std::string& class_name) {
        ObjectRef made = caller_.host().new_instance(class_name);
        if (!made) throw PlacedError(argument_->value_begin, "the plugin has no class " + class_name);
        return made;
    }

    Value rectangle(const Area& area) {
        const Value made = instance("TRV_Rectangle");
        caller_.set(made, "left", area.left);
        caller_.set(made, "top", area.top);
        caller_.set(made, "width", area.width);
        caller_.set(made, "height", area.height);
        return made;
    }

    Area without_border(const Form& form) {
        const std::int32_t levels = form.numbers.empty() ? 0 : integer_value(form.numbers[0], size_);
        if (levels < 0) throw PlacedError(form.numbers[0].position, "a border cannot be within less than 0 levels");
        const Value picture = caller_.convert(in_hand_, host::type_named("picture"));
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
            caller_.assign(made, "Value", place, element);
        }
        return made;
    }

    Value convolution(const std::vector<std::int32_t>& coefficients) {
        const Value made = instance("TRV_Convolution");
        const Value values[] = {made, caller_.host().new_integer_array(coefficients)};
        call_noting("SetCoefficients", values);
        return made;
    }

    std::vector<std::int32_t> integers(const Form& form) const {
        std::vector<std::int32_t> result;
        for (const Number& number : form.numbers) result.push_back(integer_value(number, size_));
        return result;
    }

    // Calls a method of an object, the first of the values, whose arguments are parts of the parameter's.
    void call_noting(const char* name, std::span<const Value> values) {
        std::vector<Value> arguments(values.begin() + 1, values.end());
        caller_.call_on(values.front(), name, arguments);
        for (const host::Callable* method : caller_.named(name))
            if (host::same_name(method->owner, host::type_name(values.front())))
                for (const describe::Caution* each : reference::CallNumbers(*method, values).cautions())
                    note(parameter_->name, each->text);
    }

    void note(std::string_view parameter, std::string_view text) {
        notes_.push_back(std::string(parameter).append(": ").append(text));
    }

    // Notes a literal that the language takes for something else than what was written.
    void note_if_odd(const Value& value) {
        const auto* real = std::get_if<double>(&value);
        const bool cut = real && parameter_->type.kind == TypeKind::integer && *real != std::trunc(*real);
        const host::FittedValue fitted = *host::fit(value, parameter_->type);  // or the call would not be bound so
        if (fitted.fit != host::Fit::loose || host::is_nil(value) || (real && !cut)) return;
        note(parameter_->name, value_text(value) + (cut ? " is cut to " : " is taken for ") + value_text(fitted.value));
    }

    Caller& caller_;
    const CallExpression& call_;
    const Binding& binding_;
    const Value& in_hand_;
    const Size size_;
    const PictureReader& read_;
    std::vector<std::string> notes_;
    const Parameter* parameter_ = nullptr;  // the parameter whose value is being made, and its argument
    const ArgumentExpression* argument_ = nullptr;
};

}  // namespace

Size size_of(Caller& caller, const Value& picture) {
    if (host::is_nil(picture)) return {};
    const auto* object = std::get_if<ObjectRef>(&picture);
    if (const auto* pixels = object ? dynamic_cast<const Picture*>(object->get()) : nullptr)
        return {pixels->width(), pixels->height()};
    if (!is_picture_class(host::type_name(picture))) return {};
    const auto side = [&](const char* name) { return std::get<std::int32_t>(caller.get(picture, name)); };
    return {side("width"), side("height")};
}

bool is_picture_class(std::string_view name) {
    return host::same_name(name, "picture") || host::same_name(name, "TRV_ClientPicture");
}

ArgumentValues make_values(Caller& caller, const CallExpression& call, const Binding& binding, const Value& in_hand,
                           const PictureReader& read) {
    ValueMaker maker(caller, call, binding, in_hand, read);
    std::vector<Value> values = maker.make();
    return {std::move(values), maker.take_notes()};
}

}  // namespace tarvo::language
