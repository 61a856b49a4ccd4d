#pragma once

// A page for people to look at what has changed, in one file of its own.

#include <string>
#include <vector>

#include "verification.h"

namespace tarvo::cli {

// The largest difference comes first. Throws CommandError.
void write_report(const std::string& path, const std::vector<Finding>& findings, const VerifiedPictures& pictures,
                  Listener& listener);

}  // namespace tarvo::cli
