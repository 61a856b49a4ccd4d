#include "resource_limits.h"

#include <unistd.h>

namespace tarvo::host {

Limits default_limits() {
    Limits limits{.max_pixels = std::uint64_t{1} << 28};
#ifdef __wasm__
    // What is told there is what is taken already; it can become 2 GiB.
    limits.max_memory = std::uint64_t{1} << 30;
#else
    const long pages = ::sysconf(_SC_PHYS_PAGES), page = ::sysconf(_SC_PAGESIZE);
    if (pages > 0 && page > 0)
        limits.max_memory = static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page) / 2;
#endif
    return limits;
}

}  // namespace tarvo::host
