// tarvo verify: pictures against a manifest of their hashes.

#include <CLI/App.hpp>

#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "command_error.h"
#include "command_line.h"
#include "commands.h"
#include "limit_options.h"
#include "manifest.h"
#include "messages.h"
#include "picture_folder.h"
#include "picture_io.h"
#include "report.h"
#include "shown_text.h"
#include "verification.h"

namespace tarvo::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kHowItWorks =
    "A manifest is a text of one line a picture: the hash of its pixels, WIDTHxHEIGHT, rgb or rgba, and the name.\n"
    "tolerance=PIXELS:DIFFERENCE behind the kind allows so many pixels to differ, by up to so much in a channel; that\n"
    "needs --expected. A manifest changes by --update and --update-all alone.\n"
    "Status 0: all pictures are the same; 1: some are changed, missing or not listed; 3: a file cannot be read.";

struct VerifyOptions {
    std::string manifest, report;
    VerifiedFolders folders;
    bool record = false, update_all = false, json = false, quiet = false;
    std::vector<std::string> update;
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
        Json line = {{"name", finding.name}, {"result", in_words(tolerated ? Outcome::same : finding.outcome)}};
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
    const std::vector<Finding> findings = verify(read_manifest(options.manifest), options.folders, console);
    if (options.json)
        print_as_json(findings);
    else
        print_lines(findings, console);
    if (!options.report.empty()) write_report(options.report, findings, options.folders, console);
    if (const std::size_t unread = count(findings, Outcome::unreadable); unread > 0)
        throw CommandError(ExitStatus::file_error, options.manifest + ": " + std::to_string(unread) +
                                                       (unread == 1 ? " picture" : " pictures") + " cannot be read");
    if (count(findings, Outcome::same) + count(findings, Outcome::tolerated) < findings.size())
        throw CommandError(ExitStatus::operation_failed,
                           options.manifest + ": the pictures are not as they are listed");
}

// Makes the manifest say of the names what is there.
class Change {
public:
    Change(const VerifyOptions& options, Console& console, Manifest& manifest)
        : options_(options), console_(console), manifest_(manifest) {}

    void take(const std::string& name, bool is_there) {
        const auto listed = manifest_.find(name);
        if (!is_there && listed == manifest_.end())
            throw CommandError(ExitStatus::wrong_usage, host::quoted(name) + " is neither listed in " +
                                                            options_.manifest + " nor a picture in " +
                                                            options_.folders.found);
        if (!is_there) {
            manifest_.erase(listed);
            return tell(name, "removed", removed_);
        }
        PictureEntry now = PictureEntry::of(options_.folders.found_picture(name, console_));
        if (listed == manifest_.end()) {
            manifest_.emplace(name, now);
            return tell(name, "added", added_);
        }
        if (now.is_same(listed->second)) return;
        now.tolerance = listed->second.tolerance;
        listed->second = now;
        tell(name, "updated", updated_);
    }

    bool any() const { return updated_ + added_ + removed_ > 0; }
    std::string in_words() const {
        return std::to_string(updated_) + " updated, " + std::to_string(added_) + " added, " +
               std::to_string(removed_) + " removed, " + std::to_string(manifest_.size() - updated_ - added_) +
               " as they were";
    }

private:
    void tell(const std::string& name, const char* what, std::size_t& number) {
        ++number;
        console_.say(name + ": " + what);
    }

    const VerifyOptions& options_;
    Console& console_;
    Manifest& manifest_;
    std::size_t updated_ = 0, added_ = 0, removed_ = 0;
};

void change(const VerifyOptions& options) {
    Console console(options.quiet);
    Manifest manifest = options.record ? Manifest{} : read_manifest(options.manifest);
    const std::set<std::string> there = picture_names(options.folders.found);
    std::set<std::string> names;
    for (const std::string& name : options.update)
        names.insert(std::filesystem::path(name).lexically_normal().generic_string());
    if (names.empty()) {
        names = there;
        for (const auto& [name, entry] : manifest) names.insert(name);
    }
    Change made(options, console, manifest);
    for (const std::string& name : names) made.take(name, there.count(name) > 0);
    if (options.record || made.any())
        write_manifest(options.manifest, manifest, options.record ? WholeFile::Old::kept : WholeFile::Old::replaced,
                       console);
    console.answer(options.record ? std::to_string(manifest.size()) + " listed" : made.in_words());
}

void verify_command(VerifyOptions options) {
    if (options.folders.found.empty()) {
        const auto folder = std::filesystem::path(options.manifest).parent_path();
        options.folders.found = folder.empty() ? "." : folder.string();
    }
    if (!options.report.empty() && options.folders.expected.empty())
        throw CommandError(ExitStatus::wrong_usage, "--report needs --expected: the pictures as they were");
    if (options.record && std::filesystem::exists(std::filesystem::symlink_status(options.manifest)))
        throw CommandError(ExitStatus::file_error,
                           options.manifest + " is there already; --update NAME... or --update-all change it");
    if (options.record || options.update_all || !options.update.empty())
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
    auto* const update = command->add_option("--update", options->update, "take these pictures as they are now")
                             ->type_name("NAME")
                             ->excludes(record);
    command->add_flag("--update-all", options->update_all, "take all pictures as they are now")
        ->excludes(record)
        ->excludes(update);
    command->add_option("--expected", options->folders.expected, "the folder of the pictures as they were listed")
        ->type_name("DIR");
    command->add_option("--report", options->report, "write a page that shows what is not the same")->type_name("OUT");
    command->add_flag("--json", options->json, "a line of JSON a picture, and one that counts them");
    command->add_flag("-q,--quiet", options->quiet, "do not list what is the same");
    add_limit_options(*command, options->folders.limits);
    command->callback([options] { verify_command(*options); });
}

}  // namespace tarvo::cli
