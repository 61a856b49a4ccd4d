#pragma once

#include <string>

#include "reference.h"

namespace tarvo::reference {

// All of it, as docs/operations.schema.json promises: UTF-8, the same bytes for the same plugin.
std::string description_json(const Reference& reference);

}  // namespace tarvo::reference
