#pragma once

#include "rehearsal.h"

namespace tarvo::test {

using CourseOf = void (*)(Rehearsal&);

// With good arguments. The usual one of a method that is declared so, where the table of courses tells none; throws
// when there is none either.
CourseOf course_of(const host::Callable& method);
// Whether it is that.
bool has_usual_course(const host::Callable& method);

}  // namespace tarvo::test
