// The one function of the system's that the C library of this tool chain declares and does not have.

#include <stddef.h>
#include <sys/random.h>
#include <unistd.h>

ssize_t getrandom(void* bytes, size_t size, unsigned flags) {
    (void)flags;
    return getentropy(bytes, size) == 0 ? (ssize_t)size : -1;
}
