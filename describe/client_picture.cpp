#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Operation kMethods[] = {
    {.name = "operator_convert",
     .summary = "Becomes a picture's client picture, or gives a picture",
     .words = {"convert", "assign"},
     .arguments = {{.name = "p", .text = "the picture to hold on to; nil empties the client picture"}},
     .keeps_mask = forms_without("p"),
     .changes_self = forms_with("p"),
     .errors = {{0,
                 "the client picture is empty, or a picture cannot be made or locked",
                 {},
                 Gives::nothing,
                 forms_without("p")}},
     .notes = {"The form that takes a picture reads nothing of it, and changes the client picture.",
               "The form that gives one gives the host picture behind the client picture, or copies own memory into a "
               "new one of the same depth. It clears the last error's code."}},
};

}  // namespace

constinit const Class kClientPicture{
    .name = "TRV_ClientPicture",
    .summary =
        "A picture whose pixels the plugin may own itself, so that operations can follow each other without a host "
        "picture for every step",
    .words = {"client", "memory", "chain", "intermediate"},
    .properties = {{"width", "pixels"},
                   {"height", "pixels"},
                   {"depth", "bits a pixel: 16, 24 or 32 in own memory"},
                   {"rowBytes", "bytes a row in own memory; as it last was when a host picture backs it"},
                   {"hasMask", "always false, also with a mask"},
                   {"maskDepth", "bits a mask pixel: 8 in own memory; 0 without a mask"},
                   {"maskRowBytes", "bytes a mask row in own memory"},
                   {"pic", "the host picture that backs it; nil with own memory"}},
    .methods = kMethods,
    .notes = {"The argument as_picture of operations decides what backs their result: true, a new host picture; false, "
              "own memory.",
              "Own memory starts cleared: black, and opaque where there is a mask.",
              "From 32-bit masks only five bits reach an 8-bit one: white becomes 31."}};

}  // namespace tarvo::describe
