#include "search.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>

#include "names.h"

namespace tarvo::reference {
namespace {

constexpr std::string_view kPrefix = "trv_";

// Folded, and without the prefix that all names share.
std::string key_of(std::string_view name) {
    const std::string key = host::folded(name);
    return key.starts_with(kPrefix) ? key.substr(kPrefix.size()) : key;
}

template <class Described>
const Described* find_named(const std::vector<Described>& all, std::string_view name) {
    const auto found =
        std::ranges::find_if(all, [&](const Described& each) { return key_of(each.about->name) == key_of(name); });
    return found == all.end() ? nullptr : &*found;
}

// How many letters are to be put in, left out, changed or exchanged with their neighbour to make one of the other.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before, last, row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before = std::exchange(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            const bool exchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (exchanged) row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row.back();
}

// How far what is asked for is from the name or a word; none when too far.
template <class Described>
std::optional<std::size_t> distance_to(const Described& about, std::string_view key) {
    std::optional<std::size_t> least = spelling_distance(key, key_of(about.name));
    for (const describe::Text word : about.words) {
        const std::optional<std::size_t> distance = spelling_distance(key, word);
        if (distance && (!least || *distance < *least)) least = distance;
    }
    return least;
}

}  // namespace

const Operation* find_operation(const Reference& reference, std::string_view name) {
    const std::size_t dot = name.find('.');
    if (dot == std::string_view::npos) return find_named(reference.operations(), name);
    const Class* const cls = find_class(reference, name.substr(0, dot));
    return cls ? find_named(cls->methods, name.substr(dot + 1)) : nullptr;
}

const Class* find_class(const Reference& reference, std::string_view name) {
    return find_named(reference.classes(), name);
}

const describe::Operation* description_of(const host::Callable& method) {
    const auto among = [&](std::span<const describe::Operation> operations) {
        const auto named = [&](const describe::Operation& each) {
            return host::same_name(each.name, method.declaration.name);
        };
        const auto found = std::ranges::find_if(operations, named);
        return found == operations.end() ? nullptr : &*found;
    };
    const bool of_class = !method.owner.empty() && !method.extends();
    const describe::Operation* about = nullptr;
    if (of_class) {
        for (const describe::Class* cls : describe::classes())
            if (host::same_name(cls->name, method.owner)) about = among(cls->methods);
    } else {
        for (const describe::Family* family : describe::families())
            if (!about) about = among(family->operations);
    }
    return about;
}

std::optional<std::size_t> spelling_distance(std::string_view asked, std::string_view name) {
    constexpr std::size_t kLongestMisspelt = 64;
    if (asked.size() > kLongestMisspelt) return std::nullopt;
    const std::size_t found = distance(asked, name);
    return found <= std::max<std::size_t>(1, asked.size() / 3) ? std::optional(found) : std::nullopt;
}

bool have_word(std::span<const describe::Text> words, std::string_view text) {
    const std::string asked = host::folded(text);
    return std::ranges::any_of(words, [&](describe::Text word) {
        const std::size_t at = word.find(asked);
        return at != std::string_view::npos && (at == 0 || word[at - 1] == ' ');
    });
}

std::vector<std::string> near_names(const Reference& reference, std::string_view name) {
    constexpr std::size_t kMost = 4;
    const std::string key = key_of(name);
    std::multimap<std::size_t, std::string> found;  // by distance
    const auto look_at = [&](const auto& about) {
        if (const auto distance = distance_to(about, key)) found.emplace(*distance, about.name);
    };
    for (const Operation& each : reference.operations()) look_at(*each.about);
    for (const Class& each : reference.classes()) look_at(*each.about);
    std::vector<std::string> names;
    for (const auto& [distance, near] : found)
        if (names.size() < kMost && distance <= found.begin()->first + 1) names.push_back(near);
    return names;
}

}  // namespace tarvo::reference
