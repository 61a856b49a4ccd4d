#include "names.h"

#include <algorithm>

namespace tarvo::host {

std::string folded(std::string_view name) {
    std::string result(name);
    std::transform(result.begin(), result.end(), result.begin(), lower_case);
    return result;
}

bool same_name(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower_case(x) == lower_case(y); });
}

}  // namespace tarvo::host
