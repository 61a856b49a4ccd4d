#pragma once

// What there is to call, for commands that tell people of it. Programs get it from the library as JSON; the tool has
// the library's objects in it, and asks them.

#include <optional>

#include "engine.h"
#include "reference.h"

namespace tarvo::cli {

class Described {
public:
    Described() : call_({}) {}

    const host::Registry& registry() const { return library::registry(); }
    host::Caller& caller() { return call_.caller(); }
    // Made when it is first asked for.
    const reference::Reference& all() {
        if (!all_) all_.emplace(call_.caller());
        return *all_;
    }

private:
    library::CallHost call_;
    std::optional<reference::Reference> all_;
};

}  // namespace tarvo::cli
