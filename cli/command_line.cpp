#include "command_line.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "command_error.h"
#include "shown_text.h"
#include "suggestions.h"

namespace tarvo::cli {

void check_command(const CLI::App& tool, int argc, const char* const* argv) {
    std::vector<std::string_view> names;
    for (const CLI::App* command : tool.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    const auto is_word = [](std::string_view word) { return !word.starts_with('-'); };
    const auto* const end = argv + argc;
    const auto* const word = std::find_if(argv + std::min(argc, 1), end, is_word);
    if (word == end || std::ranges::find(names, std::string_view(*word)) != names.end()) return;
    throw CommandError(ExitStatus::wrong_usage,
                       "there is no command " + host::quoted(*word) +
                           language::did_you_mean({std::string(language::closest_name(*word, names))}));
}

std::string readable(const std::string& message) {
    constexpr std::size_t kMost = 4000, kEnd = 1000;
    if (message.size() <= kMost) return host::shown_lines(message);
    std::size_t end = message.size() - kEnd;
    while (host::is_continuation_byte(message[end])) ++end;  // the zero behind a string is none
    return host::shown_lines(host::beginning(message, kMost - kEnd)) + " ... " + host::shown_lines(message.substr(end));
}

}  // namespace tarvo::cli
