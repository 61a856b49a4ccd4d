// tarvo list: what the plugin registers, and what people and programs are told of it.

#include <CLI/App.hpp>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "command_error.h"
#include "commands.h"
#include "described.h"
#include "names.h"
#include "scanner.h"
#include "search.h"
#include "suggestions.h"
#include "tarvo.hpp"

namespace tarvo::cli {

using host::Callable;

namespace {

struct ListOptions {
    std::string word;
    bool json = false;
};

struct Line {
    std::string name;  // a search looks at this and at the group's name
    std::string text;
    const Callable* callable = nullptr;  // null for a property
    std::string summary = {};            // shown below what a search finds
};

struct Group {
    std::string name;  // the class's; empty for methods of no class
    std::string title;
    std::vector<Line> lines;
};

bool holds(const std::string& text, const std::string& part) {
    return host::folded(text).find(host::folded(part)) != std::string::npos;
}

Line method_line(const Callable& callable) {
    const std::string note = callable.assignable() ? "  (assignable)" : "";
    return {callable.declaration.name, callable.declaration.text + note, &callable};
}

Group plain_methods(const host::Caller& caller) {
    Group group{"", "Methods", {}};
    for (const Callable& callable : caller.callables())
        if (callable.owner.empty() && !callable.extends()) group.lines.push_back(method_line(callable));
    return group;
}

Group class_members(const host::Caller& caller, const host::RegisteredClass& cls) {
    Group group{cls.name, "Class " + cls.name, {}};
    for (const host::RegisteredProperty& property : cls.properties)
        group.lines.push_back(
            {property.name, property.name + " as " + property.type + (property.setter ? "" : "  (read-only)")});
    for (const Callable& callable : caller.callables())
        if (host::same_name(callable.owner, cls.name)) group.lines.push_back(method_line(callable));
    return group;
}

// Returns the methods that extend each class, whether they are registered with it or as global methods.
std::vector<Group> extension_methods(const host::Caller& caller) {
    std::vector<Group> groups;
    for (const Callable& callable : caller.callables()) {
        if (!callable.extends()) continue;
        const std::string& extended = callable.parameters.front().type.name;
        auto group = std::ranges::find_if(groups, [&](const Group& g) { return host::same_name(g.name, extended); });
        if (group == groups.end()) group = groups.insert(group, {extended, "Methods of " + extended, {}});
        group->lines.push_back(method_line(callable));
    }
    return groups;
}

std::vector<Group> all_groups(Described& described) {
    std::vector<Group> groups = {plain_methods(described.caller())};
    for (const host::RegisteredClass& cls : described.registry().classes())
        groups.push_back(class_members(described.caller(), cls));
    for (Group& group : extension_methods(described.caller())) groups.push_back(std::move(group));
    return groups;
}

// Finds what has the word in its name, goes by it, or is of a family of that name.
class Search {
public:
    Search(const reference::Reference& all, const std::string& word) : all_(all), word_(word) {
        for (const reference::Operation& each : all.operations()) add(each);
        for (const reference::Class& cls : all.classes())
            for (const reference::Operation& each : cls.methods) add(each);
    }

    void keep_found(std::vector<Group>& groups) const {
        for (Group& group : groups) {
            const bool whole = finds_class(group.name);
            std::erase_if(group.lines, [&](const Line& line) { return !whole && !finds(line); });
            for (Line& line : group.lines)
                if (const reference::Operation* const described = operation_of(line))
                    line.summary = described->about->summary;
        }
        std::erase_if(groups, [](const Group& group) { return group.lines.empty(); });
    }

private:
    void add(const reference::Operation& operation) {
        for (const reference::Form& form : operation.forms) operations_[form.callable] = &operation;
    }

    // Null for a property, and for what nobody has described.
    const reference::Operation* operation_of(const Line& line) const {
        const auto found = operations_.find(line.callable);
        return found == operations_.end() ? nullptr : found->second;
    }

    bool finds(const Line& line) const {
        if (holds(line.name, word_)) return true;
        const reference::Operation* const described = operation_of(line);
        return described &&
               (reference::have_word(described->about->words, word_) || host::same_name(described->family, word_));
    }

    bool finds_class(const std::string& name) const {
        const reference::Class* const cls = reference::find_class(all_, name);
        return holds(name, word_) || (cls && reference::have_word(cls->about->words, word_));
    }

    const reference::Reference& all_;
    const std::string& word_;
    std::map<const Callable*, const reference::Operation*> operations_;
};

void show(const std::vector<Group>& groups) {
    for (const Group& group : groups) {
        std::cout << (&group == &groups.front() ? "" : "\n") << group.title << '\n';
        for (const Line& line : group.lines) {
            std::cout << "  " << line.text << '\n';
            if (!line.summary.empty()) std::cout << "      " << line.summary << '\n';
        }
    }
}

void list(const ListOptions& options) {
    if (options.json) {
        std::cout << tarvo::description();
        return;
    }
    Described described;
    std::vector<Group> groups = all_groups(described);
    if (!options.word.empty()) {
        const reference::Reference all = described.all();
        Search(all, options.word).keep_found(groups);
        if (groups.empty())
            throw CommandError(ExitStatus::wrong_usage, "nothing has " + host::quoted(options.word) +
                                                            " in its name or goes by it" +
                                                            language::suggestions(all, options.word));
    }
    show(groups);
}

}  // namespace

void add_list_command(CLI::App& tool) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App* command = tool.add_subcommand("list", "Show the declarations that the plugin registers");
    CLI::Option* const word = command->add_option(
        "WORD", options->word,
        "only what has this in its name, goes by this word (resize, crop, blur), or is of this family");
    command->add_flag("--json", options->json, "all that is known of every operation, for programs")->excludes(word);
    command->callback([options] { list(*options); });
}

}  // namespace tarvo::cli
