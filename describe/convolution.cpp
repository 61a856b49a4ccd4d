#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Operation kMethods[] = {
    {.name = "SetCoefficients",
     .summary = "Takes an odd number of coefficients, 1 to 21, in place of all there were",
     .words = {"kernel", "weights", "taps"},
     .arguments = {{.name = "coeffs", .text = "the coefficients; the middle one weighs the pixel itself"}},
     .changes_self = kEveryForm,
     .notes = {"Any other array, and nil, is ignored without a word."}},
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
