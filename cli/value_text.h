#pragma once

#include <string>

#include "value.h"

namespace tarvo::cli {

// A value as people read it: 12, 0.5, true, &c00FF00, a text; what is not text is told of: "a MemoryBlock of 12 bytes".
std::string value_text(const host::Value& value);

}  // namespace tarvo::cli
