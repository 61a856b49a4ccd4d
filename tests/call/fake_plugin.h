#pragma once

// A plugin inside the test program. Its entry points write down what they are handed.

#include <string>
#include <vector>

#include "real_interface.h"

namespace tarvo::host::fake {

int plugin_main(REALresolver callback);

// What the entry point called last was handed, in the order of its own parameters, each sort for itself.
struct Seen {
    std::string entry;
    std::vector<const void*> objects;
    std::vector<double> numbers;  // integers, colors and booleans too

    friend bool operator==(const Seen&, const Seen&) = default;
};
extern Seen seen;

// The number in a FakeBox.
int number_in(const void* box);

}  // namespace tarvo::host::fake
