#pragma once

// The plugin, started once, and a host of its own for each call.

#include <cstdint>

#include "caller.h"
#include "host.h"

namespace tarvo::library {

// What the plugin has registered. The first call starts it.
const host::Registry& registry();

// A host for one call, which is the thread's until the end. Calls may be made while others yield: the code of the last
// error, which the plugin keeps for each thread, is the outer call's again when the inner one ends.
class CallHost {
public:
    explicit CallHost(const host::Limits& limits);
    ~CallHost();
    CallHost(const CallHost&) = delete;
    CallHost& operator=(const CallHost&) = delete;

    host::Host& host() { return host_; }
    host::Caller& caller() { return caller_; }
    // The code that the operation left.
    std::int32_t code() const;
    // Throws host::Cancelled out of what yields, when the caller wants it.
    void stop_by(int (*yield)(void*), void* context);

private:
    host::Host host_;
    host::Host::Entered entered_;
    host::Caller caller_;
    const std::int32_t outer_code_;
};

#ifdef TARVO_WATCHES_CALLS
// A test's: sees the host of each call at its end, when nothing of the call may be left.
void watch_end(const host::Host& host);
#endif

// The text of an operation's code.
const char* message_of_code(std::int32_t code);

}  // namespace tarvo::library
