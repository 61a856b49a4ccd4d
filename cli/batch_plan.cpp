#include "batch_plan.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <numeric>
#include <system_error>

#include "command_error.h"
#include "shown_text.h"

namespace tarvo::cli {
namespace {

namespace fs = std::filesystem;

CommandError wrong(const std::string& message) { return {ExitStatus::wrong_usage, message}; }

struct Placeholder {
    const char* word;
    std::string (*text)(const fs::path& input, std::size_t number);
};
const Placeholder kPlaceholders[] = {
    {"{name}", [](const fs::path& input, std::size_t) { return input.stem().string(); }},
    {"{ext}",
     [](const fs::path& input, std::size_t) {
         const std::string dotted = input.extension().string();
         return dotted.empty() ? dotted : dotted.substr(1);
     }},
    {"{dir}", [](const fs::path& input,
                 std::size_t) { return input.has_parent_path() ? input.parent_path().string() : std::string("."); }},
    {"{n}", [](const fs::path&, std::size_t number) { return std::to_string(number); }},
};

std::string filled(const std::string& pattern, const std::string& input, std::size_t number) {
    std::string name;
    for (std::size_t at = 0; at < pattern.size();) {
        const auto* const here =
            std::find_if(std::begin(kPlaceholders), std::end(kPlaceholders), [&](const auto& each) {
                return pattern.compare(at, std::char_traits<char>::length(each.word), each.word) == 0;
            });
        if (here == std::end(kPlaceholders)) {
            name += pattern[at++];
        } else {
            name += here->text(input, number);
            at += std::char_traits<char>::length(here->word);
        }
    }
    return name;
}

// One name of a file for all its names, also of one that is not there yet.
std::string real_name(const std::string& path) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(path, error);
    return (error ? fs::absolute(path, error).lexically_normal() : real).string();
}

std::string output_of(const std::string& input, const OutputRule& rule, std::size_t number) {
    if (rule.in_place) return input;
    if (!rule.into.empty()) return (fs::path(rule.into) / fs::path(input).filename()).string();
    return filled(rule.pattern, input, number);
}

void check_clashes(const std::vector<PlannedFile>& files, bool in_place) {
    std::map<std::string, const PlannedFile*> inputs, outputs;
    for (const PlannedFile& file : files) {
        const auto [other, is_new] = inputs.try_emplace(real_name(file.input), &file);
        if (!is_new && in_place)
            throw wrong(host::quoted(file.input) + " and " + host::quoted(other->second->input) + " are one file");
    }
    if (in_place) return;
    for (const PlannedFile& file : files) {
        if (file.output.empty()) continue;
        const std::string name = real_name(file.output);
        const auto [other, is_new] = outputs.try_emplace(name, &file);
        if (!is_new)
            throw wrong(host::quoted(other->second->input) + " and " + host::quoted(file.input) +
                        " would both be written to " + host::quoted(file.output));
        if (const auto input = inputs.find(name); input != inputs.end())
            throw wrong("the output of " + host::quoted(file.input) + " would replace the input " +
                        host::quoted(input->second->input) + (input->second == &file ? "; --in-place does that" : ""));
    }
}

}  // namespace

bool is_pattern(const std::string& output) {
    return std::any_of(std::begin(kPlaceholders), std::end(kPlaceholders),
                       [&](const Placeholder& each) { return output.find(each.word) != std::string::npos; });
}

Shard shard_of(const std::string& text) {
    Shard shard;
    const char* const end = text.data() + text.size();
    const auto part = std::from_chars(text.data(), end, shard.part);
    const bool divided = part.ec == std::errc() && part.ptr != end && *part.ptr == '/';
    const auto parts = divided ? std::from_chars(part.ptr + 1, end, shard.parts) : part;
    if (!divided || parts.ec != std::errc() || parts.ptr != end || shard.part < 1 || shard.part > shard.parts)
        throw wrong("--shard " + host::quoted(text) + " is not I/N, with I from 1 to N");
    return shard;
}

std::vector<PlannedFile> plan(const std::vector<std::string>& inputs, const OutputRule& rule, const Shard& shard) {
    std::vector<PlannedFile> files;
    for (const std::string& input : inputs) files.push_back({input, output_of(input, rule, files.size() + 1)});
    check_clashes(files, rule.in_place);
    if (shard.parts == 1) return files;

    std::vector<std::size_t> sorted(files.size());
    std::iota(sorted.begin(), sorted.end(), std::size_t{0});
    std::sort(sorted.begin(), sorted.end(),
              [&](std::size_t a, std::size_t b) { return inputs[a] != inputs[b] ? inputs[a] < inputs[b] : a < b; });
    std::vector<std::size_t> mine;
    for (std::size_t i = shard.part - 1; i < sorted.size(); i += shard.parts) mine.push_back(sorted[i]);
    std::sort(mine.begin(), mine.end());
    std::vector<PlannedFile> chosen;
    for (const std::size_t index : mine) chosen.push_back(files[index]);
    return chosen;
}

}  // namespace tarvo::cli
