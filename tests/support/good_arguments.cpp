#include "good_arguments.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "search.h"

namespace tarvo::test {

using describe::Bound;
using host::Callable;
using host::Parameter;
using host::TypeKind;

void PrintTo(const Variant& variant, std::ostream* out) { *out << variant.name; }

// --- what is described ----------------------------------------------------------------------------------------------

const describe::Argument* description_of(const Callable& method, const Parameter& parameter) {
    const describe::Operation* const operation = reference::description_of(method);
    if (!operation) return nullptr;
    const auto* const found = std::ranges::find(operation->arguments, parameter.name, &describe::Argument::name);
    return found == operation->arguments.end() ? nullptr : found;
}

bool is_of(const describe::Forms& forms, const Callable& method) {
    return forms.have([&](std::string_view name) {
        return std::ranges::find(method.parameters, name, &Parameter::name) != method.parameters.end();
    });
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
    if (parameter.type.kind == TypeKind::integer) return host::truncated(number);
    return number;
}

double next_number(const Parameter& parameter, double number, int step) {
    if (parameter.type.kind == TypeKind::integer) return number + step;
    return std::nextafter(number, step * std::numeric_limits<double>::infinity());
}

double value_of(const Bound& bound, const Callable& method, const std::vector<Value>& arguments) {
    if (bound.times.empty()) return bound.value;
    const auto factor = std::ranges::find(method.parameters, bound.times, &Parameter::name);
    return bound.value * number_in(arguments.at(static_cast<std::size_t>(factor - method.parameters.begin())));
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
    Maker(Session& session, Random& random, const Callable& method, const Variant& variant,
          const std::optional<Fixed>& fixed)
        : session_(session), random_(random), method_(method), variant_(variant), fixed_(fixed) {}

    std::vector<Value> arguments() {
        for (const Parameter& parameter : method_.parameters) arguments_.push_back(argument(parameter));
        return std::move(arguments_);
    }

private:
    ObjectRef picture() {
        Shape without_mask = variant_.shape;
        without_mask.mask_depth = 0;
        const auto [width, height] = variant_.size;
        const ObjectRef made = random_picture(session_, random_, without_mask, width, height);
        if (!variant_.shape.mask_depth) return made;
        const ObjectRef mask = session_.host.new_picture({.width = width,
                                                          .height = height,
                                                          .depth = variant_.shape.mask_depth,
                                                          .backing = variant_.mask_backing,
                                                          .any_sides = true});
        scribble(pixels(mask), random_);
        pixels(made).set_mask(mask);
        return made;
    }

    ObjectRef client() {
        switch (variant_.store) {
            case ClientStore::picture: return client_of_picture(session_, picture());
            case ClientStore::own_memory: break;
            case ClientStore::nothing: return session_.host.new_instance("TRV_ClientPicture");
        }
        return client_in_own_memory(session_, random_, variant_.size.width, variant_.size.height, variant_.shape.depth,
                                    variant_.shape.mask_depth != 0);
    }

    // A picture's, with a mask if the variant's have one.
    ObjectRef string() {
        constexpr char kWidth = kUsualSize.width, kHeight = kUsualSize.height;
        const bool masked = variant_.shape.mask_depth != 0;
        std::string text = {0, 0, 0, kWidth, 0, 0, 0, kHeight, 0, 32, static_cast<char>(masked)};
        for (int left = kWidth * kHeight * (masked ? 4 : 3); left > 0; --left) text += static_cast<char>(random_());
        return session_.host.new_string(text);
    }

    Value object(const Parameter& parameter) {
        const int number = static_cast<int>(arguments_.size());
        const std::string& type = parameter.type.name;
        const auto [width, height] = kUsualSize;
        if (parameter.type.array) return session_.host.new_integer_array({1, 2, 1});
        if (parameter.type.kind == TypeKind::string) return string();
        if (type == "picture" && parameter.name == "mask")
            return random_mask(session_, random_, 8, variant_.size.width, variant_.size.height);
        if (type == "picture") return picture();
        if (type == "TRV_ClientPicture") return client();
        if (type == "TRV_Rectangle") return session_.rectangle(2 - number, 2, width - 2, height - 2 + number);
        if (type == "screen") return session_.host.new_screen();
        const ObjectRef instance = session_.host.new_instance(type);
        if (!instance) throw std::runtime_error("no argument is known for a " + type);
        fill(session_, instance, type, number);
        return instance;
    }

    static Value left_out(const describe::Argument& argument) {
        if (argument.left_out == "nil") return host::Nil{};
        if (argument.left_out == "false") return false;
        return std::stoi(std::string(argument.left_out));
    }

    Value argument(const Parameter& parameter) {
        if (fixed_ && fixed_->parameter == arguments_.size()) return number_of(parameter, fixed_->number);
        const describe::Argument* const about = description_of(method_, parameter);
        if (variant_.left_out && about && !about->left_out.empty()) return left_out(*about);
        if (parameter.type.is_object()) return object(parameter);
        switch (parameter.type.kind) {
            case TypeKind::boolean: return parameter.name == "as_picture" ? variant_.as_picture : true;
            case TypeKind::color: return Color{0x336699};
            default: return parameter.by_ref ? number_of(parameter, kUntouched) : number(parameter, about);
        }
    }

    Value number(const Parameter& parameter, const describe::Argument* about) {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        const auto end = [&](const Bound& bound, double otherwise) {
            return bound.given() ? value_of(bound, method_, arguments_) : otherwise;
        };
        const Bound low = about ? about->minimum : Bound(), high = about ? about->maximum : Bound();
        return number_of(parameter, number_within(parameter, end(low, -kInfinity), end(high, kInfinity)));
    }

    Session& session_;
    Random& random_;
    const Callable& method_;
    const Variant& variant_;
    const std::optional<Fixed>& fixed_;
    std::vector<Value> arguments_;
};

}  // namespace

std::vector<Value> good_arguments(Session& session, Random& random, const Callable& method, const Variant& variant,
                                  const std::optional<Fixed>& fixed) {
    return Maker(session, random, method, variant, fixed).arguments();
}

}  // namespace tarvo::test
