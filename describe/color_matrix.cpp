#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Operation kMethods[] = {
    {.name = "Value",
     .summary = "An element, to read and to assign",
     .words = {"element", "coefficient"},
     .arguments = {{.name = "i", .text = "the row, 0 to 2: the source's red, green or blue"},
                   {.name = "j", .text = "the column, 0 to 2: the result's red, green or blue"}},
     .notes = {"Outside of the matrix it reads 0 and takes nothing."}},
    {.name = "CopyFrom",
     .summary = "Takes all nine elements of another matrix",
     .words = {"copy", "assign"},
     .arguments = {{.name = "source", .text = "the other matrix; nil changes nothing"}},
     .changes_self = kEveryForm},
    {.name = "Multiply",
     .summary = "Meant for the product with a number or a matrix",
     .words = {"product", "scale"},
     .arguments = {{.name = "factor", .text = "a number"}, {.name = "source", .text = "a matrix"}},
     .errors = {{0, "always, with such a host", {}, Gives::nothing, forms_with("factor")},
                {0, "no new matrix can be made", {}, Gives::nothing, forms_with("source")}},
     .notes = {"The two are registered crosswise: behind the declaration with a number is the product of two matrices, "
               "behind the one with a matrix the product with a number. Each looks for its argument where the other's "
               "is passed.",
               "With a host that fills unused arguments with zeros the first gives nil and the second a matrix of "
               "zeros."}},
    {.name = "Invert", .summary = "Gives nil: it inverts nothing", .words = {"inverse"}, .errors = {{0, "always"}}},
    {.name = "MessageBox", .summary = "Shows the nine elements with two decimals, in three rows", .words = {"show"}},
};

}  // namespace

constinit const Class kColorMatrix{
    .name = "TRV_ColorMatrix",
    .summary = "Nine numbers by which TRV_AdjustRGB mixes the channels of colours",
    .words = {"matrix", "color", "colour", "sepia", "channel mixer", "greyscale"},
    .methods = kMethods,
    .notes = {"A new one is the identity, which changes nothing.",
              "Element i, j says how much of the source's channel i goes into channel j.",
              "No method touches the last error's code."}};

}  // namespace tarvo::describe
