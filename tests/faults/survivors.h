#pragma once

// All that may stay behind a call in which a service failed. (What stays of which operation when, its course says.)

#include <array>
#include <string_view>

#include "rehearsal.h"

namespace tarvo::test {

struct NamedSurvivor {
    std::string_view name;
    std::string_view reason;
};

// By Survivor.
inline constexpr std::array<NamedSurvivor, 2> kSurvivors = {{
    {"a result's host picture that, or whose mask, could not be locked",
     "it had been promised to the caller when it was made"},
    {"a client picture that got no pixels", "one reference is added and one dropped: the host decides whether it goes"},
}};

// What a failure of the very service that ends something leaves: one for each failed call.
struct Ending {
    std::string_view service;
    enum class Leaves { reference, lock } leaves;
};
inline constexpr Ending kEndings[] = {
    {"REALUnlockObject", Ending::Leaves::reference},
    {"REALUnlockString", Ending::Leaves::reference},
    {"unlockPictureDescription", Ending::Leaves::lock},
};

// Services whose failure nobody can notice. The plugin then drops a reference that it never got: one that somebody else
// holds, who loses the object, or none, of which the host complains.
inline constexpr std::string_view kUnnoticed[] = {"REALLockObject", "REALLockString"};

}  // namespace tarvo::test
