// Calls as the tool takes them: parsed, bound to a method, computed, and told of when they are wrong.

#include <string>
#include <string_view>

#include "call_binding.h"
#include "excerpt.h"
#include "fuzz_check.h"
#include "host.h"
#include "placed_error.h"
#include "real_interface.h"
#include "shown_text.h"

using namespace tarvo::language;
namespace host = tarvo::host;

namespace {

// Nothing is called: only the declarations count.
int register_declarations(REALresolver callback) {
    static int never_called = 0;
    constexpr const char* kDeclarations[] = {
        "TRV_Info(extends p as picture) as string",
        "TRV_Stretch(extends p as picture, width as integer, height as integer, yield as integer) as picture",
        "TRV_Stretch(extends cp as TRV_ClientPicture, width as integer, height as integer, yield as integer, "
        "as_picture as boolean) as TRV_ClientPicture",
        "TRV_Composite(extends p as picture, overlay as picture, overlay_fraction as double, left as integer, top as "
        "integer, yield as integer) as picture",
        "TRV_Composite(extends p as picture, rect as TRV_Rectangle, overlay_color as color, overlay_fraction as "
        "double, yield as integer) as picture",
        "TRV_AdjustRGB(extends p as picture, rect as TRV_Rectangle, cm as TRV_ColorMatrix) as picture",
        "TRV_AdjustRGB(extends p as picture, rect as TRV_Rectangle, red as integer, green as integer) as picture",
        "TRV_Convolute(extends p as picture, rect as TRV_Rectangle, c as TRV_Convolution) as picture",
        "TRV_GetAverageRGB(extends p as picture, rect as TRV_Rectangle, ByRef red as integer, ByRef share as double)",
        "TRV_MakeGradient(width as integer, height as integer, a as color, yield as integer) as picture",
        "F(extends p as picture, text as string, c as color = &c000000, b as boolean = true) as boolean",
    };
    const auto resolver = reinterpret_cast<REALresolver>(callback("ResolverPPC"));
    const auto add = reinterpret_cast<void (*)(const REALmethodDefinition*)>(resolver("PluginRegisterMethod"));
    static REALmethodDefinition methods[std::size(kDeclarations)];
    for (std::size_t i = 0; i < std::size(kDeclarations); ++i) {
        methods[i] = {&never_called, nullptr, kDeclarations[i], 0};
        add(&methods[i]);
    }
    return 1;
}

const host::Caller& caller() {
    static host::Host host;
    static const bool started = host.start_plugin(register_declarations);
    FUZZ_CHECK(started);
    static const host::Caller result(host);
    return result;
}

void check_message(std::string_view message) {
    FUZZ_CHECK(message.size() < 4000);
    FUZZ_CHECK(host::is_plain_text(message) && message.find_first_of("\r\t") == std::string_view::npos);
}

void check_error(const PlacedError& error, std::string_view text) {
    FUZZ_CHECK(error.position() <= text.size());
    check_message(error.what());
    check_message(excerpt(text, error.position()));
}

// Every parameter gets something, and every argument goes somewhere.
void check_binding(const Binding& binding, const CallExpression& call) {
    FUZZ_CHECK(binding.fillings.size() == binding.method->parameters.size());
    std::size_t used = 0;
    for (const Filling& filling : binding.fillings) {
        const bool is_argument =
            filling.source == Filling::Source::argument || filling.source == Filling::Source::fitted_width;
        FUZZ_CHECK(!is_argument || filling.argument < call.arguments.size());
        if (is_argument) ++used;
    }
    FUZZ_CHECK(used == call.arguments.size());
}

void compute(const Form& form, const Size& picture) {
    for (const Number& number : form.numbers) real_value(number, picture);
    if (form.kind != Form::Kind::fit) return;
    const Size size = fitted(form.numbers, picture);
    FUZZ_CHECK(size.width >= 1 && size.height >= 1);
}

void compute(const Expression& expression, const Size& picture) {
    if (const auto* form = std::get_if<Form>(&expression)) return compute(*form, picture);
    const auto* both = std::get_if<FormulaOrFile>(&expression);
    const auto* formula = both ? &both->formula : std::get_if<Formula>(&expression);
    if (formula) integer_value(*formula, picture);
}

template <class Work>
void try_to(std::string_view text, Work work) {
    try {
        work();
    } catch (const PlacedError& error) {
        check_error(error, text);
    }
}

void check_call(const CallExpression& call, std::string_view text) {
    FUZZ_CHECK(!call.name.empty() && call.name_begin < text.size());
    std::size_t end = call.name_begin + 1;
    for (const ArgumentExpression& argument : call.arguments) {
        FUZZ_CHECK(argument.begin > end && argument.value_begin >= argument.begin);
        FUZZ_CHECK(argument.value_end > argument.value_begin && argument.value_end < text.size());
        end = argument.value_end - 1;
        for (const Size& picture : {Size{0, 0}, Size{1, 1}, Size{32767, 3}})
            try_to(text, [&] { compute(argument.value, picture); });
    }
    for (const char* in_hand : {"", "picture", "TRV_ClientPicture"})
        try_to(text, [&] { check_binding(bind_call(caller(), call, text, in_hand), call); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try_to(text, [&] { check_call(parse_call(text), text); });
    return 0;
}
