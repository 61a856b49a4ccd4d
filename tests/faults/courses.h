#pragma once

#include "rehearsal.h"

namespace tarvo::test {

using CourseOf = void (*)(Rehearsal&);

// The course of a method with the arguments of arguments_for. Throws when none is told: a new operation needs its line
// in the table.
CourseOf course_of(const host::Callable& method);

}  // namespace tarvo::test
