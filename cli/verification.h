#pragma once

// What has become of pictures since they were listed.

#include <optional>
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
    Outcome outcome;
    std::optional<PictureEntry> expected = {}, found = {};
    std::optional<Difference> difference = {};  // where both pictures are there, of one size
    std::string remark = {};                    // what there is to say besides

    // "coffee.png: changed: 12 of 4000 pixels differ, ..."
    std::string in_line() const;
};

struct VerifiedFolders {
    std::string found;
    std::string expected;  // empty when the pictures that were listed are not there
    Limits limits = {};

    Picture found_picture(const std::string& name, Listener& listener) const;
    Picture expected_picture(const std::string& name, Listener& listener) const;
};

// All pictures that are listed or there, by name. Throws CommandError when a folder cannot be read.
std::vector<Finding> verify(const Manifest& manifest, const VerifiedFolders& folders, Listener& listener);

std::size_t count(const std::vector<Finding>& findings, Outcome outcome);
// "9 same, 1 changed, 1 missing": what there is none of is left out.
std::string summary(const std::vector<Finding>& findings);

}  // namespace tarvo::cli
