// tarvo list: what the plugin registers.

#include <CLI/App.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "command_error.h"
#include "commands.h"
#include "names.h"
#include "plugin_session.h"

namespace tarvo::cli {

using host::Callable;

namespace {

struct ListOptions {
    PluginOptions plugin;
    std::string name;
};

struct Line {
    std::string name;  // a filter looks at this and at the group's name
    std::string text;
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
    return {callable.declaration.name, callable.declaration.text + note};
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
        if (host::same_name(callable.owner, cls.name) && !callable.extends())
            group.lines.push_back(method_line(callable));
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

std::vector<Group> all_groups(PluginSession& session) {
    std::vector<Group> groups = {plain_methods(session.caller())};
    for (const host::RegisteredClass& cls : session.host().registry().classes())
        groups.push_back(class_members(session.caller(), cls));
    for (Group& group : extension_methods(session.caller())) groups.push_back(std::move(group));
    return groups;
}

// Removes what does not match a name. A class of that name keeps all of its group.
void keep_matching(std::vector<Group>& groups, const std::string& name) {
    for (Group& group : groups)
        if (!holds(group.name, name))
            std::erase_if(group.lines, [&](const Line& line) { return !holds(line.name, name); });
    std::erase_if(groups, [](const Group& group) { return group.lines.empty(); });
}

void list(const ListOptions& options) {
    PluginSession session(options.plugin);
    std::vector<Group> groups = all_groups(session);
    keep_matching(groups, options.name);
    if (groups.empty())
        throw CommandError(ExitStatus::wrong_usage, "nothing has a name with \"" + options.name + "\" in it");
    for (const Group& group : groups) {
        std::cout << (&group == &groups.front() ? "" : "\n") << group.title << '\n';
        for (const Line& line : group.lines) std::cout << "  " << line.text << '\n';
    }
}

}  // namespace

void add_list_command(CLI::App& tool) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App* command = tool.add_subcommand("list", "Show the declarations that the plugin registers");
    command->add_option("NAME", options->name, "only methods, properties and classes with this in their name");
    add_plugin_options(*command, options->plugin);
    command->callback([options] { list(*options); });
}

}  // namespace tarvo::cli
