#include "common.h"
#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Operation kOperations[] = {
    {.name = "TRV_ConvertToString",
     .summary = "A picture as a string of bytes, to be kept in a file, a database field or a preference",
     .words = {"string", "bytes", "save", "store", "serialize", "export", "trv", "database", "convert"},
     .keeps_mask = kEveryForm,
     .errors = {kSourceNil,
                {0, "the source cannot be locked, memory is short, or the string would pass 2147483647 bytes"}},
     .notes =
         {"The string holds width, height, depth and a mask flag, then red, green and blue of each pixel, then the "
          "mask; nothing is compressed.",
          "The string of a picture of 1, 2, 4 or 8 bits cannot be made a picture again.",
          "The tool keeps such strings in files whose names end in .trv."},
     .example = {kCoffee, "TRV_ConvertToString()"}},

    {.name = "TRV_ConvertToPicture",
     .summary = "The picture of a string that TRV_ConvertToString made",
     .words = {"string", "bytes", "load", "restore", "deserialize", "import", "trv", "database", "convert"},
     .keeps_mask = kEveryForm,
     .errors = {{3, "the string is nil"},
                {0,
                 "the string is no picture's, or of a depth other than 16, 24 and 32, or the picture cannot be made "
                 "or locked"}},
     .notes = {"Any bytes are safe.", "A mask that the host does not make is left out.",
               "Code 3 has no message of its own.", "The tool calls it for each .trv file that it reads."}},

    {.name = "TRV_MakeMemoryBlock",
     .summary = "The pixels of a region as numbers in a new memory block",
     .words = {"memory", "pixels", "bytes", "raw", "buffer", "array", "export"},
     .arguments = {kRect,
                   {.name = "mask_to_alpha", .text = "without effect"},
                   {.name = "row_bytes", .text = "gets the bytes of a row; 0 when the call fails", .unit = "bytes"}},
     .errors = {kSourceNil,
                kSourceLock,
                kRegionEmpty,
                {0, "the host makes no such block, or it would pass 2147483647 bytes"}},
     .notes = {"Pictures of up to 16 bits give 16-bit numbers, five bits a channel; deeper ones 32-bit numbers, "
               "0x00RRGGBB.",
               "Numbers are in the machine's byte order, rows without padding."},
     .example = {kCoffee, "TRV_MakeMemoryBlock(rect(0, 0, 3, 2), false, 0)"}},

    {.name = "TRV_RowBytes",
     .summary = "The bytes from one row of a picture to the next",
     .words = {"stride", "pitch", "bytes", "row", "memory"},
     .errors = {kSourceNil, kSourceLock},
     .notes = {"Without padding it is width x depth / 8, rounded up.",
               "A picture in a host pixel buffer has four bytes a pixel."},
     .example = {kCoffee, "TRV_RowBytes()"}},

    {.name = "TRV_Info",
     .summary = "A line of text about a picture: its size and depth, or why it cannot be locked",
     .words = {"info", "size", "width", "height", "depth", "identify", "about"},
     .errors = {kSourceNil, {0, "the host makes no string of the text"}},
     .notes = {"A picture that cannot be locked is no error: the text says what it is."},
     .example = {kCoffee, "TRV_Info()"}},

    {.name = "TRV_ScreenCapture",
     .summary = "A picture of the whole main screen",
     .words = {"screen", "screenshot", "capture", "grab", "display", "desktop"},
     .arguments = {{.name = "capture_rect", .text = "without effect", .left_out = "nil"}},
     .errors = {{0, "there is no main screen, its pixels cannot be had, or the host makes no picture"}},
     .notes = {"Any screen object will do: it is always the main screen, all of it.",
               "The tool captures with tarvo capture."}},
};

}  // namespace

constinit const Family kInterchange{"interchange", "Interchange", kOperations};

}  // namespace tarvo::describe
