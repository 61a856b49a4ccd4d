#pragma once

// Pictures as strings in files, which the plugin makes and reads. It is given a few rows at a time: such a string is
// nearly as long as its picture is large.

#include <functional>
#include <string>

#include "picture_io.h"

namespace tarvo::cli {

// `on_wait` is as in host::ReadOptions. Throws FileError.
PictureFile read_string_file(PluginSession& session, const std::string& path, const std::function<void()>& on_wait);

// Throws FileError, or CommandError when the plugin makes no string of the picture.
[[nodiscard]] WrittenFile write_string_file(PluginSession& session, const host::ObjectRef& picture,
                                            const std::string& path);

}  // namespace tarvo::cli
