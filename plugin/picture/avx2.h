#pragma once

// Functions that are written for AVX2, where compilers make nothing as good of plain loops. There is a plain loop
// beside each of them, which gives the same bytes, and is all there is where TARVO_AVX2 is not defined. Sanitizers see
// one or the other.

#if defined(__x86_64__) && !defined(TARVO_PLAIN_ROWS)

#include <immintrin.h>

#define TARVO_AVX2 __attribute__((target("avx2")))

namespace tarvo::plugin {

inline bool processor_has_avx2() { return __builtin_cpu_supports("avx2"); }

}  // namespace tarvo::plugin

#endif
