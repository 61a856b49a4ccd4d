#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Caution kCoefficientCautions[] = {
    {.argument = "coeffs",
     .text = "an even number of coefficients is ignored: write an odd number of them, 1 to 21",
     .when = {{.product = {{"coeffs", Part::count}}, .minimum = including(2), .multiple_of = 2}}},
    {.argument = "coeffs",
     .text = "more than 21 coefficients are ignored: write an odd number of them, 1 to 21",
     .when = {{.product = {{"coeffs", Part::count}}, .minimum = including(22)}}},
    {.argument = "coeffs",
     .text = "the coefficients add up to 0: such a kernel changes nothing",
     .when = {{.product = {{"coeffs", Part::sum}}, .minimum = including(0), .maximum = including(0)}}},
};

constexpr Operation kMethods[] = {
    {.name = "SetCoefficients",
     .summary = "Takes an odd number of coefficients, 1 to 21, in place of all there were",
     .words = {"kernel", "weights", "taps"},
     .arguments = {{.name = "coeffs", .text = "the coefficients; the middle one weighs the pixel itself"}},
     .changes_self = kEveryForm,
     .notes = {"Any other array, and nil, is ignored without a word."},
     .cautions = kCoefficientCautions},
    {.name = "MessageBox", .summary = "Shows width and sum, and below them the coefficients", .words = {"show"}},
};

}  // namespace

constinit const Class kConvolution{
    .name = "TRV_Convolution",
    .summary = "A row of integer weights, the kernel of a filter",
    .words = {"convolution", "kernel", "filter", "blur", "sharpen"},
    .properties = {{"sum", "always 0, whatever the coefficients are"},
                   {"width", "how many coefficients there are: 0, or an odd number from 1 to 21"}},
    .methods = kMethods,
    .notes = {"A new one has no coefficients: as a kernel, it changes nothing.",
              "Neither method touches the last error's code."}};

}  // namespace tarvo::describe
