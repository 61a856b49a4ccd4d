#pragma once

// Calls of the operating system that fail when they are told to. Linked into a test, these definitions stand before the
// C library's for everything in the process; as a library that is loaded before all others they do the same for the
// tool, and take their order from the environment:
//
//     TARVO_FAULT="write 3 ENOSPC"    the third call of `write` fails once
//     TARVO_FAULT_SIGN=PATH           a file that is made when it has
//
// Errors are EIO, ENOSPC, EINTR and ENOMEM; "short" makes a transfer of one byte.

#include <string_view>

namespace tarvo::test {

enum class SystemCall {
    open,
    openat,
    read,
    write,
    close,
    fsync,
    renameat,
    fchmod,
    readlink,
    readlinkat,
    mmap,
    allocate,  // malloc, calloc, realloc
};

// The n-th call from now on fails once, n counted from 1.
void fail_call(SystemCall call, int n, int error);
// Takes the order back. True when it was carried out.
bool stop_faults();
// The next random numbers that anybody asks for are zeros, as often as that.
void give_zeros(int times);

}  // namespace tarvo::test
