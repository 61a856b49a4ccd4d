#pragma once

// Pictures from and to files as the tool takes them: in the host's formats, and as picture strings (.trv), which the
// plugin writes and reads. A picture string keeps depth and mask.

#include <optional>
#include <string>
#include <vector>

#include "carried.h"
#include "plugin_session.h"

namespace tarvo::cli {

struct PictureFile {
    host::ObjectRef picture;
    std::string pixels;                 // what the file's are, in words: "grey, 16 bits a channel, mask"
    std::optional<host::Carried> like;  // the same for `write_picture`; none for a picture string
};

// Throws FileError. `keep_depth` is as in host::ReadOptions.
PictureFile read_picture(PluginSession& session, const std::string& path, bool keep_depth = false);

struct WrittenFile {
    std::string pixels;             // what the file's are, in words
    std::vector<std::string> lost;  // lines that say what is not kept, of the picture and of a file that was replaced
};

// `like` is what the picture carries. Throws FileError, or CommandError when the plugin makes no string of the picture.
[[nodiscard]] WrittenFile write_picture(PluginSession& session, const host::ObjectRef& picture, const std::string& path,
                                        const std::optional<host::Carried>& like = {});

// Finds, before any work, what would keep a picture from being written to a file. Throws CommandError for wrong use.
void check_output(const std::string& path);

}  // namespace tarvo::cli
