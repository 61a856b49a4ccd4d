#include "arguments.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "names.h"

namespace tarvo::test {

using describe::Bound;
using host::Parameter;
using host::TypeKind;

std::vector<Setting> all_settings() {
    std::vector<Setting> all;
    for (const bool masked : {false, true})
        for (const bool own_memory : {false, true})
            for (const bool as_picture : {false, true}) all.push_back({masked, own_memory, as_picture, false});
    all.push_back({.left_out = true});
    return all;
}

void PrintTo(const Setting& setting, std::ostream* out) {
    *out << (setting.masked ? "masked" : "no masks") << (setting.own_memory ? ", own memory" : "")
         << (setting.as_picture ? ", as picture" : "") << (setting.left_out ? ", defaults" : "");
}

const reference::Argument* DescribedForm::argument(const Parameter& parameter) const {
    for (const reference::Argument& each : operation.arguments)
        if (each.about->name == parameter.name && has(each.forms)) return &each;
    return nullptr;
}

bool DescribedForm::has(const std::vector<std::size_t>& forms) const {
    return std::ranges::find(forms, index) != forms.end();
}

std::vector<DescribedForm> all_forms(const reference::Reference& reference) {
    std::vector<DescribedForm> all;
    const auto add = [&](const reference::Operation& operation) {
        for (std::size_t i = 0; i < operation.forms.size(); ++i) all.push_back({operation, i});
    };
    for (const reference::Operation& each : reference.operations()) add(each);
    for (const reference::Class& cls : reference.classes())
        for (const reference::Operation& each : cls.methods) add(each);
    return all;
}

const std::vector<std::string>& form_names() {
    static const std::vector<std::string> names = [] {
        Session session;
        const reference::Reference reference(session.caller);
        std::vector<std::string> all;
        for (const DescribedForm& each : all_forms(reference)) {
            const std::string& owner = each.callable().owner;
            all.push_back(owner + (owner.empty() ? "" : "_") + std::string(each.operation.about->name) + "_" +
                          std::to_string(each.index));
        }
        return all;
    }();
    return names;
}

// --- numbers --------------------------------------------------------------------------------------------------------

namespace {

double number_in(const Value& value) {
    const auto* const integer = std::get_if<std::int32_t>(&value);
    return integer ? *integer : std::get<double>(value);
}

// A third of the way, or a bit from the only end: nothing special, as whole quarter turns are.
double number_within(const Parameter& parameter, double low, double high) {
    constexpr double kABit = 8;
    double number = parameter.type.kind == TypeKind::integer ? 1 : 1.5;
    if (std::isfinite(low) && std::isfinite(high))
        number = low + (high - low) / 3;
    else if (std::isfinite(low))
        number = low + kABit;
    else if (std::isfinite(high))
        number = high - kABit;
    return parameter.type.kind == TypeKind::integer ? std::floor(number) : number;
}

}  // namespace

Value number_of(const Parameter& parameter, double number) {
    if (parameter.type.kind == TypeKind::integer) return static_cast<std::int32_t>(number);
    return number;
}

double value_of(const Bound& bound, const DescribedForm& form, const std::vector<Value>& arguments) {
    if (bound.times.empty()) return bound.value;
    const auto& parameters = form.callable().parameters;
    const auto factor = std::ranges::find(parameters, bound.times, &Parameter::name) - parameters.begin();
    return bound.value * number_in(arguments.at(static_cast<std::size_t>(factor)));
}

double next_number(const Parameter& parameter, double number, int step) {
    if (parameter.type.kind == TypeKind::integer) return number + step;
    return std::nextafter(number, step * std::numeric_limits<double>::infinity());
}

std::vector<Range> ranges_of(const DescribedForm& form, const std::vector<Value>& arguments) {
    std::vector<Range> ranges;
    const auto add = [&](std::size_t i, const Bound& bound, int outward) {
        if (!bound.given()) return;
        const Parameter& parameter = form.callable().parameters[i];
        const double end = value_of(bound, form, arguments);
        if (bound.exclusive())
            ranges.push_back({i, end, next_number(parameter, end, -outward)});
        else
            ranges.push_back({i, next_number(parameter, end, outward), end});
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const reference::Argument* const argument = form.argument(form.callable().parameters[i]);
        if (!argument || argument->by_ref) continue;
        add(i, argument->about->minimum, -1);
        add(i, argument->about->maximum, 1);
    }
    return ranges;
}

// --- arguments ------------------------------------------------------------------------------------------------------

namespace {

// What each class's instances are filled with, so that no two of one call are alike.
void fill(Session& session, const ObjectRef& object, const std::string& type, int number) {
    if (type == "TRV_ColorMatrix") {
        std::vector<Value> place = {0, 1};
        session.caller.assign(object, "Value", place, 0.5 * number);
    } else if (type == "TRV_Convolution") {
        std::vector<Value> weights = {session.host.new_integer_array({1, 3 + number, 1})};
        session.caller.call_on(object, "SetCoefficients", weights);
    }
}

class Maker {
public:
    Maker(Session& session, Random& random, const DescribedForm& form, const Setting& setting,
          const std::optional<Fixed>& fixed)
        : session_(session), random_(random), form_(form), setting_(setting), fixed_(fixed) {}

    std::vector<Value> arguments() {
        for (const Parameter& parameter : form_.callable().parameters) arguments_.push_back(argument(parameter));
        return std::move(arguments_);
    }

private:
    ObjectRef picture() {
        return random_picture(session_, random_, {.depth = 32, .mask_depth = setting_.masked ? 32 : 0}, kWidth,
                              kHeight);
    }

    ObjectRef client() {
        if (!setting_.own_memory) return client_of_picture(session_, picture());
        return client_in_own_memory(session_, random_, kWidth, kHeight, 32, setting_.masked);
    }

    Value object(const Parameter& parameter) {
        const int number = static_cast<int>(arguments_.size());
        const std::string& type = parameter.type.name;
        if (parameter.type.array) return session_.host.new_integer_array({1, 2, 1});
        if (parameter.type.kind == TypeKind::string) return session_.invoke("TRV_ConvertToString(extends p", picture());
        if (type == "picture") return picture();
        if (type == "TRV_ClientPicture") return client();
        if (type == "TRV_Rectangle") return session_.rectangle(2 - number, 2, kWidth - 2, kHeight - 2 + number);
        if (type == "screen") return session_.host.new_screen();
        const ObjectRef instance = session_.host.new_instance(type);
        fill(session_, instance, type, number);
        return instance;
    }

    Value left_out(const reference::Argument& argument) const {
        const std::string_view literal = argument.about->left_out;
        if (literal == "nil") return host::Nil{};
        if (literal == "false") return false;
        return std::stoi(std::string(literal));
    }

    Value argument(const Parameter& parameter) {
        constexpr int kUntouched = 4711;
        if (fixed_ && fixed_->parameter == arguments_.size()) return number_of(parameter, fixed_->number);
        const reference::Argument* const about = form_.argument(parameter);
        if (setting_.left_out && about && !about->required()) return left_out(*about);
        if (parameter.type.is_object()) return object(parameter);
        switch (parameter.type.kind) {
            case TypeKind::boolean: return parameter.name == "as_picture" ? setting_.as_picture : true;
            case TypeKind::color: return Color{0x336699};
            default: return parameter.by_ref ? number_of(parameter, kUntouched) : number(parameter, *about);
        }
    }

    Value number(const Parameter& parameter, const reference::Argument& argument) {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        const auto end = [&](const Bound& bound, double otherwise) {
            return bound.given() ? value_of(bound, form_, arguments_) : otherwise;
        };
        return number_of(parameter, number_within(parameter, end(argument.about->minimum, -kInfinity),
                                                  end(argument.about->maximum, kInfinity)));
    }

    Session& session_;
    Random& random_;
    const DescribedForm& form_;
    const Setting& setting_;
    const std::optional<Fixed>& fixed_;
    std::vector<Value> arguments_;
};

}  // namespace

std::vector<Value> good_arguments(Session& session, Random& random, const DescribedForm& form, const Setting& setting,
                                  const std::optional<Fixed>& fixed) {
    return Maker(session, random, form, setting, fixed).arguments();
}

// --- calls ----------------------------------------------------------------------------------------------------------

void PrintTo(const Failure& failure, std::ostream* out) {
    *out << failure.code << (failure.gives == describe::Gives::nothing ? " with nothing" : " with a result");
}

void clear_code(Session& session) { session.invoke("TRV_RowBytes(", session.picture(1, 1)); }

Answer call(Session& session, const DescribedForm& form, std::vector<Value>& arguments) {
    Answer answer = {session.caller.invoke(form.callable(), arguments), {}};
    const int code = session.last_error();
    const auto& result = form.callable().declaration.result;
    const bool object = result && result->is_object();
    if (object && host::is_nil(answer.result))
        answer.failure = {code, describe::Gives::nothing};
    else if (code != 0)
        answer.failure = {code, object ? describe::Gives::result : describe::Gives::nothing};
    return answer;
}

}  // namespace tarvo::test
