// tarvo verify: pictures against a manifest of their hashes.

#include <CLI/App.hpp>

#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "apply_words.h"
#include "command_error.h"
#include "command_line.h"
#include "commands.h"
#include "limit_options.h"
#include "manifest.h"
#include "messages.h"
#include "report.h"
#include "shown_text.h"
#include "verification.h"

namespace tarvo::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kHowItWorks =
    "A manifest is a text of one line a picture: the hash of its pixels, WIDTHxHEIGHT, rgb or rgba, and the name.\n"
    "tolerance=PIXELS:DIFFERENCE behind the kind allows so many pixels to differ, by up to so much in a channel; that\n"
    "needs --expected. Lines \"@ CALL\" are a recipe: the pictures below it are what its calls make, in memory, of "
    "the\n"
    "files of these names. A manifest changes by --add, --update and --update-all alone.\n"
    "  tarvo verify golden.txt photos --record --recipe 'Stretch(fit(300))'\n"
    "  tarvo verify golden.txt photos --add --recipe poster.txt\n"
    "Status 0: all pictures are the same; 1: some are changed, missing or not listed; 3: a file cannot be read.";

struct VerifyOptions {
    std::string manifest, report;
    VerifiedFolders folders;
    bool record = false, add = false, update_all = false, json = false, quiet = false;
    std::vector<std::string> update, recipe_words;
    std::optional<Recipe> recipe = {};  // if it was told

    bool changes() const { return record || add || update_all || !update.empty(); }
};

Json json_of(const PictureEntry& entry) {
    return {{"sha256", entry.hash}, {"width", entry.width}, {"height", entry.height}, {"kind", entry.kind()}};
}

Json json_of(const Difference& difference) {
    return {
        {"pixels", difference.pixels},
        {"largest", difference.largest},
        {"rectangle", {difference.left, difference.top, difference.right, difference.bottom}},
        {"first",
         {{"x", difference.x}, {"y", difference.y}, {"expected", difference.expected}, {"found", difference.found}}}};
}

void print(const Json& json) { std::cout << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n'; }

void print_as_json(const std::vector<Finding>& findings) {
    for (const Finding& finding : findings) {
        const bool tolerated = finding.outcome == Outcome::tolerated;
        Json line = {{"name", finding.name}};
        if (!finding.recipe().empty()) line["recipe"] = finding.recipe();
        line["result"] = in_words(tolerated ? Outcome::same : finding.outcome);
        if (tolerated) line["tolerated"] = true;
        if (!finding.remark.empty()) line["message"] = finding.remark;
        if (finding.expected) line["expected"] = json_of(*finding.expected);
        if (finding.found) line["found"] = json_of(*finding.found);
        if (finding.difference) line["difference"] = json_of(*finding.difference);
        print(line);
    }
    const auto number = [&](Outcome outcome) { return count(findings, outcome); };
    print({{"summary",
            {{"same", number(Outcome::same) + number(Outcome::tolerated)},
             {"tolerated", number(Outcome::tolerated)},
             {"changed", number(Outcome::changed)},
             {"missing", number(Outcome::missing)},
             {"not_listed", number(Outcome::not_listed)},
             {"unreadable", number(Outcome::unreadable)}}}});
}

void print_lines(const std::vector<Finding>& findings, Console& console) {
    for (const Finding& finding : findings)
        if (finding.outcome == Outcome::same)
            console.say(finding.in_line());
        else
            console.answer(host::shown_lines(finding.in_line()));
    console.answer(summary(findings));
}

void compare(const VerifyOptions& options) {
    Console console(options.quiet);
    const Manifest manifest = read_manifest(options.manifest);
    const VerifiedPictures pictures(options.folders, console);
    const std::vector<Finding> findings = verify(manifest, pictures);
    if (options.json)
        print_as_json(findings);
    else
        print_lines(findings, console);
    if (!options.report.empty()) write_report(options.report, findings, pictures, console);
    if (const std::size_t unread = count(findings, Outcome::unreadable); unread > 0)
        throw CommandError(ExitStatus::file_error, options.manifest + ": " + std::to_string(unread) +
                                                       (unread == 1 ? " picture" : " pictures") + " cannot be read");
    if (count(findings, Outcome::same) + count(findings, Outcome::tolerated) < findings.size())
        throw CommandError(ExitStatus::operation_failed,
                           options.manifest + ": the pictures are not as they are listed");
}

// Makes the manifest say what is there.
class Change {
public:
    Change(const VerifyOptions& options, Console& console)
        : options_(options),
          console_(console),
          manifest_(options.record ? Manifest{} : read_manifest(options.manifest)),
          pictures_(options.folders, console) {}

    // A new group of all that is there.
    void list_all() {
        const Recipe recipe = options_.recipe.value_or(Recipe{});
        const auto [group, is_new] = manifest_.try_emplace(recipe, recipe);
        if (!is_new)
            throw CommandError(ExitStatus::file_error, options_.manifest + " has a group " +
                                                           (recipe.empty() ? "without a recipe" : "with this recipe") +
                                                           " already; --update NAME... or --update-all change it");
        if (group->second.chain.begins_with_nothing())
            add(*group, without_blanks(recipe.front().substr(0, recipe.front().find('('))));
        else
            for (const std::string& name : pictures_.names()) add(*group, name);
        if (!recipe.empty() && group->second.entries.empty())
            throw CommandError(ExitStatus::file_error, options_.folders.found + ": there is no picture in it");
    }

    void take_all() {
        std::set<std::string> names;
        for (const auto& [recipe, group] : manifest_)
            if (is_meant(recipe))
                for (const auto& [name, entry] : group.entries) names.insert(name);
        const ListedGroup* const told = told_group();
        if (!told || !told->second.chain.begins_with_nothing())
            names.insert(pictures_.names().begin(), pictures_.names().end());
        for (const std::string& name : names) take(name);
    }

    // Every line of that name; where there is none, a new one.
    void take(const std::string& name) {
        ListedGroup* const told = told_group();
        bool is_listed = false;
        for (ListedGroup& each : manifest_) {
            const auto listed = each.second.entries.find(name);
            if (!is_meant(each.first) || listed == each.second.entries.end()) continue;
            is_listed = true;
            renew(each, listed);
        }
        if (is_listed) return;
        if (pictures_.names().count(name) == 0)
            throw CommandError(ExitStatus::wrong_usage, host::quoted(name) + " is neither listed in " +
                                                            options_.manifest + " nor a picture in " +
                                                            options_.folders.found);
        ListedGroup& group = told ? *told : usual_group();
        if (group.second.chain.begins_with_nothing())
            throw CommandError(ExitStatus::wrong_usage,
                               host::quoted(name) + " is not listed: the recipe makes its picture of nothing");
        add(group, name);
    }

    bool any() const { return updated_ + added_ + removed_ > 0; }
    void write() const {
        if (!options_.record && !any()) return;
        write_manifest(options_.manifest, manifest_, options_.record ? WholeFile::Old::kept : WholeFile::Old::replaced,
                       console_);
    }
    std::string in_words() const {
        std::size_t lines = 0;
        for (const auto& [recipe, group] : manifest_) lines += group.entries.size();
        if (options_.record) return std::to_string(lines) + " listed";
        return std::to_string(updated_) + " updated, " + std::to_string(added_) + " added, " +
               std::to_string(removed_) + " removed, " + std::to_string(lines - updated_ - added_) + " as they were";
    }

private:
    bool is_meant(const Recipe& recipe) const { return !options_.recipe || *options_.recipe == recipe; }

    // Null when none was told.
    ListedGroup* told_group() {
        if (!options_.recipe) return nullptr;
        const auto group = manifest_.find(*options_.recipe);
        if (group == manifest_.end())
            throw CommandError(ExitStatus::wrong_usage,
                               options_.manifest + " has no group with this recipe; --add makes one");
        return &*group;
    }
    // Where a picture goes of which nothing is told: to the only group that takes any, else to that without a recipe.
    ListedGroup& usual_group() {
        const bool only = manifest_.size() == 1 && !manifest_.begin()->second.chain.begins_with_nothing();
        return only ? *manifest_.begin() : *manifest_.try_emplace(Recipe{}, Recipe{}).first;
    }

    PictureEntry entry_of(const std::string& name, const ListedGroup& group) const {
        try {
            return PictureEntry::of(pictures_.found(name, group));
        } catch (const CommandError& error) {
            if (group.first.empty() || error.status() != ExitStatus::operation_failed) throw;
            throw CommandError(error.status(), title(name, group.first) + ": " + error.what(), error.code());
        }
    }

    void add(ListedGroup& group, const std::string& name) {
        group.second.entries.emplace(name, entry_of(name, group));
        tell(name, group, "added", added_);
    }

    void renew(ListedGroup& group, Entries::iterator listed) {
        const std::string name = listed->first;
        if (!pictures_.is_there(name, group)) {
            group.second.entries.erase(listed);
            return tell(name, group, "removed", removed_);
        }
        PictureEntry now = entry_of(name, group);
        if (now.is_same(listed->second)) return;
        now.tolerance = listed->second.tolerance;
        listed->second = now;
        tell(name, group, "updated", updated_);
    }

    void tell(const std::string& name, const ListedGroup& group, const char* what, std::size_t& number) {
        ++number;
        console_.say(title(name, group.first) + ": " + what);
    }

    const VerifyOptions& options_;
    Console& console_;
    Manifest manifest_;
    const VerifiedPictures pictures_;
    std::size_t updated_ = 0, added_ = 0, removed_ = 0;
};

void change(const VerifyOptions& options) {
    Console console(options.quiet);
    Change change(options, console);
    if (options.record || options.add)
        change.list_all();
    else if (options.update_all)
        change.take_all();
    std::set<std::string> names;
    for (const std::string& name : options.update)
        names.insert(std::filesystem::path(name).lexically_normal().generic_string());
    for (const std::string& name : names) change.take(name);
    change.write();
    console.answer(change.in_words());
}

void verify_command(VerifyOptions options) {
    if (options.folders.found.empty()) {
        const auto folder = std::filesystem::path(options.manifest).parent_path();
        options.folders.found = folder.empty() ? "." : folder.string();
    }
    if (!options.recipe_words.empty()) {
        if (!options.changes())
            throw CommandError(ExitStatus::wrong_usage,
                               "--recipe is for --record, --add and --update: a manifest has recipes of its own");
        options.recipe = calls_of(options.recipe_words);
        recipe_chain(*options.recipe);
    }
    if (!options.report.empty() && options.folders.expected.empty())
        throw CommandError(ExitStatus::wrong_usage, "--report needs --expected: the pictures as they were");
    std::error_code unseen;  // which writing it tells
    if (options.record && std::filesystem::exists(std::filesystem::symlink_status(options.manifest, unseen)))
        throw CommandError(ExitStatus::file_error,
                           options.manifest + " is there already; --update NAME... or --update-all change it");
    if (options.changes())
        change(options);
    else
        compare(options);
}

}  // namespace

void add_verify_command(CLI::App& tool) {
    const auto options = std::make_shared<VerifyOptions>();
    CLI::App* command = tool.add_subcommand("verify", "Compare pictures with a manifest of their hashes");
    command->footer(kHowItWorks);
    command->add_option("MANIFEST", options->manifest, "the manifest")->required();
    command->add_option("DIR", options->folders.found, "the folder of the pictures; that of the manifest unless told");
    auto* const record = command->add_flag("--record", options->record, "make a manifest that is not there yet");
    auto* const add =
        command->add_flag("--add", options->add, "add a group to a manifest that is there")->excludes(record);
    auto* const update = command->add_option("--update", options->update, "take these pictures as they are now")
                             ->type_name("NAME")
                             ->excludes(record)
                             ->excludes(add);
    command->add_flag("--update-all", options->update_all, "take all pictures as they are now")
        ->excludes(record)
        ->excludes(add)
        ->excludes(update);
    command
        ->add_option("--recipe", options->recipe_words,
                     "of the group that is made or changed: a call, or a file of a call a line; again for more calls")
        ->type_name("CALL")
        ->allow_extra_args(false);
    command->add_option("--expected", options->folders.expected, "the folder of the pictures as they were listed")
        ->type_name("DIR");
    command->add_option("--report", options->report, "write a page that shows what is not the same")->type_name("OUT");
    command->add_flag("--json", options->json, "a line of JSON a picture, and one that counts them");
    command->add_flag("-q,--quiet", options->quiet, "do not list what is the same");
    add_limit_options(*command, options->folders.limits);
    command->callback([options] { verify_command(*options); });
}

}  // namespace tarvo::cli
