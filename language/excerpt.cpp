#include "excerpt.h"

#include <algorithm>

#include "shown_text.h"

namespace tarvo::language {
namespace {

// Bytes that are shown before and behind the place. A text that is hardly longer than that is shown whole.
constexpr std::size_t kBefore = 40, kBehind = 50, kWhole = 120;

std::size_t characters(std::string_view text) {
    return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, host::is_continuation_byte));
}

}  // namespace

std::string excerpt(std::string_view text, std::size_t position) {
    const bool whole = text.size() <= kWhole;
    std::size_t begin = whole || position <= kBefore ? 0 : position - kBefore;
    while (begin > 0 && host::is_continuation_byte(text[begin])) --begin;
    const std::string_view behind = text.substr(position);
    const std::string_view kept = whole ? behind : host::beginning(behind, kBehind);
    const std::string before = (begin > 0 ? "..." : "") + host::shown(text.substr(begin, position - begin));
    const std::string end = kept.size() < behind.size() ? "..." : "";
    return "  " + before + host::shown(kept) + end + "\n  " + std::string(characters(before), ' ') + '^';
}

}  // namespace tarvo::language
