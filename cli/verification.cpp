#include "verification.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "command_error.h"
#include "file_work.h"
#include "picture_folder.h"
#include "picture_io.h"

namespace tarvo::cli {
namespace {

constexpr Outcome kOutcomes[] = {Outcome::same,    Outcome::tolerated,  Outcome::changed,
                                 Outcome::missing, Outcome::not_listed, Outcome::unreadable};

std::string sides(const PictureEntry& entry) {
    return std::to_string(entry.width) + " x " + std::to_string(entry.height);
}

std::string color(const Rgba8& pixel, bool with_alpha) {
    char text[32];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", pixel[0], pixel[1], pixel[2]);
    return with_alpha ? text + (" of alpha " + std::to_string(pixel[3])) : text;
}

std::string in_words(const Difference& difference, const PictureEntry& entry) {
    const bool alpha = difference.expected[3] != difference.found[3];
    return std::to_string(difference.pixels) + " of " +
           std::to_string(static_cast<std::uint64_t>(entry.width) * static_cast<std::uint64_t>(entry.height)) +
           " pixels differ, by up to " + std::to_string(difference.largest_of_all()) + "; the first is (" +
           std::to_string(difference.x) + ", " + std::to_string(difference.y) + "), " +
           color(difference.expected, alpha) + " before and " + color(difference.found, alpha) + " now";
}

// Passes on what may be amiss, and what it is about.
class AmissAlone final : public Listener {
public:
    AmissAlone(Listener& to, std::string about) : to_(to), about_(std::move(about)) {}

    void say(const std::string&) override {}
    void answer(const std::string&) override {}
    void note(tarvo_note kind, const std::string& line) override { to_.note(kind, about_ + line); }
    void warn(const std::string& line) override { to_.warn(about_ + line); }

private:
    Listener& to_;
    const std::string about_;
};

std::string path_in(const std::string& folder, const std::string& name) {
    return (std::filesystem::path(folder) / name).string();
}

class Verifier {
public:
    explicit Verifier(const VerifiedPictures& pictures) : pictures_(pictures) {}

    Finding look_at(const std::string& name, const PictureEntry& expected, const ListedGroup& group) const {
        if (!pictures_.is_there(name, group)) return {name, &group, Outcome::missing, expected};
        Finding finding{name, &group, Outcome::unreadable, expected};
        if (const Picture found = found_picture(finding)) {
            finding.outcome = expected.is_same(*finding.found) ? Outcome::same : Outcome::changed;
            if (finding.outcome == Outcome::changed) compare(found, finding);
        }
        return finding;
    }

    Finding not_listed(const std::string& name) const {
        static const ListedGroup no_group(Recipe{}, Recipe{});
        Finding finding{name, &no_group, Outcome::unreadable};
        if (found_picture(finding)) finding.outcome = Outcome::not_listed;
        return finding;
    }

private:
    // None where the finding tells why.
    Picture found_picture(Finding& finding) const {
        try {
            Picture found = pictures_.found(finding.name, *finding.group);
            finding.found = PictureEntry::of(found);
            return found;
        } catch (const CommandError& error) {
            const bool failed_call = !finding.recipe().empty() && error.status() == ExitStatus::operation_failed;
            if (failed_call) finding.outcome = Outcome::changed;
            finding.remark = (failed_call ? "there is no picture now: " : "") + std::string(error.what());
            return {};
        }
    }

    void compare(const Picture& found, Finding& finding) const {
        const PictureEntry &before = *finding.expected, &now = *finding.found;
        if (before.width != now.width || before.height != now.height) {
            finding.remark = sides(before) + " before and " + sides(now) + " now";
            return;
        }
        if (before.masked != now.masked) finding.remark = now.masked ? "it has a mask now" : "it has no mask now";
        if (pictures_.expected_folder().empty()) {
            if (before.tolerance) finding.remark = "its tolerance needs --expected";
            return;
        }
        try {
            measure(pictures_.expected(finding.name, finding.recipe(), before), found, finding);
        } catch (const CommandError& error) {
            finding.remark = error.what();
        }
    }

    void measure(const Picture& expected, const Picture& found, Finding& finding) const {
        const PictureEntry &before = *finding.expected, &now = *finding.found;
        if (!before.is_same(PictureEntry::of(expected))) {
            finding.remark = "the picture in " + pictures_.expected_folder() + " is not the one that is listed";
            return;
        }
        finding.difference = difference(Pixels(expected), Pixels(found));
        const auto& allowed = before.tolerance;
        if (allowed && before.masked == now.masked && finding.difference->pixels <= allowed->pixels &&
            finding.difference->largest_of_all() <= allowed->difference)
            finding.outcome = Outcome::tolerated;
    }

    const VerifiedPictures& pictures_;
};

// Recipes may be long: those of one group are not compared.
bool stands_before(const Finding& a, const Finding& b) {
    const bool of_one = a.group == b.group || a.recipe() == b.recipe();
    return of_one ? a.name < b.name : a.recipe() < b.recipe();
}

}  // namespace

const char* in_words(Outcome outcome) {
    switch (outcome) {
        case Outcome::same: return "same";
        case Outcome::tolerated: return "same within its tolerance";
        case Outcome::changed: return "changed";
        case Outcome::missing: return "missing";
        case Outcome::not_listed: return "not listed";
        case Outcome::unreadable: return "unreadable";
    }
    return "";
}

std::string Finding::in_line() const {
    std::string line = title(name, recipe()) + ": " + in_words(outcome);
    if (!remark.empty()) line += ": " + remark;
    if (difference) line += ": " + in_words(*difference, *expected);
    return line;
}

VerifiedPictures::VerifiedPictures(const VerifiedFolders& folders, Listener& listener)
    : folders_(folders), listener_(listener), names_(picture_names(folders.found)) {}

bool VerifiedPictures::is_there(const std::string& name, const ListedGroup& group) const {
    // A listed name may end otherwise than those that are looked for.
    std::error_code error;
    return group.second.chain.begins_with_nothing() || names_.count(name) > 0 ||
           std::filesystem::exists(path_in(folders_.found, name), error);
}

Picture VerifiedPictures::found(const std::string& name, const ListedGroup& listed) const {
    const auto& [recipe, group] = listed;
    FileWork work;
    if (!group.chain.begins_with_nothing()) work.input = path_in(folders_.found, name);
    work.options.limits = folders_.limits;
    AmissAlone listener(listener_, recipe.empty() ? "" : title(name, recipe) + ": ");
    return make_picture(work, group.chain, listener);
}

Picture VerifiedPictures::read_expected(const std::string& name) const {
    return read_picture(path_in(folders_.expected, name), {.limits = folders_.limits}, listener_).picture;
}

const std::map<std::string, std::string>& VerifiedPictures::expected_by_hash() const {
    if (expected_by_hash_) return *expected_by_hash_;
    expected_by_hash_.emplace();
    ReadOptions how;  // without notes: only some of the files are looked for
    folders_.limits.put_into(how);
    for (const std::string& name : picture_names(folders_.expected)) try {
            expected_by_hash_->emplace(Picture::open(path_in(folders_.expected, name), how).sha256(), name);
        } catch (const Error&) {
        }
    return *expected_by_hash_;
}

Picture VerifiedPictures::expected(const std::string& name, const Recipe& recipe, const PictureEntry& listed) const {
    if (recipe.empty()) return read_expected(name);
    const auto& files = expected_by_hash();
    const auto file = files.find(listed.hash);
    if (file == files.end())
        throw CommandError(ExitStatus::file_error, "no picture in " + folders_.expected + " is the one that is listed");
    return read_expected(file->second);
}

std::vector<Finding> verify(const Manifest& manifest, const VerifiedPictures& pictures) {
    const Verifier verifier(pictures);
    std::set<std::string> unlisted = pictures.names();
    std::vector<Finding> findings;
    for (const ListedGroup& listed : manifest)
        for (const auto& [name, entry] : listed.second.entries) {
            if (!listed.second.chain.begins_with_nothing()) unlisted.erase(name);
            findings.push_back(verifier.look_at(name, entry, listed));
        }
    for (const std::string& name : unlisted) findings.push_back(verifier.not_listed(name));
    std::sort(findings.begin(), findings.end(), stands_before);
    return findings;
}

std::size_t count(const std::vector<Finding>& findings, Outcome outcome) {
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(),
                                                  [&](const Finding& finding) { return finding.outcome == outcome; }));
}

std::string summary(const std::vector<Finding>& findings) {
    std::string text;
    for (const Outcome outcome : kOutcomes)
        if (const std::size_t number = count(findings, outcome); number > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(number) + ' ' + in_words(outcome);
    return text.empty() ? "no pictures" : text;
}

}  // namespace tarvo::cli
