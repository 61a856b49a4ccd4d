#pragma once

// What the cases work on: two photographs, 96 by 64, and masks for them.

#include <string>
#include <vector>

#include "session.h"

namespace tarvo::test {

class Stage {
public:
    Session session;

    ObjectRef coffee();
    ObjectRef chelsea();
    // Copies: of another depth, and under a mask, opaque in the middle.
    ObjectRef coffee_of_depth(int depth);
    ObjectRef masked_coffee(int depth = 32);
    ObjectRef masked_chelsea();

    // White in the middle, black at the corners.
    ObjectRef spot();
    ObjectRef rectangle(int left, int top, int width, int height);
    ObjectRef convolution(std::vector<std::int32_t> coefficients);
    ObjectRef sepia();

private:
    ObjectRef photograph(const std::string& name);
};

}  // namespace tarvo::test
