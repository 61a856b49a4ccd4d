#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Operation kOperations[] = {
    {.name = "TRV_GetLastError",
     .summary = "The code of the most recent operation; 0 when it went well",
     .words = {"error", "code", "failure", "status"},
     .notes = {"Asking does not reset it."}},

    {.name = "TRV_GetErrorMessage",
     .summary = "The text of an error's code",
     .words = {"error", "message", "text", "failure"},
     .arguments = {{.name = "error_code", .text = "the code; a number that is none gives \"Unknown Error\""}},
     .errors = {{0, "the host makes no string of the text; the last code stays what it was"}},
     .notes = {"Code 3 has no text of its own: \"Unknown Error\"."}},
};

constexpr ErrorName kNames[] = {
    {0, "none"},
    {2, "source_nil"},
    {3, "string_nil"},
    {4, "source_lock"},
    {5, "intermediate_lock"},
    {6, "result_lock"},
    {7, "dib"},
    {8, "mask_nil"},
    {9, "mask_lock"},
    {10, "mask_size"},
    {11, "mask_not_greyscale"},
    {12, "mask_not_black_and_white"},
    {13, "overlay_nil"},
    {14, "overlay_lock"},
    {15, "overlay_fraction"},
    {16, "overlay_position"},
    {17, "overlay_size"},
    {18, "addend_nil"},
    {19, "addend_lock"},
    {20, "addend_size"},
    {21, "subtractend_nil"},
    {22, "subtractend_lock"},
    {23, "subtractend_size"},
    {24, "color_matrix_nil"},
    {25, "convolution_nil"},
    {26, "pixelate_start_row"},
    {27, "pixelate_start_col"},
    {28, "pixelate_row_count"},
    {29, "pixelate_col_count"},
    {30, "pixelation"},
    {31, "rotation"},
    {32, "rotation_oversample"},
    {33, "shear"},
    {34, "stretch_width"},
    {35, "stretch_height"},
    {36, "stretch_oversample"},
    {37, "stretch_blur"},
    {38, "selection"},
    {39, "trim_area"},
    {40, "red"},
    {41, "green"},
    {42, "blue"},
    {43, "degrees"},
    {44, "saturation"},
    {45, "brightness"},
    {46, "ant_size"},
    {47, "ant_state"},
    {48, "bits_per_channel"},
    {49, "compare_nil"},
    {50, "compare_lock"},
};

}  // namespace

constinit const Family kErrors{"errors", "Errors", kOperations};
std::span<const ErrorName> error_names() { return kNames; }

}  // namespace tarvo::describe
