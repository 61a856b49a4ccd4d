// tarvo manual: the manual page, for man, made of what the commands say of themselves and of what is told of the
// operations.

#include <CLI/App.hpp>

#include <algorithm>
#include <cctype>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "described.h"
#include "reference.h"

namespace tarvo::cli {
namespace {

// Text that the formatter takes as it is.
std::string escaped(std::string_view text) {
    std::string result = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char c : text) {
        switch (c) {
            case '\\': result += "\\e"; break;
            case '-': result += "\\-"; break;
            case '\'': result += "\\(aq"; break;
            case '`': result += "\\(ga"; break;
            case '^': result += "\\(ha"; break;
            case '~': result += "\\(ti"; break;
            case '"': result += "\\(dq"; break;
            default: result += c;
        }
    }
    return result;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }

void section(std::string_view title) { std::cout << ".SH " << title << '\n'; }

// An entry of a list: what it is about, and below it what is said of that.
void entry(const std::string& head, std::string_view text) {
    std::cout << ".TP\n" << head << '\n' << escaped(text) << '\n';
}

// A text of the tool, without empty lines, in which lines that are set in stand as they are.
void print_text(const std::string& text) {
    std::istringstream lines(text);
    bool set_in = false, begun = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("  ") != set_in) {
            set_in = !set_in;
            std::cout << (set_in ? (begun ? ".PP\n.nf\n" : ".nf\n") : ".fi\n.PP\n");
        }
        std::cout << escaped(line) << '\n';
        begun = true;
    }
    if (set_in) std::cout << ".fi\n";
}

std::vector<const CLI::App*> shown_commands(const CLI::App& tool) {
    return tool.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

// What an option's value is called: "N" of "N:SIZE [b, kb(=1024b), ...]". Empty for a flag.
std::string value_of(const CLI::Option& option) {
    const std::string type = option.get_items_expected_max() > 0 ? option.get_type_name() : "";
    return type.substr(0, type.find(':'));
}

// "-o, --output OUT", or the name of an argument.
std::string head_of(const CLI::Option& option) {
    if (option.get_positional()) return "\\fI" + escaped(option.get_name(true)) + "\\fR";
    std::string head;
    for (const std::string& name : option.get_snames()) head += (head.empty() ? "" : ", ") + bold("-" + name);
    for (const std::string& name : option.get_lnames()) head += (head.empty() ? "" : ", ") + bold("--" + name);
    const std::string value = value_of(option);
    return value.empty() ? head : head + " \\fI" + escaped(value) + "\\fR";
}

// The command with all that has to be given, as a line to be filled.
void print_usage(const CLI::App& command) {
    std::cout << bold("tarvo") << ' ' << bold(command.get_name()) << " [\\fIoptions\\fR]";
    for (const CLI::Option* option : command.get_options()) {
        const bool many = option->get_items_expected_max() > 1;
        const std::string text = option->get_positional() ? head_of(*option) + (many ? " ..." : "") : head_of(*option);
        if (option->get_required())
            std::cout << ' ' << text;
        else if (option->get_positional())
            std::cout << " [" << text << ']';
    }
    std::cout << '\n';
}

void print_options(const CLI::App& command) {
    for (const CLI::Option* option : command.get_options()) entry(head_of(*option), option->get_description());
}

void print_command(const CLI::App& command) {
    std::cout << ".SS " << escaped(command.get_name()) << '\n' << escaped(command.get_description()) << ".\n.PP\n";
    print_usage(command);
    print_options(command);
    // A command without one has its parent's.
    if (command.get_footer() == command.get_parent()->get_footer()) return;
    std::cout << ".PP\n";
    print_text(command.get_footer());
}

void print_operations(const reference::Reference& all) {
    for (const describe::Family* family : describe::families()) {
        std::cout << ".SS " << escaped(family->title) << '\n';
        for (const reference::Operation& each : all.operations())
            if (each.family == family->name) entry(bold(each.about->name), each.about->summary);
    }
    std::cout << ".SS Classes\n";
    for (const reference::Class& each : all.classes()) entry(bold(each.about->name), each.about->summary);
}

// The footer of the tool is a title and what it is the title of: "Exit status:\n ...".
void print_footer(const std::string& footer) {
    const std::size_t colon = footer.find(":\n");
    std::string title = footer.substr(0, colon);
    std::ranges::transform(title, title.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    section(title);
    print_text(footer.substr(colon + 2));
}

void print_manual(const CLI::App& tool, const std::string& date) {
    std::cout << ".TH TARVO 1 " << (date.empty() ? "\"\"" : date) << " \"Tarvo Graphics " TARVO_VERSION "\"\n";
    section("NAME");
    std::cout << "tarvo \\- picture operations on picture files\n";
    section("SYNOPSIS");
    for (const CLI::App* command : shown_commands(tool)) {
        if (command != shown_commands(tool).front()) std::cout << ".br\n";
        print_usage(*command);
    }
    section("DESCRIPTION");
    print_text(tool.get_description());
    section("OPTIONS");
    print_options(tool);
    section("COMMANDS");
    for (const CLI::App* command : shown_commands(tool)) print_command(*command);
    section("OPERATIONS");
    std::cout << bold("tarvo help") << " \\fINAME\\fR explains one: arguments, ranges, errors, an example.\n";
    print_operations(Described().all());
    print_footer(tool.get_footer());
}

}  // namespace

void add_manual_command(CLI::App& tool) {
    const auto date = std::make_shared<std::string>();
    CLI::App* command = tool.add_subcommand("manual", "Print the manual page, for man")->group("");
    command->add_option("DATE", *date, "the day that the page tells as its own: 2026-01-31");
    command->callback([&tool, date] { print_manual(tool, *date); });
}

}  // namespace tarvo::cli
