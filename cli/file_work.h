#pragma once

// One picture through the chain of calls, from file to file.

#include <cstdint>
#include <string>
#include <vector>

#include "chain.h"
#include "command_error.h"
#include "file_options.h"
#include "listener.h"

namespace tarvo::cli {

struct FileWork {
    std::string input;   // empty when the first call makes the picture
    std::string output;  // empty when nothing is to be written
    FileOptions options = {};
    bool client = false;  // the calls are made on a TRV_ClientPicture
    bool hash = false;    // the pixels are hashed when the file is read, and behind each call
};

struct Loss {
    tarvo_note kind;
    std::string text;
};

// What came of it.
struct FileRecord {
    ExitStatus status = ExitStatus::fine;
    std::int32_t code = 0;  // the operation's
    std::string message;    // why it failed
    int width = 0, height = 0;
    bool made_picture = false;  // by one of the calls
    std::vector<Loss> losses;
    std::string sha256;       // of the last picture, if it was asked for
    double milliseconds = 0;  // from the first byte to the last
};

// Reads and calls, and gives what there is then; nothing is written. Throws CommandError.
Picture make_picture(const FileWork& work, const Chain& chain, Listener& listener);

// Does all of it and tells the listener as it goes on. Keeps nothing outside of what it is given: several threads may
// work on files of one chain, each with a listener of its own.
FileRecord work_on_file(const FileWork& work, const Chain& chain, Listener& listener);

}  // namespace tarvo::cli
