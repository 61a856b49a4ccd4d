#pragma once

// Removes the file that is being written when a signal ends the tool.

#include "file_writer.h"

namespace tarvo::cli {

// From now on INT, TERM and HUP remove the part file of `part_file_watch` before they end the tool as they always do,
// unless they were ignored when it began; and a file that becomes larger than it may is an error of writing.
void handle_interrupts();

// Watches one file at a time.
host::PartFileWatch& part_file_watch();

}  // namespace tarvo::cli
