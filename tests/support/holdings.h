#pragma once

// What a call may leave behind and change, for tests that call everything there is.

#include <ostream>
#include <string>
#include <vector>

#include "session.h"

namespace tarvo::test {

// What plugins hold of the host and of the platform.
struct Holdings {
    int references = 0;  // of objects of all types
    int picture_locks = 0;
    int platform_locks = 0;  // of handles and pixels

    friend bool operator==(const Holdings&, const Holdings&) = default;
};

// In messages of failed tests.
void PrintTo(const Holdings& held, std::ostream* out);

Holdings holdings_in(const Session& session);

// Operations whose declaration lacks `extends`: what is declared first arrives in place of the picture, so that the
// host is asked about handles that are no pictures.
bool is_declared_crookedly(const host::Callable& method);
// Members of the plugin's classes and the operation in place.
bool changes_its_object(const host::Callable& method);

// A name for each method, fit for parameterised tests; and those of `callables()` in a host that loads the plugin.
std::vector<std::string> names_of(const std::deque<host::Callable>& methods);
const std::vector<std::string>& method_names();

}  // namespace tarvo::test
