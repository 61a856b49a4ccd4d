#pragma once

// The code of the last failure, and a message for each code. Operations throw nothing: they leave a code here.

#include <cstddef>
#include <cstdint>

#include "band_check.h"
#include "real_interface.h"

// The code that the most recent operation of the calling thread left.
extern constinit thread_local std::int32_t gTRV_Error;

namespace tarvo::plugin {

// The message of a number that has none of its own.
inline constexpr const char* kUnknownError = "Unknown Error";

// Every error: its code, its name here and its message. Programs see the codes, so they are never renumbered.
#define TRV_ERRORS(X)                                                                              \
    X(0, none, "General Error: No Error")                                                          \
    X(2, source_nil, "General Error: \"source\" parameter is nil")                                 \
    X(3, string_nil, kUnknownError)                                                                \
    X(4, source_lock, "General Error: can't lock \"source\" picture")                              \
    X(5, intermediate_lock, "General Error: can't lock intermediate picture")                      \
    X(6, result_lock, "General Error: can't lock result picture")                                  \
    X(7, dib, "General Error: can't get DIB object")                                               \
    X(8, mask_nil, "General Error: \"mask\" parameter is nil")                                     \
    X(9, mask_lock, "General Error: can't lock \"mask\" picture")                                  \
    X(10, mask_size, "General Error: \"mask\" is not same size as \"source\"")                     \
    X(11, mask_not_greyscale, "General Error: \"mask\" is not greyscale (1, 2, 4, or 8 bit)")      \
    X(12, mask_not_black_and_white, "General Error: \"mask\" is not black and white (1 bit)")      \
    X(13, overlay_nil, "General Error: \"overlay\" parameter is nil")                              \
    X(14, overlay_lock, "General Error: can't lock \"overlay\" picture")                           \
    X(15, overlay_fraction, "General Error: \"overlay_fraction\" positioned out of bounds")        \
    X(16, overlay_position, "General Error: \"overlay\" positioned out of bounds")                 \
    X(17, overlay_size, "General Error: \"overlay\" is wrong size")                                \
    X(18, addend_nil, "General Error: \"addend\" is nil")                                          \
    X(19, addend_lock, "General Error: can't lock \"addend\" picture")                             \
    X(20, addend_size, "General Error: \"addend\" is wrong size")                                  \
    X(21, subtractend_nil, "General Error: \"subtractend\" is nil")                                \
    X(22, subtractend_lock, "General Error: can't lock \"subtractend\" picture")                   \
    X(23, subtractend_size, "General Error: \"subtractend\" is wrong size")                        \
    X(24, color_matrix_nil, "General Error: \"color_matrix\" parameter is nil")                    \
    X(25, convolution_nil, "General Error: \"convolution\" parameter is nil")                      \
    X(26, pixelate_start_row, "TRV_Pixelate Error: \"start_row\" parameter is out of bounds")      \
    X(27, pixelate_start_col, "TRV_Pixelate Error: \"start_col\" parameter is out of bounds")      \
    X(28, pixelate_row_count, "TRV_Pixelate Error: \"row_count\" parameter is out of bounds")      \
    X(29, pixelate_col_count, "TRV_Pixelate Error: \"col_count\" parameter is out of bounds")      \
    X(30, pixelation, "TRV_Pixelate Error: \"pixelation\" parameter is out of bounds")             \
    X(31, rotation, "Rotate Error: \"rotation\" parameter is out of bounds")                       \
    X(32, rotation_oversample, "Rotate Error: \"rotation_oversample\" parameter is out of bounds") \
    X(33, shear, "Shear Error: \"shear_pixels\" parameter is out of bounds")                       \
    X(34, stretch_width, "Stretch Error: \"width\" parameter is out of bounds")                    \
    X(35, stretch_height, "Stretch Error: \"height\" parameter is out of bounds")                  \
    X(36, stretch_oversample, "Stretch Error: \"oversample\" parameter is out of bounds")          \
    X(37, stretch_blur, "Stretch Error: \"blur\" parameter is out of bounds")                      \
    X(38, selection, "Color Error: invalid selection")                                             \
    X(39, trim_area, "Color Error: invalid trim area")                                             \
    X(40, red, "Color Error: red parameter out of bounds")                                         \
    X(41, green, "Color Error: green parameter out of bounds")                                     \
    X(42, blue, "Color Error: blue parameter out of bounds")                                       \
    X(43, degrees, "Color Error: degrees out of bounds")                                           \
    X(44, saturation, "Color Error: saturation factor out of bounds")                              \
    X(45, brightness, "Color Error: brightness factor out of bounds")                              \
    X(46, ant_size, "Color Error: ant size out of bounds")                                         \
    X(47, ant_state, "Color Error: ant state out of bounds")                                       \
    X(48, bits_per_channel, "Color Error: bits per channel out of bounds")                         \
    X(49, compare_nil, "Compare Error: \"compare\" parameter is nil")                              \
    X(50, compare_lock, "Compare Error: can't lock \"compare\" picture")

enum class ErrorCode : std::int32_t {
#define TRV_ERROR_CODE(code, name, text) name = code,
    TRV_ERRORS(TRV_ERROR_CODE)
#undef TRV_ERROR_CODE
};

// Each operation that reports errors begins with clear_error.
inline void set_error(ErrorCode code) {
    check_outside_bands();
    gTRV_Error = static_cast<std::int32_t>(code);
}
inline void clear_error() { set_error(ErrorCode::none); }

// `return fail(code);` sets the code and returns nil.
inline std::nullptr_t fail(ErrorCode code) {
    set_error(code);
    return nullptr;
}

// Returns the message of a code, kUnknownError for any other number.
const char* error_message(std::int32_t code);

}  // namespace tarvo::plugin

// "TRV_GetLastError() as integer"
int TRV_GetLastError();
// "TRV_GetErrorMessage(error_code as integer) as String": a new string, or null when the host cannot make one.
REALstringStruct* TRV_GetErrorMessage(int error_code);
