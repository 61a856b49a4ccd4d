#pragma once

// How a thread rounds.

#if defined(__SSE2__)
#include <xmmintrin.h>
#else
#include <cfenv>
#endif

namespace tarvo::host {

// While this lives, the thread's floating-point arithmetic is that of a new program: rounded to nearest, small numbers
// kept, no traps. Afterwards it is as it was, flags of exceptions included.
class UsualArithmetic {
public:
    UsualArithmetic(const UsualArithmetic&) = delete;
    UsualArithmetic& operator=(const UsualArithmetic&) = delete;

#if defined(__SSE2__)
    UsualArithmetic() : before_(_mm_getcsr()) {
        constexpr unsigned kAllTrapsMasked = 0x1F80;
        _mm_setcsr(kAllTrapsMasked);
    }
    ~UsualArithmetic() { _mm_setcsr(before_); }

private:
    unsigned before_;
#else
    UsualArithmetic() {
        std::fegetenv(&before_);
        std::fesetenv(FE_DFL_ENV);
    }
    ~UsualArithmetic() { std::fesetenv(&before_); }

private:
    std::fenv_t before_;
#endif
};

}  // namespace tarvo::host
