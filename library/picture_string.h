#pragma once

// Pictures as strings, which the plugin makes and reads; files that end with .trv hold them. They keep depth and mask.
// The plugin is given a few rows at a time: such a string is nearly as long as its picture is large.

#include <cstdint>
#include <string>
#include <string_view>

#include "byte_sink.h"
#include "byte_source.h"
#include "engine.h"

namespace tarvo::library {

inline constexpr std::string_view kStringEnding = ".trv";

// `pixels` gets what the string's are, in words. Throws FileError.
host::ObjectRef read_picture_string(CallHost& call, host::ByteSource& file, std::uint64_t max_pixels,
                                    std::string& pixels);

// Returns what the string's pixels are, in words. Throws Failure when the plugin makes no string of the picture.
std::string write_picture_string(CallHost& call, const host::ObjectRef& picture, host::ByteSink& file);

// Whether the plugin makes a picture of the picture's string.
bool can_be_read_again(CallHost& call, const host::ObjectRef& picture);

}  // namespace tarvo::library
