// tarvo complete: what a word that is being typed may become, for the shells' completion (cli/completion). It prints a
// line for each: the word and, behind a tab, what it is; the line ":files" stands for the names of files.

#include <CLI/App.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "described.h"
#include "names.h"
#include "reference.h"

namespace tarvo::cli {
namespace {

using Words = std::vector<std::string>;

constexpr std::string_view kPrefix = "TRV_";  // of all names

std::string beginning_of(const std::string& text, std::size_t length) { return host::folded(text.substr(0, length)); }

// Prints what begins as the word does, upper and lower case aside.
class Choices {
public:
    explicit Choices(const std::string& word) : word_(word) {}

    void offer(const std::string& choice, std::string_view meaning) const {
        if (beginning_of(choice, word_.size()) == host::folded(word_))
            std::cout << choice << '\t' << meaning.substr(0, meaning.find('\n')) << '\n';
    }

    // With TRV_ for those who write it, without for all others.
    void offer_name(std::string_view name, std::string_view meaning) const {
        const bool prefixed = host::folded(word_).starts_with("trv");
        if (!prefixed) name.remove_prefix(kPrefix.size());
        offer(std::string(name), meaning);
    }

    void offer_files() const { std::cout << ":files\n"; }

private:
    const std::string& word_;
};

void offer_options(const Choices& choices, const CLI::App& command) {
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_snames()) choices.offer("-" + name, option->get_description());
        for (const std::string& name : option->get_lnames()) choices.offer("--" + name, option->get_description());
    }
}

void offer_commands(const Choices& choices, const CLI::App& tool) {
    for (const CLI::App* command : tool.get_subcommands([](const CLI::App*) { return true; }))
        if (!command->get_group().empty()) choices.offer(command->get_name(), command->get_description());
}

// The option of that name, if it takes a value behind it; else null.
const CLI::Option* taking_value(const CLI::App& command, const std::string& name) {
    const CLI::Option* const option = command.get_option_no_throw(name);
    return option && option->get_items_expected_max() > 0 ? option : nullptr;
}

bool is_called_on_pictures(const reference::Operation& operation) {
    return std::ranges::any_of(operation.forms, [](const reference::Form& form) { return form.self == "picture"; });
}

bool makes_picture_of_nothing(const reference::Operation& operation) {
    const reference::Form& form = operation.forms.front();
    return form.self == "none" && form.result == "picture";
}

void offer_names(const Choices& choices, const reference::Reference& all, bool (*wanted)(const reference::Operation&)) {
    for (const reference::Operation& each : all.operations())
        if (!wanted || wanted(each)) choices.offer_name(each.about->name, each.about->summary);
}

void offer_classes(const Choices& choices, const reference::Reference& all) {
    for (const reference::Class& each : all.classes()) choices.offer_name(each.about->name, each.about->summary);
}

void offer_search_words(const Choices& choices, const reference::Reference& all) {
    Words words;
    for (const reference::Operation& each : all.operations())
        words.insert(words.end(), each.about->words.begin(), each.about->words.end());
    std::ranges::sort(words);
    words.erase(std::unique(words.begin(), words.end()), words.end());
    for (const std::string& word : words) choices.offer(word, "what goes by this word");
}

// What stands where the command line has no option, by the name that the command gives that place.
void offer_arguments(const Choices& choices, const CLI::App& command, std::string_view place) {
    if (place == "MANIFEST" || place == "DIR") return choices.offer_files();
    if (place == "IN") choices.offer_files();
    Described described;
    const reference::Reference all = described.all();
    const bool takes_calls = command.get_option_no_throw("CALL") != nullptr;
    if (place == "IN" && takes_calls) offer_names(choices, all, makes_picture_of_nothing);
    if (place == "CALL") offer_names(choices, all, is_called_on_pictures);
    if (place == "NAME" || place == "WORD") {
        offer_names(choices, all, nullptr);
        offer_classes(choices, all);
    }
    if (place == "WORD") offer_search_words(choices, all);
}

void offer_recipe(const Choices& choices) {
    choices.offer_files();
    Described described;
    offer_names(choices, described.all(), [](const reference::Operation& each) {
        return is_called_on_pictures(each) || makes_picture_of_nothing(each);
    });
}

// The name of the place that the next argument is for; the last place takes all that follow. Empty for none.
std::string place_of_argument(const CLI::App& command, std::size_t before) {
    std::vector<const CLI::Option*> places;
    for (const CLI::Option* option : command.get_options())
        if (option->get_positional()) places.push_back(option);
    if (places.empty()) return "";
    const bool repeats = places.back()->get_items_expected_max() > 1;
    if (before >= places.size() && !repeats) return "";
    return places[std::min(before, places.size() - 1)]->get_name(true);
}

// Null for a word that is no command's.
const CLI::App* command_named(const CLI::App& tool, const std::string& name) {
    const auto found = tool.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

// The last of the words is the one that is being typed.
void complete(const CLI::App& tool, Words words) {
    if (words.empty()) words.emplace_back();
    const Choices choices(words.back());
    const auto typed = words.end() - 1;
    const auto name =
        std::find_if(words.begin(), typed, [](const std::string& word) { return !word.starts_with('-'); });
    const CLI::App* const command = name == typed ? &tool : command_named(tool, *name);
    if (!command) return;
    std::size_t arguments = 0;
    const CLI::Option* valued = nullptr;
    for (auto word = name == typed ? typed : name + 1; word < typed; ++word) {
        if (valued)
            valued = nullptr;
        else if (word->starts_with('-'))
            valued = taking_value(*command, *word);
        else
            ++arguments;
    }
    if (valued) {
        const std::string type = valued->get_type_name();
        if (type == "OUT" || type == "DIR") choices.offer_files();
        if (type == "CALL") offer_recipe(choices);
    } else if (words.back().starts_with('-')) {
        offer_options(choices, *command);
    } else if (command == &tool) {
        offer_commands(choices, tool);
    } else if (const std::string place = place_of_argument(*command, arguments); !place.empty()) {
        offer_arguments(choices, *command, place);
    }
}

}  // namespace

void add_complete_command(CLI::App& tool) {
    const auto words = std::make_shared<Words>();
    CLI::App* command = tool.add_subcommand("complete", "Tell a shell what a word may become")->group("");
    command->add_option("WORD", *words, "behind --, the words of the command line up to the one being typed");
    command->callback([&tool, words] { complete(tool, *words); });
}

}  // namespace tarvo::cli
