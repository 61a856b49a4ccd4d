#pragma once

// libjpeg leaves a failed call by a long jump, which runs no destructors: functions that call the library hold nothing
// that has one, and set the jump's target first.

#include <cstdio>  // jpeglib.h needs it

#include <jpeglib.h>

#include <csetjmp>

namespace tarvo::host {

struct JpegErrors {
    jpeg_error_mgr manager;  // first: the library's pointer to it is a pointer to this
    std::jmp_buf target;
    char message[JMSG_LENGTH_MAX] = "";

    // Messages that tell of damaged data end the call; others are ignored.
    JpegErrors();
    // True when the call that failed lacked memory.
    bool out_of_memory() const;
};

// Ends the library's call with an error of our own.
[[noreturn]] void fail_jpeg(j_common_ptr info, const char* message);

}  // namespace tarvo::host
