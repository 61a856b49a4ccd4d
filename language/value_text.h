#pragma once

#include <string>
#include <string_view>

#include "value.h"

namespace tarvo::language {

// Returns a value as people read it: 12, 0.5, true, &c00FF00, or a text. Other objects are described: "a MemoryBlock of
// 12 bytes".
std::string value_text(const host::Value& value);
// The same for an object of which that much is known.
std::string bytes_text(std::string_view class_name, std::string_view bytes);
std::string object_text(std::string_view class_name);

// Returns "32 bits" or "1 bit".
std::string depth_text(int depth);

}  // namespace tarvo::language
