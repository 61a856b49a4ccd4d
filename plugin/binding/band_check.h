#pragma once

// A check of builds for debugging: while rows of a picture are worked on in bands, which other threads may do, no host
// service is called and no error is left.

#ifdef TARVO_CHECKS_BANDS
#include <stdexcept>
#endif

namespace tarvo::plugin {

#ifdef TARVO_CHECKS_BANDS
extern constinit thread_local bool thread_is_in_band;

class InBand {
public:
    InBand() : before_(thread_is_in_band) { thread_is_in_band = true; }
    ~InBand() { thread_is_in_band = before_; }
    InBand(const InBand&) = delete;
    InBand& operator=(const InBand&) = delete;

private:
    bool before_;
};

inline void check_outside_bands() {
    if (thread_is_in_band) throw std::logic_error("a band calls the host or leaves an error");
}
#else
struct InBand {
    InBand() {}  // not trivial, so that nobody takes one for unused
};
inline void check_outside_bands() {}
#endif

}  // namespace tarvo::plugin
