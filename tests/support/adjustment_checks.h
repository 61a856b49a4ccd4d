#pragma once

// What tone and colour operations have in common but for what they do to colours: the order of their checks, and that
// the client-picture form gives what the picture form gives.

#include <functional>
#include <string_view>

#include "judge.h"

namespace tarvo::test {

// A form of an operation whose second argument is a rectangle, or a mask.
struct CheckedForm {
    // Calls it with its numbers in range, or the first of them out of range.
    std::function<Value(Session&, const ObjectRef& p, const ObjectRef& second, bool in_range)> call;
    int range_code;  // 0 when no number has a range
    bool on_client_pictures = false;
};
// Each check alone and with all that come after it failing too: nil, range, lock, region, result.
void expect_region_checks(Session& session, const CheckedForm& form);
// Nil, range, lock, the mask's lock, size and depth, result.
void expect_mask_checks(Session& session, const CheckedForm& form);
// Without a result picture: nothing is made, so that nothing more can fail.
void expect_region_checks_without_result(Session& session, const CheckedForm& form);

// Both forms of an operation.
struct TwoForms {
    std::function<Value(Session&, const ObjectRef& picture, const ObjectRef& second)> picture_form;
    std::function<Value(Session&, const ObjectRef& client, const ObjectRef& second, bool as_picture)> client_form;
    bool copies_mask;
};
// Client pictures of every backing and depth, with and without masks, against the picture form; results of either
// backing. Nothing stays held when the results are gone.
void expect_same_region_forms(Session& session, Random& random, const TwoForms& forms);
void expect_same_mask_forms(Session& session, Random& random, const TwoForms& forms);

// The picture class's own method whose declaration begins so.
const host::Callable& picture_member(const Session& session, std::string_view declaration);

// A picture of one colour.
ObjectRef plain_picture(Session& session, std::uint32_t color, int width = 3, int height = 2, int depth = 32);
// A picture one pixel high that has each grey, 0 to 255.
ObjectRef grey_ramp(Session& session);

}  // namespace tarvo::test
