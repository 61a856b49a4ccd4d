// Hardened headers have definitions of their own of some of these functions.
#undef _FORTIFY_SOURCE

#include "system_faults.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#if defined(__SANITIZE_ADDRESS__)
#define CHECKED_MEMORY  // whoever checks memory has allocations of his own
#endif

namespace tarvo::test {

namespace {

constexpr int kShort = -1;

// Without constructors: calls come before those have run.
struct Order {
    bool given, done;
    SystemCall call;
    int left;
    int error;
    char sign[512];
} order;

int zeros_left = 0;

constexpr const char* kNames[] = {"open",     "openat", "read",     "write",      "close", "fsync",
                                  "renameat", "fchmod", "readlink", "readlinkat", "mmap",  "allocate"};

struct ErrorName {
    const char* name;
    int error;
};
constexpr ErrorName kErrors[] = {{"EIO", EIO},       {"ENOSPC", ENOSPC}, {"EINTR", EINTR},
                                 {"ENOMEM", ENOMEM}, {"EACCES", EACCES}, {"short", kShort}};

void leave_sign() {
    if (order.sign[0] == '\0') return;
    const long sign = syscall(SYS_openat, AT_FDCWD, order.sign, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (sign >= 0) syscall(SYS_close, sign);
}

// 0: the call goes on as ever.
int fault_of(SystemCall call) {
    if (!order.given || order.done || order.call != call || --order.left > 0) return 0;
    order.done = true;
    leave_sign();
    return order.error;
}

// The call's turn: the answer of the system, or the error.
template <class Call>
long attempt(SystemCall call, Call real) {
    const int fault = fault_of(call);
    if (fault == 0) return real();
    errno = fault;
    return -1;
}

// As `attempt`, of a call that moves `size` bytes.
template <class Call>
long transfer(SystemCall call, std::size_t size, Call real) {
    const int fault = fault_of(call);
    if (fault == 0) return real(size);
    if (fault == kShort) return real(size < 1 ? size : 1);
    errno = fault;
    return -1;
}

[[gnu::constructor]] void read_environment() {
    const char* text = std::getenv("TARVO_FAULT");
    char call[16], error[16];
    int n = 0;
    if (!text || std::sscanf(text, "%15s %d %15s", call, &n, error) != 3) return;
    const char* sign = std::getenv("TARVO_FAULT_SIGN");
    std::snprintf(order.sign, sizeof order.sign, "%s", sign ? sign : "");
    for (const ErrorName& known : kErrors)
        for (std::size_t i = 0; i < std::size(kNames); ++i)
            if (std::strcmp(known.name, error) == 0 && std::strcmp(kNames[i], call) == 0)
                fail_call(static_cast<SystemCall>(i), n, known.error);
}

}  // namespace

void fail_call(SystemCall call, int n, int error) {
    order.call = call;
    order.left = n;
    order.error = error;
    order.done = false;
    order.given = true;
}

bool stop_faults() {
    order.given = false;
    return order.done;
}

void give_zeros(int times) { zeros_left = times; }

namespace {

bool takes_zeros() { return zeros_left > 0 && zeros_left-- > 0; }

}  // namespace

}  // namespace tarvo::test

using tarvo::test::attempt;
using tarvo::test::SystemCall;
using tarvo::test::transfer;

#define SEEN extern "C" __attribute__((visibility("default")))

namespace {

mode_t mode_in(int flags, va_list rest) { return flags & (O_CREAT | O_TMPFILE) ? va_arg(rest, mode_t) : 0; }

}  // namespace

SEEN int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = mode_in(flags, rest);
    va_end(rest);
    return static_cast<int>(
        attempt(SystemCall::open, [&] { return syscall(SYS_openat, AT_FDCWD, path, flags, mode); }));
}

SEEN int openat(int folder, const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = mode_in(flags, rest);
    va_end(rest);
    return static_cast<int>(
        attempt(SystemCall::openat, [&] { return syscall(SYS_openat, folder, path, flags, mode); }));
}

SEEN ssize_t read(int file, void* bytes, std::size_t size) {
    return transfer(SystemCall::read, size, [&](std::size_t count) { return syscall(SYS_read, file, bytes, count); });
}

SEEN ssize_t write(int file, const void* bytes, std::size_t size) {
    return transfer(SystemCall::write, size, [&](std::size_t count) { return syscall(SYS_write, file, bytes, count); });
}

#if __SIZEOF_LONG__ == 8  // where a place is one argument of a call
SEEN ssize_t pread(int file, void* bytes, std::size_t size, off_t place) {
    return transfer(SystemCall::read, size,
                    [&](std::size_t count) { return syscall(SYS_pread64, file, bytes, count, place); });
}

// As with reading links.
SEEN ssize_t __pread_chk(int file, void* bytes, std::size_t size, off_t place, std::size_t room) {
    return pread(file, bytes, std::min(size, room), place);
}

SEEN ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t place) {
    return transfer(SystemCall::write, size,
                    [&](std::size_t count) { return syscall(SYS_pwrite64, file, bytes, count, place); });
}
#endif

// The number is free whatever the answer is.
SEEN int close(int file) {
    const long closed = syscall(SYS_close, file);
    return static_cast<int>(attempt(SystemCall::close, [&] { return closed; }));
}

SEEN ssize_t getrandom(void* bytes, std::size_t size, unsigned flags) noexcept {
    if (!tarvo::test::takes_zeros()) return syscall(SYS_getrandom, bytes, size, flags);
    std::memset(bytes, 0, size);
    return static_cast<ssize_t>(size);
}

SEEN int fsync(int file) {
    return static_cast<int>(attempt(SystemCall::fsync, [&] { return syscall(SYS_fsync, file); }));
}

SEEN int renameat(int from_folder, const char* from, int to_folder, const char* to) noexcept {
    return static_cast<int>(
        attempt(SystemCall::renameat, [&] { return syscall(SYS_renameat, from_folder, from, to_folder, to); }));
}

SEEN int fchmod(int file, mode_t mode) noexcept {
    return static_cast<int>(attempt(SystemCall::fchmod, [&] { return syscall(SYS_fchmod, file, mode); }));
}

SEEN ssize_t readlink(const char* path, char* text, std::size_t size) noexcept {
    return attempt(SystemCall::readlink, [&] { return syscall(SYS_readlinkat, AT_FDCWD, path, text, size); });
}

SEEN ssize_t readlinkat(int folder, const char* path, char* text, std::size_t size) noexcept {
    return attempt(SystemCall::readlinkat, [&] { return syscall(SYS_readlinkat, folder, path, text, size); });
}

// Hardened code calls this where the compiler does not see how much room there is.
SEEN ssize_t __readlinkat_chk(int folder, const char* path, char* text, std::size_t size, std::size_t room) noexcept {
    return readlinkat(folder, path, text, std::min(size, room));
}

SEEN void* mmap(void* address, std::size_t size, int protection, int flags, int file, off_t offset) noexcept {
    return reinterpret_cast<void*>(
        attempt(SystemCall::mmap, [&] { return syscall(SYS_mmap, address, size, protection, flags, file, offset); }));
}

#ifndef CHECKED_MEMORY
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);

namespace {

template <class Call>
void* allocate(Call real) {
    const int fault = tarvo::test::fault_of(SystemCall::allocate);
    if (fault == 0) return real();
    errno = fault;
    return nullptr;
}

}  // namespace

SEEN void* malloc(std::size_t size) noexcept {
    return allocate([&] { return __libc_malloc(size); });
}
SEEN void* calloc(std::size_t count, std::size_t size) noexcept {
    return allocate([&] { return __libc_calloc(count, size); });
}
SEEN void* realloc(void* block, std::size_t size) noexcept {
    return allocate([&] { return __libc_realloc(block, size); });
}
#endif
