#pragma once

// The code of the last error, and the texts for people. No operation raises anything: it leaves a code here.

#include <cstddef>
#include <cstdint>

#include "real_interface.h"

// The numbers are what programs see: never renumbered. 3 has no text of its own.
enum class ErrorCode : std::int32_t {
    none = 0,
    source_nil = 2,
    string_nil = 3,
    source_lock = 4,
    intermediate_lock = 5,
    result_lock = 6,
    dib = 7,
    mask_nil = 8,
    mask_lock = 9,
    mask_size = 10,
    mask_not_greyscale = 11,
    mask_not_black_and_white = 12,
    overlay_nil = 13,
    overlay_lock = 14,
    overlay_fraction = 15,
    overlay_position = 16,
    overlay_size = 17,
    addend_nil = 18,
    addend_lock = 19,
    addend_size = 20,
    subtractend_nil = 21,
    subtractend_lock = 22,
    subtractend_size = 23,
    color_matrix_nil = 24,
    convolution_nil = 25,
    pixelate_start_row = 26,
    pixelate_start_col = 27,
    pixelate_row_count = 28,
    pixelate_col_count = 29,
    pixelation = 30,
    rotation = 31,
    rotation_oversample = 32,
    shear = 33,
    stretch_width = 34,
    stretch_height = 35,
    stretch_oversample = 36,
    stretch_blur = 37,
    selection = 38,
    trim_area = 39,
    red = 40,
    green = 41,
    blue = 42,
    degrees = 43,
    saturation = 44,
    brightness = 45,
    ant_size = 46,
    ant_state = 47,
    bits_per_channel = 48,
    compare_nil = 49,
    compare_lock = 50,
};

// The code of the most recent operation, one for the process.
extern std::int32_t gTRV_Error;

// Each operation that reports errors begins with this.
inline void ClearError() { gTRV_Error = 0; }
inline void SetError(ErrorCode code) { gTRV_Error = static_cast<std::int32_t>(code); }

// `return Fail(code);` leaves the code and gives nil.
inline std::nullptr_t Fail(ErrorCode code) {
    SetError(code);
    return nullptr;
}

// The text for a code; "Unknown Error" for a number without one.
const char* ErrorMessage(std::int32_t code);

// "TRV_GetLastError() as integer"
int TRV_GetLastError();
// "TRV_GetErrorMessage(error_code as integer) as String": a new string, or null when the host cannot make one.
REALstringStruct* TRV_GetErrorMessage(int error_code);
