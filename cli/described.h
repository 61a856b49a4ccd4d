#pragma once

// What there is to call, for commands that tell people of it. Programs get it from the library as JSON; the tool has
// the library's objects in it, and asks them.

#include "engine.h"
#include "reference.h"

namespace tarvo::cli {

class Described {
public:
    Described() : call_({}) {}

    const host::Registry& registry() const { return library::registry(); }
    host::Caller& caller() { return call_.caller(); }
    // Must not outlive this.
    reference::Reference all() { return reference::Reference(call_.caller()); }

private:
    library::CallHost call_;
};

}  // namespace tarvo::cli
