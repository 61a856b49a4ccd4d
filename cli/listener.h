#pragma once

#include <string>

#include "tarvo.h"

namespace tarvo::cli {

// Hears what there is to tell while a file is worked on, as it happens.
class Listener {
public:
    virtual ~Listener() = default;
    // What was done.
    virtual void say(const std::string& line) = 0;
    // What a call answers: "TRV_RowBytes = 2400".
    virtual void answer(const std::string& line) = 0;
    // What the library tells.
    virtual void note(tarvo_note kind, const std::string& line) = 0;
    // A result that is not what it should be.
    virtual void warn(const std::string& line) = 0;
};

}  // namespace tarvo::cli
