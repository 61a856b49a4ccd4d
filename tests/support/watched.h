#pragma once

namespace tarvo::test {

// Whether AddressSanitizer watches this program: its allocator has locks and memory of its own.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kAddressesWatched = true;
#else
inline constexpr bool kAddressesWatched = false;
#endif

}  // namespace tarvo::test
