#pragma once

// Row loops are compiled twice on x86-64, once for every processor and once for those with AVX2. Both give the same
// bytes: floating-point operations are neither reordered nor contracted (which is why it is "avx2", not an architecture
// level that has fused operations). Elsewhere they are compiled once. So they are with TARVO_PLAIN_ROWS, which lets the
// tests see the version for every processor on a machine that would never choose it, and for sanitizers, which are not
// ready yet when the choice is made.
//
// TARVO_ROW_CLONES before a plain function makes the two versions; the choice is made when the library is loaded.
// `on_this_processor(body)` does it for what a template builds: of `body`, all that is marked TARVO_INLINED becomes
// part of both versions. Work that constructs objects goes there too: clang 19 forgets the constructors that only
// clones call.

#define TARVO_INLINED __attribute__((always_inline))

#if defined(__x86_64__) && defined(__has_attribute) && !defined(TARVO_PLAIN_ROWS) && !defined(TARVO_SANITIZED)
#if __has_attribute(target_clones)
#define TARVO_ROW_CLONES __attribute__((target_clones("avx2", "default")))

namespace tarvo::plugin {

template <class Body>
__attribute__((target("avx2"), noinline)) void on_avx2(const Body& body) {
    body();
    asm volatile("" ::: "memory");  // without this, g++ 12 drops calls of the function as if they had no effect
}

template <class Body>
TARVO_INLINED inline void on_this_processor(const Body& body) {
    if (__builtin_cpu_supports("avx2"))
        on_avx2(body);
    else
        body();
}

}  // namespace tarvo::plugin
#endif
#endif

#ifndef TARVO_ROW_CLONES
#define TARVO_ROW_CLONES

namespace tarvo::plugin {

template <class Body>
TARVO_INLINED inline void on_this_processor(const Body& body) {
    body();
}

}  // namespace tarvo::plugin
#endif
