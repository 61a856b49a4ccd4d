#include "variants.h"

#include <algorithm>

namespace tarvo::test {
namespace {

using host::Backing;
using host::Callable;
using host::Parameter;

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

}  // namespace

std::vector<Variant> variants_of(const Callable& method) {
    if (takes(method, "TRV_ClientPicture"))
        return has_parameter(method, "as_picture") ? with_both_results(client_variants()) : client_variants();
    if (takes(method, "picture")) return picture_variants();
    if (takes(method, "string")) return {{.name = "no mask"}, {.name = "mask", .shape = {.mask_depth = 8}}};
    return {{.name = "plain"}};
}

}  // namespace tarvo::test
