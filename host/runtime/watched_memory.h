#pragma once

// WATCHED_MEMORY is defined where AddressSanitizer watches. Other builds do without its header, which some compilers'
// packages lack.

#if defined(__SANITIZE_ADDRESS__)
#define WATCHED_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define WATCHED_MEMORY 1
#endif
#endif

#ifdef WATCHED_MEMORY
#include <sanitizer/asan_interface.h>
#endif
