#include "suggestion.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "names.h"

namespace tarvo::cli {
namespace {

// No name is longer, so that a longer text is meant to be none.
constexpr std::size_t kLongest = 64;

// Counts the letters that are changed, left out, put in or swapped with the next. Both names are folded, and no longer
// than kLongest.
std::size_t distance(std::string_view a, std::string_view b) {
    using Row = std::array<std::size_t, kLongest + 1>;
    Row before_last{}, last{}, row{};
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = a[i - 1] == b[j - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (swapped) row[j] = std::min(row[j], before_last[j - 2] + 1);
        }
        before_last = last;
        last = row;
    }
    return last[b.size()];
}

}  // namespace

std::string_view closest_name(std::string_view written, std::span<const std::string_view> names) {
    if (written.size() > kLongest) return {};
    const std::string wanted = host::folded(written);
    std::size_t least = std::max<std::size_t>(1, wanted.size() / 3) + 1;
    std::string_view closest;
    for (const std::string_view name : names) {
        if (name.size() > kLongest) continue;
        const std::size_t found = distance(wanted, host::folded(name));
        if (found >= least) continue;
        least = found;
        closest = name;
    }
    return closest;
}

std::string did_you_mean(std::string_view name) {
    return name.empty() ? "" : "; did you mean " + std::string(name) + "?";
}

}  // namespace tarvo::cli
