// Each golden's call, made through the library and through the loadable plugin in a host: the same pixels.

#include <gtest/gtest.h>

#include "cases.h"
#include "golden.h"
#include "object.h"
#include "tarvo.hpp"

namespace tarvo::test {
namespace {

// A picture of a host as one of the library. Strings keep depths and masks.
tarvo::Picture library_picture(Stage& stage, const ObjectRef& picture) {
    const Value string = stage.session.call(picture, "TRV_ConvertToString");
    const auto& bytes = dynamic_cast<const host::StringObject&>(*object_in(string).get());
    return tarvo::call("TRV_ConvertToPicture", std::string(bytes.bytes())).picture();
}

// An instance is copied by what it answers; a convolution answers nothing, and is copied from its record.
tarvo::Object library_object(Stage& stage, const ObjectRef& instance) {
    const std::string name = host::type_name(instance);
    tarvo::Object made(name);
    if (name == "TRV_Rectangle") {
        for (const char* side : {"left", "top", "width", "height"})
            made.call(side, std::get<std::int32_t>(stage.session.caller.get(instance, side)));
    } else if (name == "TRV_ColorMatrix") {
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                made.call("Value", i, j, std::get<double>(stage.session.call(instance, "Value", i, j)));
    } else if (name == "TRV_Convolution") {
        const auto width = std::get<std::int32_t>(stage.session.caller.get(instance, "width"));
        const auto* record = static_cast<const std::int32_t*>(dynamic_cast<host::Instance&>(*instance.get()).data());
        made.call("SetCoefficients", std::vector<std::int32_t>(record, record + width));
    } else {
        ADD_FAILURE() << "no way to copy a " << name;
    }
    return made;
}

tarvo::Value library_value(Stage& stage, const Value& given) {
    if (const auto* integer = std::get_if<std::int32_t>(&given)) return {static_cast<int>(*integer)};
    if (const auto* real = std::get_if<double>(&given)) return {*real};
    if (const auto* boolean = std::get_if<bool>(&given)) return {*boolean};
    if (const auto* color = std::get_if<Color>(&given)) return {tarvo::Color{color->rgb}};
    const ObjectRef object = object_in(given);
    if (!object) return {nullptr};
    if (object->type() == host::ObjectType::picture) return {library_picture(stage, object)};
    if (const auto* text = dynamic_cast<const host::StringObject*>(object.get())) return {std::string(text->bytes())};
    return {library_object(stage, object)};
}

class BothWays : public testing::TestWithParam<std::size_t> {};

TEST_P(BothWays, GiveTheSamePixels) {
    const GoldenCase& shown = golden_cases()[GetParam()];
    Stage stage;
    std::vector<Value> arguments = shown.arguments(stage);
    const auto& all = stage.session.caller.callables();
    const auto method =
        std::ranges::find_if(all, [&](const auto& each) { return is_declared(each, shown.declaration); });
    ASSERT_NE(method, all.end());

    tarvo::Value self = nullptr;
    std::vector<tarvo::Argument> given;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        tarvo::Value value = library_value(stage, arguments[i]);
        if (i == 0 && method->extends())
            self = std::move(value);
        else
            given.emplace_back(std::move(value));
    }
    const tarvo::Picture made = tarvo::call(method->declaration.name, self, given).picture();
    const ObjectRef expected = result_of(shown, stage);
    EXPECT_EQ(made.depth(), pixels(expected).depth());
    EXPECT_EQ(made.encode("pam"), pam_of(expected));
    EXPECT_EQ(checksum(made.encode("pam")), read_checksums()[std::string(shown.name)]);
}

INSTANTIATE_TEST_SUITE_P(, BothWays, testing::Range(std::size_t{0}, golden_cases().size()), [](const auto& instance) {
    std::string name(golden_cases()[instance.param].name);
    std::ranges::replace_if(
        name, [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
});

}  // namespace
}  // namespace tarvo::test
