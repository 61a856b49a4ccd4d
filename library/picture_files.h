#pragma once

// Files as pictures of a call's host.

#include <string>

#include "engine.h"
#include "kept_picture.h"
#include "notes.h"
#include "picture_file.h"

namespace tarvo::library {

struct ReadPicture {
    host::ObjectRef picture;
    SharedCarried carried;
    std::string pixels;  // what the file's are, in words
};

// Reads a picture file, or a picture string, as the name's ending tells. Waiting for a pipe is noted. Throws Failure.
ReadPicture read_picture(CallHost& call, const std::string& path, const host::ReadOptions& options, const Notes& notes);

}  // namespace tarvo::library
