#include "verification.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "command_error.h"
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

Picture read_from(const std::string& folder, const std::string& name, const Limits& limits, Listener& listener) {
    return read_picture((std::filesystem::path(folder) / name).string(), {.limits = limits}, listener).picture;
}

class Verifier {
public:
    Verifier(const VerifiedFolders& folders, Listener& listener) : folders_(folders), listener_(listener) {}

    Finding look_at(const std::string& name, const PictureEntry& expected) const {
        Finding finding{name, Outcome::unreadable, expected};
        try {
            const Picture found = folders_.found_picture(name, listener_);
            finding.found = PictureEntry::of(found);
            finding.outcome = expected.is_same(*finding.found) ? Outcome::same : Outcome::changed;
            if (finding.outcome == Outcome::changed) compare(found, finding);
        } catch (const CommandError& error) {
            finding.remark = error.what();
        }
        return finding;
    }

    Finding not_listed(const std::string& name) const {
        Finding finding{name, Outcome::not_listed};
        try {
            finding.found = PictureEntry::of(folders_.found_picture(name, listener_));
        } catch (const CommandError& error) {
            finding.outcome = Outcome::unreadable;
            finding.remark = error.what();
        }
        return finding;
    }

private:
    void compare(const Picture& found, Finding& finding) const {
        const PictureEntry &before = *finding.expected, &now = *finding.found;
        if (before.width != now.width || before.height != now.height) {
            finding.remark = sides(before) + " before and " + sides(now) + " now";
            return;
        }
        if (before.masked != now.masked) finding.remark = now.masked ? "it has a mask now" : "it has no mask now";
        if (folders_.expected.empty()) {
            if (before.tolerance) finding.remark = "its tolerance needs --expected";
            return;
        }
        const Picture expected = folders_.expected_picture(finding.name, listener_);
        if (!before.is_same(PictureEntry::of(expected))) {
            finding.remark = "the picture in " + folders_.expected + " is not the one that is listed";
            return;
        }
        finding.difference = difference(Pixels(expected), Pixels(found));
        const auto& allowed = before.tolerance;
        if (allowed && before.masked == now.masked && finding.difference->pixels <= allowed->pixels &&
            finding.difference->largest_of_all() <= allowed->difference)
            finding.outcome = Outcome::tolerated;
    }

    const VerifiedFolders& folders_;
    Listener& listener_;
};

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
    std::string line = name + ": " + in_words(outcome);
    if (!remark.empty()) line += ": " + remark;
    if (difference) line += ": " + in_words(*difference, *expected);
    return line;
}

Picture VerifiedFolders::found_picture(const std::string& name, Listener& listener) const {
    return read_from(found, name, limits, listener);
}

Picture VerifiedFolders::expected_picture(const std::string& name, Listener& listener) const {
    return read_from(expected, name, limits, listener);
}

std::vector<Finding> verify(const Manifest& manifest, const VerifiedFolders& folders, Listener& listener) {
    const Verifier verifier(folders, listener);
    std::set<std::string> there = picture_names(folders.found);
    std::vector<Finding> findings;
    for (const auto& [name, entry] : manifest) {
        // A listed name may end otherwise than those that are looked for.
        std::error_code error;
        const bool exists =
            there.erase(name) > 0 || std::filesystem::exists(std::filesystem::path(folders.found) / name, error);
        findings.push_back(exists ? verifier.look_at(name, entry) : Finding{name, Outcome::missing, entry});
    }
    for (const std::string& name : there) findings.push_back(verifier.not_listed(name));
    std::sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) { return a.name < b.name; });
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
