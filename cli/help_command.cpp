// tarvo help: an operation or a class, explained to a person.

#include <CLI/App.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "command_error.h"
#include "commands.h"
#include "described.h"
#include "scanner.h"
#include "search.h"
#include "suggestions.h"
#include "wording.h"

namespace tarvo::cli {

using describe::Text;

namespace {

constexpr std::size_t kWidth = 100;

// The words of the text in lines, the first after `head`, all others below its end.
void print(const std::string& head, Text text) {
    std::string line = head;
    bool begun = false;
    while (!text.empty()) {
        const Text word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(text.size(), word.size() + 1));
        if (begun && line.size() + 1 + word.size() > kWidth) {
            std::cout << line << '\n';
            line.assign(head.size(), ' ');
            begun = false;
        }
        if (begun) line += ' ';
        line += word;
        begun = true;
    }
    std::cout << line << '\n';
}

template <class Texts>
void print_list(const char* title, const Texts& texts) {
    if (texts.empty()) return;
    std::cout << '\n' << title << ":\n";
    for (const Text each : texts) print("  * ", each);
}

struct Row {
    std::string name, text;
};

void print_table(const char* title, const std::vector<Row>& rows) {
    if (rows.empty()) return;
    std::size_t width = 0;
    for (const Row& row : rows) width = std::max(width, row.name.size());
    std::cout << '\n' << title << ":\n";
    for (const Row& row : rows) print("  " + row.name + std::string(width - row.name.size() + 2, ' '), row.text);
}

// " (forms 1, 3)"; nothing where every form is meant.
std::string forms_text(const std::vector<std::size_t>& forms, std::size_t all) {
    if (forms.size() == all) return "";
    std::string text;
    for (const std::size_t form : forms) text += (text.empty() ? "" : ", ") + std::to_string(form + 1);
    return (forms.size() == 1 ? " (form " : " (forms ") + text + ")";
}

std::string argument_text(const reference::Argument& argument) {
    const describe::Argument& about = *argument.about;
    std::string text(about.text);
    const std::string range = reference::range_text(about);
    if (!range.empty()) text += "; " + range;
    if (!about.unit.empty()) text += (range.empty() ? "; in " : ", in ") + std::string(about.unit);
    if (!argument.required()) text += "; " + std::string(about.left_out) + " when left out";
    return text;
}

void print_operation(const reference::Operation& operation) {
    const describe::Operation& about = *operation.about;
    print(std::string(about.name) + ": ", about.summary);
    std::cout << '\n';
    const std::size_t forms = operation.forms.size();
    for (std::size_t i = 0; i < forms; ++i)
        print(forms > 1 ? "  " + std::to_string(i + 1) + "  " : "  ", operation.forms[i].declaration());

    std::vector<Row> rows;
    for (const reference::Argument& each : operation.arguments)
        rows.push_back(
            {std::string(each.about->name) + " as " + each.type, argument_text(each) + forms_text(each.forms, forms)});
    print_table("Arguments", rows);

    rows.clear();
    for (const reference::Error& each : operation.errors)
        rows.push_back({std::to_string(each.about->code), each.when + forms_text(each.forms, forms)});
    print_table("Errors, in the order of the checks", rows);
    print_list("Good to know", about.notes);
    if (about.example.call.empty()) return;
    const bool gives_picture = operation.forms.front().result == "picture";
    const std::string input = about.example.input.empty() ? "" : std::string(about.example.input) + " ";
    std::cout << "\nExample:\n  tarvo apply " << input << "'" << about.example.call << "'"
              << (gives_picture ? " -o out.png" : "") << '\n';
}

void print_class(const reference::Class& cls) {
    print(std::string(cls.about->name) + ": ", cls.about->summary);
    std::vector<Row> rows;
    for (const reference::Property& each : cls.properties)
        rows.push_back({std::string(each.about->name) + " as " + each.type + (each.read_only ? ", read-only" : ""),
                        std::string(each.about->text)});
    print_table("Properties", rows);
    rows.clear();
    for (const reference::Operation& method : cls.methods)
        for (const reference::Form& form : method.forms)
            rows.push_back({form.declaration(), std::string(method.about->summary)});
    print_table("Methods", rows);
    print_list("Good to know", cls.about->notes);
}

void help(const std::string& name) {
    Described described;
    const reference::Reference all = described.all();
    if (const auto* const operation = reference::find_operation(all, name)) return print_operation(*operation);
    if (const auto* const cls = reference::find_class(all, name)) return print_class(*cls);
    throw CommandError(ExitStatus::wrong_usage,
                       "there is no operation named " + host::quoted(name) + language::suggestions(all, name));
}

}  // namespace

void add_help_command(CLI::App& tool) {
    const auto name = std::make_shared<std::string>();
    CLI::App* command = tool.add_subcommand("help", "Explain an operation or a class");
    command->add_option("NAME", *name, "its name, with or without TRV_; TRV_Rectangle.ScaleBy for a method")
        ->required();
    command->callback([name] { help(*name); });
}

}  // namespace tarvo::cli
