#include "convolution_class.h"

#include <array>
#include <cstdio>

#include "host_services.h"
#include "registration.h"

namespace tarvo::plugin {
namespace {

enum Parameter : std::int32_t { kSum = 2, kWidth = 3 };

using Convolution = TRV_Convolution_Data;

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

Convolution* TRV_Convolution_GetData(REALobjectStruct* convolution) {
    return static_cast<Convolution*>(REALGetClassData(convolution, &TRV_Convolution_Class));
}

void TRV_Convolution_Constructor(REALobjectStruct* self) {
    if (Convolution* const c = TRV_Convolution_GetData(self)) *c = {};
}

void TRV_Convolution_Destructor(REALobjectStruct* self) { TRV_Convolution_Constructor(self); }

int TRV_Convolution_Getter_sum(REALobjectStruct* self, REALword parameter) {
    const Convolution* const c = TRV_Convolution_GetData(self);
    return c && parameter == kSum ? c->sum : 0;
}

int TRV_Convolution_Getter_width(REALobjectStruct* self, REALword parameter) {
    const Convolution* const c = TRV_Convolution_GetData(self);
    return c && parameter == kWidth ? c->width : 0;
}

// An array that is no filter, because its count is even, 0 or too large, changes nothing.
void TRV_Convolution_SetCoefficients(REALobjectStruct* self, REALintArrayStruct* coeffs) {
    Convolution* const c = TRV_Convolution_GetData(self);
    if (!c || !coeffs) return;
    const auto last = static_cast<std::int32_t>(REALGetArrayUBound(coeffs));
    if (last < 0 || last >= Convolution::kMostTaps || last % 2 != 0) return;
    *c = {};
    c->width = last + 1;
    for (std::int32_t i = 0; i <= last; ++i) c->coefficients[i] = static_cast<std::int32_t>(REALGetArrayInt(coeffs, i));
}

void TRV_Convolution_MessageBox(REALobjectStruct* self) {
    const Convolution* const c = TRV_Convolution_GetData(self);
    if (!c) return;
    constexpr std::size_t kLongestNumber = sizeof("-2147483648,");
    std::array<char, sizeof("width: ; sum: \n") + (2 + Convolution::kMostTaps) * kLongestNumber> text;
    int length = std::snprintf(text.data(), text.size(), "width: %d; sum: %d\n", c->width, c->sum);
    const char* separator = "";
    for (const std::int32_t coefficient : c->taps()) {
        length += std::snprintf(text.data() + length, text.size() - static_cast<std::size_t>(length), "%s%d", separator,
                                coefficient);
        separator = ",";
    }
    show_message(text.data());
}

namespace tarvo::plugin {
namespace {

const REALpropertyDefinition kProperties[] = {
    TRV_READ_ONLY_PROPERTY("Convolution", "sum", "integer", 0, TRV_Convolution_Getter_sum, kSum),
    TRV_READ_ONLY_PROPERTY("Convolution", "width", "integer", 0, TRV_Convolution_Getter_width, kWidth),
};

const REALmethodDefinition kMethods[] = {
    TRV_MEMBER(TRV_Convolution_SetCoefficients, "SetCoefficients(coeffs() as integer)", 0),
    TRV_MEMBER(TRV_Convolution_MessageBox, "MessageBox()", 0),
};

}  // namespace
}  // namespace tarvo::plugin

REALclassDefinition TRV_Convolution_Class = {
    .version = kREALinterfaceVersion,
    .name = "TRV_Convolution",
    .dataSize = sizeof(Convolution),
    .constructor = TRV_LIFE_ENTRY(TRV_Convolution_Constructor),
    .destructor = TRV_LIFE_ENTRY(TRV_Convolution_Destructor),
    .properties = kProperties,
    .propertyCount = std::size(kProperties),
    .methods = kMethods,
    .methodCount = std::size(kMethods),
};
