#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Argument kOther{.name = "rect", .text = "the other rectangle; nil counts as none"};

constexpr Operation kMethods[] = {
    {.name = "IsValid", .summary = "Whether width and height are 1 or more", .words = {"empty", "valid"}},
    {.name = "Equals", .summary = "Whether the rectangles are the same", .words = {"same"}, .arguments = {kOther}},
    {.name = "CopyFrom",
     .summary = "Becomes the other rectangle",
     .words = {"copy", "assign"},
     .arguments = {kOther},
     .changes_self = kEveryForm},
    {.name = "OffsetBy",
     .summary = "Moves by so much; the size stays",
     .words = {"move", "shift"},
     .arguments = {{.name = "h", .text = "to the right", .unit = "pixels"},
                   {.name = "v", .text = "down", .unit = "pixels"}},
     .changes_self = kEveryForm},
    {.name = "MoveTo",
     .summary = "Moves to a place; the size stays",
     .words = {"move", "place"},
     .arguments = {{.name = "left", .text = "the new left edge", .unit = "pixels"},
                   {.name = "top", .text = "the new top edge", .unit = "pixels"}},
     .changes_self = kEveryForm},
    {.name = "Resize",
     .summary = "Sets the size; the origin stays",
     .words = {"size"},
     .arguments = {{.name = "width", .text = "the new width", .unit = "pixels"},
                   {.name = "height", .text = "the new height", .unit = "pixels"}},
     .changes_self = kEveryForm},
    {.name = "InsetBy",
     .summary = "Moves each edge inward; outward when negative",
     .words = {"shrink", "grow", "border"},
     .arguments = {{.name = "h", .text = "the left and the right edge", .unit = "pixels"},
                   {.name = "v", .text = "the top and the bottom edge", .unit = "pixels"}},
     .changes_self = kEveryForm},
    {.name = "ScaleBy",
     .summary = "Multiplies the size, fractions cut off; the top left corner stays",
     .words = {"scale", "size"},
     .arguments = {{.name = "factor", .text = "by what width and height are multiplied"}},
     .changes_self = kEveryForm},
    {.name = "Area", .summary = "Width times height, in 32 bits", .words = {"size"}},
    {.name = "UnionWith",
     .summary = "Becomes the smallest rectangle that holds both",
     .words = {"union", "join"},
     .arguments = {kOther},
     .changes_self = kEveryForm,
     .notes = {"An empty rectangle still contributes its corner."}},
    {.name = "IntersectWith",
     .summary = "Becomes what both share",
     .words = {"intersection", "clip"},
     .arguments = {kOther},
     .changes_self = kEveryForm,
     .notes = {"Rectangles that do not meet leave a width or height of 0 or below."}},
    {.name = "Contains",
     .summary = "Whether the other rectangle lies within this one",
     .words = {"inside", "within"},
     .arguments = {kOther}},
    {.name = "Intersects", .summary = "Whether the rectangles meet", .words = {"overlap"}, .arguments = {kOther}},
    {.name = "MessageBox", .summary = "Shows all six values and \"valid\" or \"invalid\"", .words = {"show"}},
};

}  // namespace

constinit const Class kRectangle{
    .name = "TRV_Rectangle",
    .summary = "An integer rectangle, by which programs select the region that an operation works on",
    .words = {"rectangle", "rect", "region", "selection", "area"},
    .properties = {{"left", "the left edge; set, it moves the rectangle"},
                   {"top", "the top edge; set, it moves the rectangle"},
                   {"width", "the width; the origin stays"},
                   {"height", "the height; the origin stays"},
                   {"right", "left + width - 1; set, it changes the width"},
                   {"bottom", "top + height - 1; set, it changes the height"}},
    .methods = kMethods,
    .notes = {"Right and bottom edges belong to the rectangle. Sums wrap in 32 bits.",
              "As an argument it is clipped to the picture; if nothing is left the operation fails with code 38.",
              "Nil stands for the whole picture."}};

}  // namespace tarvo::describe
