#pragma once

// What is done about losses: --losses.

#include "command_error.h"
#include "file_options.h"
#include "listener.h"

namespace tarvo::cli {

// Passes on what is told; of losses what the rule says. A loss that is an error is thrown as a CommandError, and keeps
// a file from being written.
class RuledListener final : public Listener {
public:
    RuledListener(Listener& to, LossRule rule) : to_(to), rule_(rule) {}

    void say(const std::string& line) override { to_.say(line); }
    void answer(const std::string& line) override { to_.answer(line); }
    void warn(const std::string& line) override { to_.warn(line); }
    void note(tarvo_note kind, const std::string& line) override {
        // What is lost of a file that was replaced is known too late to keep it.
        if (TARVO_IS_LOSS(kind) && kind != TARVO_NOTE_FILE) {
            if (rule_ == LossRule::ignore) return;
            if (rule_ == LossRule::error) throw CommandError(ExitStatus::operation_failed, line + " (--losses=error)");
        }
        to_.note(kind, line);
    }

private:
    Listener& to_;
    const LossRule rule_;
};

}  // namespace tarvo::cli
