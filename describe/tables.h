#pragma once

// Everything that is described, a file a family and a class.

#include "operation.h"

namespace tarvo::describe {

std::span<const Family* const> families();
std::span<const Class* const> classes();
// By code.
std::span<const ErrorName> error_names();

extern const Family kTone, kCombine, kGeometry, kFilters, kInterchange, kErrors;
extern const Class kRectangle, kColorMatrix, kConvolution, kClientPicture;

}  // namespace tarvo::describe
