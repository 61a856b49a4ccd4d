#pragma once

namespace tarvo::test {

// Whether AddressSanitizer watches this program: its allocator has locks and memory of its own.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kAddressesWatched = true;
#else
inline constexpr bool kAddressesWatched = false;
#endif

// Of values that are all tried, every so-manieth is where each access is watched: how they come out is seen elsewhere.
inline constexpr int kStride = kAddressesWatched ? 17 : 1;

}  // namespace tarvo::test
