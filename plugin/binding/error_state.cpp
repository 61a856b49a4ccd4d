#include "error_state.h"

#include <cstring>

#include "host_services.h"

std::int32_t gTRV_Error = 0;

namespace {

struct ErrorText {
    ErrorCode code;
    const char* text;
};

constexpr ErrorText kErrorTexts[] = {
    {ErrorCode::none, "General Error: No Error"},
    {ErrorCode::source_nil, "General Error: \"source\" parameter is nil"},
    {ErrorCode::source_lock, "General Error: can't lock \"source\" picture"},
    {ErrorCode::intermediate_lock, "General Error: can't lock intermediate picture"},
    {ErrorCode::result_lock, "General Error: can't lock result picture"},
    {ErrorCode::dib, "General Error: can't get DIB object"},
    {ErrorCode::mask_nil, "General Error: \"mask\" parameter is nil"},
    {ErrorCode::mask_lock, "General Error: can't lock \"mask\" picture"},
    {ErrorCode::mask_size, "General Error: \"mask\" is not same size as \"source\""},
    {ErrorCode::mask_not_greyscale, "General Error: \"mask\" is not greyscale (1, 2, 4, or 8 bit)"},
    {ErrorCode::mask_not_black_and_white, "General Error: \"mask\" is not black and white (1 bit)"},
    {ErrorCode::overlay_nil, "General Error: \"overlay\" parameter is nil"},
    {ErrorCode::overlay_lock, "General Error: can't lock \"overlay\" picture"},
    {ErrorCode::overlay_fraction, "General Error: \"overlay_fraction\" positioned out of bounds"},
    {ErrorCode::overlay_position, "General Error: \"overlay\" positioned out of bounds"},
    {ErrorCode::overlay_size, "General Error: \"overlay\" is wrong size"},
    {ErrorCode::addend_nil, "General Error: \"addend\" is nil"},
    {ErrorCode::addend_lock, "General Error: can't lock \"addend\" picture"},
    {ErrorCode::addend_size, "General Error: \"addend\" is wrong size"},
    {ErrorCode::subtractend_nil, "General Error: \"subtractend\" is nil"},
    {ErrorCode::subtractend_lock, "General Error: can't lock \"subtractend\" picture"},
    {ErrorCode::subtractend_size, "General Error: \"subtractend\" is wrong size"},
    {ErrorCode::color_matrix_nil, "General Error: \"color_matrix\" parameter is nil"},
    {ErrorCode::convolution_nil, "General Error: \"convolution\" parameter is nil"},
    {ErrorCode::pixelate_start_row, "TRV_Pixelate Error: \"start_row\" parameter is out of bounds"},
    {ErrorCode::pixelate_start_col, "TRV_Pixelate Error: \"start_col\" parameter is out of bounds"},
    {ErrorCode::pixelate_row_count, "TRV_Pixelate Error: \"row_count\" parameter is out of bounds"},
    {ErrorCode::pixelate_col_count, "TRV_Pixelate Error: \"col_count\" parameter is out of bounds"},
    {ErrorCode::pixelation, "TRV_Pixelate Error: \"pixelation\" parameter is out of bounds"},
    {ErrorCode::rotation, "Rotate Error: \"rotation\" parameter is out of bounds"},
    {ErrorCode::rotation_oversample, "Rotate Error: \"rotation_oversample\" parameter is out of bounds"},
    {ErrorCode::shear, "Shear Error: \"shear_pixels\" parameter is out of bounds"},
    {ErrorCode::stretch_width, "Stretch Error: \"width\" parameter is out of bounds"},
    {ErrorCode::stretch_height, "Stretch Error: \"height\" parameter is out of bounds"},
    {ErrorCode::stretch_oversample, "Stretch Error: \"oversample\" parameter is out of bounds"},
    {ErrorCode::stretch_blur, "Stretch Error: \"blur\" parameter is out of bounds"},
    {ErrorCode::selection, "Color Error: invalid selection"},
    {ErrorCode::trim_area, "Color Error: invalid trim area"},
    {ErrorCode::red, "Color Error: red parameter out of bounds"},
    {ErrorCode::green, "Color Error: green parameter out of bounds"},
    {ErrorCode::blue, "Color Error: blue parameter out of bounds"},
    {ErrorCode::degrees, "Color Error: degrees out of bounds"},
    {ErrorCode::saturation, "Color Error: saturation factor out of bounds"},
    {ErrorCode::brightness, "Color Error: brightness factor out of bounds"},
    {ErrorCode::ant_size, "Color Error: ant size out of bounds"},
    {ErrorCode::ant_state, "Color Error: ant state out of bounds"},
    {ErrorCode::bits_per_channel, "Color Error: bits per channel out of bounds"},
    {ErrorCode::compare_nil, "Compare Error: \"compare\" parameter is nil"},
    {ErrorCode::compare_lock, "Compare Error: can't lock \"compare\" picture"},
};

}  // namespace

const char* ErrorMessage(std::int32_t code) {
    for (const ErrorText& error : kErrorTexts)
        if (static_cast<std::int32_t>(error.code) == code) return error.text;
    return "Unknown Error";
}

int TRV_GetLastError() { return gTRV_Error; }

REALstringStruct* TRV_GetErrorMessage(int error_code) {
    const char* const text = ErrorMessage(error_code);
    return REALBuildString(text, static_cast<int>(std::strlen(text)));
}
