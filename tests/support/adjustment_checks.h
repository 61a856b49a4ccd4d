#pragma once

// What tone and colour operations have in common but for what they do to colours: the order of their checks, and that
// the forms on client pictures give what those on pictures give.

#include "judge.h"

namespace tarvo::test {

// Numbers of which the first is out of range, and the code for it; 0 when no number has a range.
struct OutOfRange {
    Numbers numbers = {};
    int code = 0;
};
// Each check of each form alone, and with all that come after it failing too: nil, range, lock, region, result; or nil,
// range, lock, the mask's lock, size and depth, result. What is passed by reference stays as it was. Without a result
// picture nothing is made, so that nothing more can fail.
void expect_checks(Session& session, const OperationName& operation, const Numbers& numbers,
                   const OutOfRange& wrong = {});

// Client pictures of every backing and depth, with and without masks, against the picture forms; results of either
// backing. Nothing stays held when the results are gone.
void expect_same_forms(Session& session, Random& random, const Adjustment& adjustment, const Numbers& numbers);

// The numbers that a form leaves which averages an area of a picture.
using PlainAverage = std::function<Numbers(const PlainImage& image, const Area& area)>;
// Random areas of pictures of every depth and kind, and of client pictures where there are such forms. `numbers` are
// what is passed, `average` what comes of it, to the bit.
void expect_average_agreement(Session& session, Random& random, const OperationName& operation, const Numbers& numbers,
                              const PlainAverage& average);

// The picture class's own method whose declaration begins so.
const host::Callable& picture_member(const Session& session, std::string_view declaration);

// A picture of one colour.
ObjectRef plain_picture(Session& session, std::uint32_t color, int width = 3, int height = 2, int depth = 32);
// A picture one pixel high that has each grey, 0 to 255.
ObjectRef grey_ramp(Session& session);

}  // namespace tarvo::test
