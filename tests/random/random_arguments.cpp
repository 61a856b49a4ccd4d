#include "random_arguments.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

#include "good_arguments.h"

namespace tarvo::test {
namespace {

using host::Backing;
using host::Callable;
using host::Parameter;
using host::TypeKind;

constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr int kIntegers[] = {0,        1,       2,          3,     4,         5,      6,         7,     8,     9,
                             10,       11,      15,         16,    17,        20,     21,        22,    31,    32,
                             33,       -1,      -2,         -3,    -255,      -256,   255,       256,   257,   359,
                             360,      32767,   32768,      511,   1024,      -360,   65535,     65536, 65537, 1 << 24,
                             0xFFFFFF, 1 << 30, -(1 << 30), kMost, kMost - 1, kLeast, kLeast + 1};
// Of pictures to be made: small ones, or such as no host makes. What lies between would only cost memory.
constexpr int kSides[] = {0,  1,  1,  2,     3,     5,     8,     13,    17,      40,    65,        513,    1000,
                          -1, -7, 32, 32767, 32768, 65535, 65536, 70000, 1 << 30, kMost, kMost - 1, kLeast, kLeast + 1};
constexpr double kReals[] = {0.0,          -0.0,
                             1.0,          -1.0,
                             0.5,          -0.5,
                             1.5,          2.0,
                             10.0,         -10.0,
                             45.0,         90.0,
                             135.0,        180.0,
                             270.0,        359.9,
                             360.0,        -360.0,
                             255.0,        255.0000001,
                             256.0,        -0.0001,
                             999.9,        1e3,
                             -1e3,         1.0001,
                             1e-9,         1e-300,
                             5e-324,       1e300,
                             -1e300,       2147483647.0,
                             2147483648.0, -2147483649.0,
                             4294967296.0, kInfinity,
                             -kInfinity,   std::numeric_limits<double>::quiet_NaN()};
// The first ones are good everywhere; so also of the backings.
constexpr int kGoodDepths = 12;
constexpr int kDepths[] = {1, 2, 4, 8, 8, 16, 16, 24, 24, 32, 32, 32, 3, 5, 12};
constexpr int kGoodBackings = 5;
constexpr Backing kBackings[] = {Backing::graphics_world, Backing::graphics_world,   Backing::graphics_world,
                                 Backing::pixel_buffer,   Backing::drawing_commands, Backing::bitmap_context,
                                 Backing::refused};

// More pixels than a picture of a test needs.
constexpr std::int64_t kTooMany = std::int64_t{1} << 20;

bool would_be_large(int width, int height) {
    constexpr int kFeasible = 1 << 20;
    const bool feasible = width > 0 && height > 0 && width < kFeasible && height < kFeasible;
    return feasible && std::int64_t{width} * height > kTooMany;
}

}  // namespace

// --- numbers --------------------------------------------------------------------------------------------------------

int RandomArguments::integer() {
    if (tame_) return any_of(random_, 0, 4);
    if (one_in(8)) return static_cast<int>(random_());
    return one_in(3) ? any_of(random_, -20, 300) : one_of(kIntegers);
}

int RandomArguments::side() { return tame_ || one_in(2) ? any_of(random_, 1, 40) : one_of(kSides); }

double RandomArguments::real() {
    if (tame_) return std::uniform_real_distribution(0.0, 1.0)(random_);
    if (one_in(3)) return std::uniform_real_distribution(-1.0, 2.0)(random_);
    if (one_in(3)) return std::uniform_real_distribution(-10.0, 400.0)(random_);
    return one_of(kReals);
}

Value RandomArguments::number(const Callable& method, const Parameter& parameter, const std::vector<Value>& before) {
    const describe::Argument* const about = description_of(method, parameter);
    std::vector<double> ends;
    if (about && !parameter.by_ref)
        for (const describe::Bound& bound : {about->minimum, about->maximum})
            if (bound.given()) ends.push_back(test::value_of(bound, method, before));
    if (ends.empty() || wild_one_in(3)) return value_of(parameter.type, parameter.name);
    if (!tame_ && one_in(2)) {
        const double end = one_of(ends);
        return number_of(parameter, one_in(3) ? end : next_number(parameter, end, one_in(2) ? 1 : -1));
    }
    constexpr double kReach = 40;  // where there is one end
    const double low = about->minimum.given() ? ends.front() : ends.front() - kReach;
    const double high = about->maximum.given() ? ends.back() : ends.back() + kReach;
    return number_of(parameter, low + std::uniform_real_distribution(0.0, 1.0)(random_) * (high - low));
}

// --- pictures -------------------------------------------------------------------------------------------------------

Size RandomArguments::picture_size() {
    switch (any_of(random_, 0, 9)) {
        case 0: return {1, 1};
        case 1: return {1, any_of(random_, 1, 70)};
        case 2: return {any_of(random_, 1, 70), 1};
        case 3: return {any_of(random_, 510, 515), any_of(random_, 1, 3)};
        case 4: return {any_of(random_, 1, 3), any_of(random_, 510, 515)};
        default: return {any_of(random_, 1, 40), any_of(random_, 1, 40)};
    }
}

// Any, also such as only a broken program leaves.
Size RandomArguments::odd_size() {
    if (!one_in(3)) return picture_size();
    if (one_in(2)) return one_of(empty_sizes());
    const int side = any_of(random_, -40, 40), empty_side = any_of(random_, -40, 0);
    return one_in(2) ? Size{side, empty_side} : Size{empty_side, side};
}

// A pixel buffer is always 32 bits deep, and has no padding; a bitmap context has pixels.
ObjectRef RandomArguments::bare_picture(Size size, bool deep) {
    Shape shape = {.depth = one_of(first<int>(kDepths, kGoodDepths)),
                   .backing = one_of(first<Backing>(kBackings, kGoodBackings))};
    if (deep && one_in(2)) shape.depth = 32;
    if (one_in(4)) shape.row_padding = any_of(random_, 1, 9);
    if (shape.backing == Backing::bitmap_context && size.empty()) shape.backing = Backing::graphics_world;
    if (shape.backing == Backing::pixel_buffer) shape = {.depth = 32, .backing = Backing::pixel_buffer};
    shape.without_color_table = one_in(6);
    const ObjectRef made = random_picture(session_, random_, shape, size.width, size.height);
    if (wild_one_in(15)) pixels(made).set_purged(true);
    return made;
}

ObjectRef RandomArguments::picture() {
    if (!pictures_.empty() && one_in(8)) return one_of(pictures_);  // the same one twice
    const Size size = wild_one_in(6) ? odd_size() : usual_size_;
    const ObjectRef made = bare_picture(size, true);
    if (one_in(2)) pixels(made).set_mask(bare_picture(wild_one_in(5) ? odd_size() : size, false));
    pictures_.push_back(made);
    return made;
}

ObjectRef RandomArguments::client() {
    constexpr int kOwnDepths[] = {16, 24, 32};
    if (wild_one_in(12)) return session_.host.new_instance("TRV_ClientPicture");  // holds nothing
    if (one_in(2)) return client_of_picture(session_, picture());
    const Size size = wild_one_in(6) || usual_size_.empty() ? picture_size() : usual_size_;
    return client_in_own_memory(session_, random_, size.width, size.height, one_of(kOwnDepths), one_in(2));
}

// --- other objects --------------------------------------------------------------------------------------------------

// Often one that reaches into a picture, else anything.
ObjectRef RandomArguments::rectangle() {
    if (tame_) return session_.rectangle(any_of(random_, -2, 2), any_of(random_, -2, 2), any_of(random_, 3, 20), 9);
    if (one_in(2))
        return session_.rectangle(any_of(random_, -5, 40), any_of(random_, -5, 40), any_of(random_, 0, 50),
                                  any_of(random_, 0, 50));
    const int width = side(), height = side();
    return session_.rectangle(integer(), integer(), width, would_be_large(width, height) ? 2 : height);
}

ObjectRef RandomArguments::matrix() {
    const ObjectRef made = session_.host.new_instance("TRV_ColorMatrix");
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            std::vector<Value> place = {i, j};
            session_.caller.assign(made, "Value", place, real());
        }
    return made;
}

ObjectRef RandomArguments::convolution() {
    const ObjectRef made = session_.host.new_instance("TRV_Convolution");
    std::vector<Value> coefficients = {integers(24)};
    session_.caller.call_on(made, "SetCoefficients", coefficients);
    return made;
}

ObjectRef RandomArguments::integers(int most) {
    std::vector<std::int32_t> elements(static_cast<std::size_t>(any_of(random_, 0, most)));
    for (std::int32_t& element : elements) element = one_in(3) ? integer() : any_of(random_, -3, 9);
    return session_.host.new_integer_array(std::move(elements));
}

// Bytes like those of a picture, as long as they say or not; or any.
ObjectRef RandomArguments::string() {
    const auto big_endian = [](std::uint32_t value, int bytes) {
        std::string text;
        while (bytes-- > 0) text += static_cast<char>(value >> 8 * bytes);
        return text;
    };
    const int width = any_of(random_, 0, 9), height = any_of(random_, 0, 9);
    const bool masked = one_in(2);
    std::string text = big_endian(static_cast<std::uint32_t>(one_in(8) ? side() : width), 4);
    text += big_endian(static_cast<std::uint32_t>(one_in(8) ? side() : height), 4);
    text += big_endian(static_cast<std::uint32_t>(one_of(kDepths)), 2) + static_cast<char>(masked);
    text.resize(text.size() + static_cast<std::size_t>(width * height * (masked ? 4 : 3)), 'x');
    if (one_in(4)) text.resize(static_cast<std::size_t>(any_of(random_, 0, 40)));
    return session_.host.new_string(text);
}

ObjectRef RandomArguments::object(const host::Type& type) {
    if (type.array) return integers(30);
    if (type.kind == TypeKind::string) return string();
    if (type.name == "picture") return picture();
    if (type.name == "TRV_ClientPicture") return client();
    if (type.name == "TRV_Rectangle") return rectangle();
    if (type.name == "TRV_ColorMatrix") return matrix();
    if (type.name == "TRV_Convolution") return convolution();
    if (type.name == "screen") return session_.host.new_screen();
    throw std::runtime_error("no random " + type.name + " is known");
}

// --- all of a call --------------------------------------------------------------------------------------------------

Value RandomArguments::value_of(const host::Type& type, std::string_view name) {
    if (type.is_object()) return wild_one_in(12) ? Value(Nil{}) : Value(object(type));
    switch (type.kind) {
        case TypeKind::integer: return name == "width" || name == "height" ? side() : integer();
        case TypeKind::real: return real();
        case TypeKind::boolean: return one_in(2);
        default: return Color{any_color(random_)};
    }
}

// Of a picture that is to be made, one side at most is long.
void RandomArguments::keep_small(std::vector<Value>& arguments, const Callable& method) {
    Value *width = nullptr, *height = nullptr;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (method.parameters[i].name == "width") width = &arguments[i];
        if (method.parameters[i].name == "height") height = &arguments[i];
    }
    if (width && height && would_be_large(std::get<std::int32_t>(*width), std::get<std::int32_t>(*height))) *height = 2;
}

std::vector<Value> RandomArguments::for_method(const Callable& method) {
    pictures_.clear();
    tame_ = one_in(2);
    usual_size_ = wild_one_in(4) ? odd_size() : picture_size();
    std::vector<Value> arguments;
    for (const Parameter& parameter : method.parameters) arguments.push_back(number(method, parameter, arguments));
    keep_small(arguments, method);
    pictures_.clear();
    return arguments;
}

}  // namespace tarvo::test
