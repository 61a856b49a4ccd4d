#pragma once

// TARVO_ROW_CLONES before a loop over a row compiles it twice on x86-64, once for every processor and once for those with
// AVX2; the choice is made when the library is loaded. Both give the same bytes: integer arithmetic only, and no
// contraction of floating-point operations (which is why the clone is "avx2", not an architecture level that has fused
// operations). Elsewhere the loop is compiled once; so it is with TARVO_PLAIN_ROWS, which lets the tests see the version
// for every processor on a machine that would never choose it.

#if defined(__x86_64__) && defined(__has_attribute) && !defined(TARVO_PLAIN_ROWS)
#if __has_attribute(target_clones)
#define TARVO_ROW_CLONES __attribute__((target_clones("avx2", "default")))
#endif
#endif

#ifndef TARVO_ROW_CLONES
#define TARVO_ROW_CLONES
#endif
