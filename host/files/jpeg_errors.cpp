#include "jpeg_errors.h"

#include <jerror.h>

namespace tarvo::host {

namespace {

[[noreturn]] void on_error(j_common_ptr info) {
    auto* errors = reinterpret_cast<JpegErrors*>(info->err);
    info->err->format_message(info, errors->message);
    std::longjmp(errors->target, 1);
}

bool tells_of_damage(int code) {
    switch (code) {
        case JWRN_JPEG_EOF:
        case JWRN_HIT_MARKER:
        case JWRN_MUST_RESYNC:
        case JWRN_HUFF_BAD_CODE:
        case JWRN_ARITH_BAD_CODE:
        case JWRN_BOGUS_PROGRESSION: return true;
        default: return false;
    }
}

void on_message(j_common_ptr info, int level) {
    if (level < 0 && tells_of_damage(info->err->msg_code)) on_error(info);
}

}  // namespace

void fail_jpeg(j_common_ptr info, const char* message) {
    auto* errors = reinterpret_cast<JpegErrors*>(info->err);
    std::snprintf(errors->message, sizeof errors->message, "%s", message);
    errors->manager.msg_code = 0;  // none of the library's
    std::longjmp(errors->target, 1);
}

JpegErrors::JpegErrors() {
    jpeg_std_error(&manager);
    manager.error_exit = on_error;
    manager.emit_message = on_message;
}

bool JpegErrors::out_of_memory() const { return manager.msg_code == JERR_OUT_OF_MEMORY; }

}  // namespace tarvo::host
