#include "wording.h"

#include <array>
#include <charconv>

namespace tarvo::reference {

using describe::Argument;
using describe::Bound;

namespace {

std::string value_of(const Bound& bound) {
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), bound.value).ptr;
    std::string text(digits.data(), end);
    if (!bound.times.empty()) text.append(" * ").append(bound.times);
    return text;
}

}  // namespace

std::string range_text(const Argument& argument) {
    const Bound &low = argument.minimum, &high = argument.maximum;
    if (!low.given() && !high.given()) return "";
    const std::string least = low.exclusive() ? "above " + value_of(low) : value_of(low);
    const std::string most = high.exclusive() ? "below " + value_of(high) : value_of(high);
    if (!high.given()) return low.exclusive() ? least : least + " and above";
    if (!low.given()) return high.exclusive() ? most : most + " and below";
    if (low.exclusive()) return least + ", " + (high.exclusive() ? most : most + " and below");
    return least + " to " + most;
}

std::string beyond_text(const Argument& argument) {
    const Bound &low = argument.minimum, &high = argument.maximum;
    std::string text(argument.name);
    text += " is ";
    if (low.given()) text += low.exclusive() ? value_of(low) + " or below" : "below " + value_of(low);
    if (low.given() && high.given()) text += low.exclusive() || high.exclusive() ? ", or " : " or ";
    if (high.given()) text += high.exclusive() ? value_of(high) + " or above" : "above " + value_of(high);
    return text;
}

}  // namespace tarvo::reference
