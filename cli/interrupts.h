#pragma once

// Removes the files that are being written when a signal ends the tool.

#include <signal.h>

#include "tarvo.h"

namespace tarvo::cli {

// From now on INT, TERM and HUP remove all part files before they end the tool as they always do, unless they were
// ignored when it began; and a file that becomes larger than it may is an error of writing.
void handle_interrupts();

// While this lives, the first of these signals is only told by `interrupted`, and the next one ends the tool.
class InterruptedSoftly {
public:
    InterruptedSoftly();
    ~InterruptedSoftly();
    InterruptedSoftly(const InterruptedSoftly&) = delete;
    InterruptedSoftly& operator=(const InterruptedSoftly&) = delete;
};
bool interrupted();

// One file that is being written, on one thread.
class WatchedPart {
public:
    // As tarvo_write_options has it.
    void tell(tarvo_part_file now, int folder, const char* name) noexcept;

private:
    struct PartFile* file_ = nullptr;
    sigset_t before_{};
};

}  // namespace tarvo::cli
