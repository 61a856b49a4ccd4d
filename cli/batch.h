#pragma once

// Many files through one chain, several at a time.

#include <cstddef>
#include <vector>

#include "batch_plan.h"
#include "chain.h"
#include "command_error.h"
#include "file_options.h"

namespace tarvo::cli {

struct BatchOptions {
    FileOptions file = {};
    std::size_t jobs = 0;  // 0: one a processor
    bool client = false, hash = false, quiet = false, json = false;
    bool skip_existing = false, dry_run = false, keep_going = false;
};

// Works on each file, and prints what came of it in the order of the files, whatever the order in which they are done.
// Without keep_going nothing new is begun behind a failure, nor behind a signal that ends the tool; what is begun is
// finished, unless the signal comes again.
ExitStatus run_batch(const std::vector<PlannedFile>& files, const Chain& chain, const BatchOptions& options);

}  // namespace tarvo::cli
