#pragma once

// What has become of pictures since they were listed.

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "difference.h"
#include "limit_options.h"
#include "listener.h"
#include "manifest.h"

namespace tarvo::cli {

enum class Outcome : std::uint8_t { same, tolerated, changed, missing, not_listed, unreadable };

// "same", "not listed": as people and programs read it.
const char* in_words(Outcome outcome);

struct Finding {
    std::string name;
    const ListedGroup* group;
    Outcome outcome;
    std::optional<PictureEntry> expected = {}, found = {};
    std::optional<Difference> difference = {};  // where both pictures are there, of one size
    std::string remark = {};                    // what there is to say besides

    const Recipe& recipe() const { return group->first; }
    // "coffee.png: changed: 12 of 4000 pixels differ, ..."
    std::string in_line() const;
};

struct VerifiedFolders {
    std::string found;
    std::string expected;  // empty when the pictures that were listed are not there
    Limits limits = {};
};

// Pictures as they are, and as they were listed. Nothing is written. What cannot be read or made throws CommandError.
class VerifiedPictures {
public:
    VerifiedPictures(const VerifiedFolders& folders, Listener& listener);

    // The files that are looked for.
    const std::set<std::string>& names() const { return names_; }
    // Whether there is what a group makes its picture of that name of.
    bool is_there(const std::string& name, const ListedGroup& group) const;
    Picture found(const std::string& name, const ListedGroup& group) const;

    const std::string& expected_folder() const { return folders_.expected; }
    // Without a recipe the file of that name. What a recipe made may have any name: it is the file whose pixels are
    // those that are listed.
    Picture expected(const std::string& name, const Recipe& recipe, const PictureEntry& listed) const;

private:
    Picture read_expected(const std::string& name) const;
    const std::map<std::string, std::string>& expected_by_hash() const;

    const VerifiedFolders& folders_;
    Listener& listener_;
    const std::set<std::string> names_;
    mutable std::optional<std::map<std::string, std::string>> expected_by_hash_;
};

// All that is listed, in the manifest's order; files that are in no group stand among those without a recipe. What is
// found points into the manifest.
std::vector<Finding> verify(const Manifest& manifest, const VerifiedPictures& pictures);

std::size_t count(const std::vector<Finding>& findings, Outcome outcome);
// "9 same, 1 changed, 1 missing": what there is none of is left out.
std::string summary(const std::vector<Finding>& findings);

}  // namespace tarvo::cli
