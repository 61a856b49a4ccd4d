#include "arguments.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace tarvo::test {
namespace {

using host::Backing;
using host::Callable;
using host::Parameter;
using host::TypeKind;

template <class T>
struct Named {
    std::string_view name;
    T value;
};

// For parameters that have bounds or want something special. Others take what is said below.
constexpr Named<int> kIntegers[] = {
    {"width", 9},
    {"height", 8},
    {"yield", kUsualSize.width},
    {"left", 1},
    {"top", 1},
    {"h", 1},
    {"v", 1},
    {"i", 1},
    {"j", 2},
    {"rotation", 1},
    {"ant_size", 2},
    {"ant_state", 1},
    {"pixelation", 2},
    {"bits_per_channel", 4},
    {"error_code", 4},
};
constexpr int kAnyInteger = 10;
constexpr Named<double> kDoubles[] = {
    {"overlay_fraction", 0.5},
    {"overlay_a_fraction", 0.5},
    {"shear", 0.5},
    {"rotation", 30.0},
};
constexpr double kAnyDouble = 1.5;

template <class T, std::size_t size>
T named(const Named<T> (&table)[size], std::string_view name, T otherwise) {
    const auto* const found = std::ranges::find(table, name, &Named<T>::name);
    return found == std::end(table) ? otherwise : found->value;
}

bool takes(const Callable& method, std::string_view class_name) {
    return std::ranges::any_of(method.parameters, [&](const Parameter& each) { return each.type.name == class_name; });
}

bool has_parameter(const Callable& method, std::string_view name) {
    return std::ranges::any_of(method.parameters, [&](const Parameter& each) { return each.name == name; });
}

const std::vector<Variant>& picture_variants() {
    static const std::vector<Variant> variants = {
        {.name = "32 bits", .shape = {.depth = 32}},
        {.name = "8 bits, 8-bit mask", .shape = {.depth = 8, .mask_depth = 8}},
        {.name = "16 bits, 32-bit mask", .shape = {.depth = 16, .mask_depth = 32}},
        {.name = "24 bits, mask in a bitmap context",
         .shape = {.depth = 24, .mask_depth = 32},
         .mask_backing = Backing::bitmap_context},
        {.name = "pixel buffer", .shape = {.depth = 32, .backing = Backing::pixel_buffer}},
        {.name = "pixel buffer, mask in another",
         .shape = {.depth = 32, .backing = Backing::pixel_buffer, .mask_depth = 32},
         .mask_backing = Backing::pixel_buffer},
        {.name = "drawing commands", .shape = {.depth = 32, .backing = Backing::drawing_commands}},
        {.name = "drawing commands, 8-bit mask",
         .shape = {.depth = 32, .backing = Backing::drawing_commands, .mask_depth = 8}},
        {.name = "0 x 6", .size = {0, 6}},
        {.name = "pixel buffer, 7 x 0, mask",
         .shape = {.depth = 32, .backing = Backing::pixel_buffer, .mask_depth = 32},
         .size = {7, 0}},
        {.name = "16 bits, bounds from right to left, mask", .shape = {.depth = 16, .mask_depth = 8}, .size = {-7, 6}},
        {.name = "drawing commands, 0 x 6",
         .shape = {.depth = 32, .backing = Backing::drawing_commands},
         .size = {0, 6}},
    };
    return variants;
}

std::vector<Variant> client_variants() {
    std::vector<Variant> variants = picture_variants();
    const auto add = [&](const char* name, int depth, bool masked, ClientStore store) {
        variants.push_back({.name = name, .shape = {.depth = depth, .mask_depth = masked ? 8 : 0}, .store = store});
    };
    add("own memory, 32 bits, mask", 32, true, ClientStore::own_memory);
    add("own memory, 24 bits", 24, false, ClientStore::own_memory);
    add("own memory, 16 bits, mask", 16, true, ClientStore::own_memory);
    variants.push_back({.name = "nothing", .size = {}, .store = ClientStore::nothing});
    return variants;
}

// Each variant with a result in own memory, then with one in a host picture.
std::vector<Variant> with_both_results(const std::vector<Variant>& variants) {
    std::vector<Variant> both = variants;
    for (Variant variant : variants) {
        variant.name += ", as picture";
        variant.as_picture = true;
        both.push_back(std::move(variant));
    }
    return both;
}

struct Maker {
    Session& session;
    Random& random;
    const Variant& variant;

    ObjectRef picture() const {
        Shape without_mask = variant.shape;
        without_mask.mask_depth = 0;
        const auto [width, height] = variant.size;
        const ObjectRef made = random_picture(session, random, without_mask, width, height);
        if (!variant.shape.mask_depth) return made;
        const ObjectRef mask = session.host.new_picture({.width = width,
                                                         .height = height,
                                                         .depth = variant.shape.mask_depth,
                                                         .backing = variant.mask_backing,
                                                         .any_sides = true});
        scribble(pixels(mask), random);
        pixels(made).set_mask(mask);
        return made;
    }

    ObjectRef client() const {
        switch (variant.store) {
            case ClientStore::picture: return client_of_picture(session, picture());
            case ClientStore::own_memory: break;
            case ClientStore::nothing: return session.host.new_instance("TRV_ClientPicture");
        }
        return client_in_own_memory(session, random, variant.size.width, variant.size.height, variant.shape.depth,
                                    variant.shape.mask_depth != 0);
    }

    ObjectRef string() const {
        return session.host.new_string(
            std::string("\0\0\0\1\0\0\0\1\0\x20\1RGBm", 15));  // a picture of one pixel, with a mask
    }

    Value object(const Parameter& parameter) const {
        const std::string& type = parameter.type.name;
        if (parameter.type.array) return session.host.new_integer_array({1, 2, 1});
        if (parameter.type.kind == TypeKind::string) return string();
        if (type == "picture" && parameter.name == "mask")
            return random_mask(session, random, 8, variant.size.width, variant.size.height);
        if (type == "picture") return picture();
        if (type == "TRV_ClientPicture") return client();
        if (type == "TRV_Rectangle") return session.rectangle(1, 1, kUsualSize.width - 2, kUsualSize.height - 2);
        if (type == "screen") return session.host.new_screen();
        if (const ObjectRef instance = session.host.new_instance(type)) return instance;
        throw std::runtime_error("no argument is known for a " + type);
    }

    Value make(const Parameter& parameter) const {
        if (parameter.type.is_object()) return object(parameter);
        switch (parameter.type.kind) {
            case TypeKind::integer:
                return parameter.by_ref ? kUntouched : named(kIntegers, parameter.name, kAnyInteger);
            case TypeKind::real:
                return parameter.by_ref ? double{kUntouched} : named(kDoubles, parameter.name, kAnyDouble);
            case TypeKind::boolean: return parameter.name == "as_picture" ? variant.as_picture : true;
            default: return Color{0x336699};
        }
    }
};

}  // namespace

std::vector<Variant> variants_of(const Callable& method) {
    if (takes(method, "TRV_ClientPicture"))
        return has_parameter(method, "as_picture") ? with_both_results(client_variants()) : client_variants();
    if (takes(method, "picture")) return picture_variants();
    return {{.name = "plain"}};
}

std::vector<Value> arguments_for(Session& session, Random& random, const Callable& method, const Variant& variant) {
    const Maker maker = {session, random, variant};
    std::vector<Value> arguments;
    for (const Parameter& parameter : method.parameters) arguments.push_back(maker.make(parameter));
    return arguments;
}

}  // namespace tarvo::test
