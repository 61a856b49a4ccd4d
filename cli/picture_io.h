#pragma once

// Pictures from and to files, or standard streams, with what there is to tell of them.

#include <string>

#include "file_options.h"
#include "listener.h"
#include "tarvo.hpp"

namespace tarvo::cli {

struct PictureFile {
    Picture picture;
    std::string pixels;  // what the file's are, in words: "grey, 16 bits a channel, mask"
};

// `draft_for`: the first call on it, for a draft. Throws CommandError.
PictureFile read_picture(const std::string& path, const FileOptions& options, Listener& listener,
                         bool keep_depth = false, const std::string& draft_for = {});

// Returns what the file's pixels are, in words. Signals that end the tool remove what is half written. Throws
// CommandError.
std::string write_picture(const Picture& picture, const std::string& path, const FileOptions& options,
                          Listener& listener);

// Finds, before any work, what would keep a picture from being written to a file. Throws CommandError, for wrong use
// above all.
void check_output(const std::string& path, const FileOptions& options);

}  // namespace tarvo::cli
