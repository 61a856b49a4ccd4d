#pragma once

// The calls of the command line.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "command_error.h"
#include "tarvo.hpp"

namespace tarvo::cli {

inline constexpr const char* kPicture = "picture";
inline constexpr const char* kClientPicture = "TRV_ClientPicture";

struct Call {
    std::string text;
    std::size_t number = 0;      // its place in a chain, from 1; 0 for a single call
    bool makes_picture = false;  // by its declaration

    // Returns what messages begin with: "call 2, TRV_Stretch" in a chain, else "TRV_Stretch".
    std::string label(std::string_view name) const;
    // Returns a line of the library that begins with the operation's name, "TRV_Stretch: ...", with the call's number.
    std::string numbered(const std::string& line, bool names_operation = true) const;
};

// What is wrong with the text of a call, the one of that index in a chain.
class WrongCall : public CommandError {
public:
    WrongCall(const std::string& message, std::size_t index)
        : CommandError(ExitStatus::wrong_usage, message), index_(index) {}
    std::size_t index() const { return index_; }

private:
    std::size_t index_;
};

// What the calls are once they are checked, one after the other: a constant, for any number of files and threads.
class Chain {
public:
    // Finds what is wrong with the calls before any work. The first one is made on a picture of that class, or on
    // nothing if it is empty. Throws WrongCall, and CommandError where there is no memory.
    Chain(const std::vector<std::string>& texts, std::string on);

    const std::vector<Call>& calls() const { return calls_; }
    // Whether the first call is made on nothing.
    bool begins_with_nothing() const { return begins_with_nothing_; }
    // Whether there is a picture behind the last call.
    bool ends_with_picture() const { return ends_with_picture_; }

private:
    std::vector<Call> calls_;
    bool begins_with_nothing_, ends_with_picture_;
};

// Calls that stand alone: the first one is made on nothing if it makes its picture so, and else on a picture; without
// any the picture stays as it is. Throws as Chain does.
Chain recipe_chain(const std::vector<std::string>& texts);

}  // namespace tarvo::cli
