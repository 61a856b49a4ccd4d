#pragma once

// Pictures from and to files as the tool takes them: in the host's formats, and as picture strings (.trv), which the
// plugin writes and reads. A picture string keeps depth and mask.

#include <string>
#include <vector>

#include "plugin_session.h"

namespace tarvo::cli {

// Throws FileError. `keep_depth` is as in host::ReadOptions.
host::ObjectRef read_picture(PluginSession& session, const std::string& path, bool keep_depth);

// Returns lines that say what is not kept, of the picture and of a file that was replaced. Throws FileError, or
// CommandError when the plugin makes no string of the picture.
[[nodiscard]] std::vector<std::string> write_picture(PluginSession& session, const host::ObjectRef& picture,
                                                     const std::string& path);

// Throws FileError when no picture can be written to a file of that name, because of its ending.
void check_output_name(const std::string& path);

}  // namespace tarvo::cli
