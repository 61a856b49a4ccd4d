#include "suggestions.h"

#include "names.h"

namespace tarvo::language {

std::string_view closest_name(std::string_view written, std::span<const std::string_view> names) {
    const std::string wanted = host::folded(written);
    std::string_view closest;
    std::size_t least = 0;
    for (const std::string_view name : names) {
        const auto distance = reference::spelling_distance(wanted, host::folded(name));
        if (!distance || (!closest.empty() && *distance >= least)) continue;
        least = *distance;
        closest = name;
    }
    return closest;
}

std::string did_you_mean(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        if (!name.empty()) text += (text.empty() ? "; did you mean " : " or ") + name;
    return text.empty() ? text : text + "?";
}

std::string suggestions(const reference::Reference& all, std::string_view name) {
    return did_you_mean(reference::near_names(all, name));
}

}  // namespace tarvo::language
