#pragma once

// What arguments are like before a call, to see that it has left them so.

#include <cstdint>
#include <vector>

#include "session.h"

namespace tarvo::test {

class Snapshot {
public:
    Snapshot(Session& session, const Value& value);

    // A mask that the host has made since, because the plugin asked for one, is no change while it is black: the
    // picture looks as before.
    bool unchanged() const;

private:
    std::vector<std::uint8_t> bytes_now() const;

    Session& session_;
    ObjectRef object_;  // empty for plain values, which no call can change
    bool had_mask_ = false;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace tarvo::test
