#pragma once

// Lines on the standard streams that do not end a command.

#include <iostream>
#include <string>

#include "listener.h"
#include "shown_text.h"

namespace tarvo::cli {

// Quiet ones print only what calls answer, what is lost and what is amiss.
class Console final : public Listener {
public:
    // Where a file goes to the standard output, lines go to the other stream.
    explicit Console(bool quiet = false, bool beside_a_file = false)
        : quiet_(quiet), out_(beside_a_file ? std::cerr : std::cout) {}

    void say(const std::string& line) override {
        if (!quiet_) out_ << host::shown_lines(line) << '\n';
    }
    void answer(const std::string& line) override { out_ << line << '\n'; }
    void warn(const std::string& line) override { print("warning: ", line); }
    void note(tarvo_note kind, const std::string& line) override {
        switch (kind) {
            case TARVO_NOTE_MESSAGE: return print("message box: ", line);
            case TARVO_NOTE_COMPLAINT: return warn(line);
            case TARVO_NOTE_WAITING: return print("note: ", line);
            default: break;
        }
        if (!quiet_ || TARVO_IS_LOSS(kind)) print("note: ", line);
    }
    void note(const std::string& line) { note(TARVO_NOTE_CAUTION, line); }

private:
    static void print(const char* head, const std::string& line) {
        std::cerr << head << host::shown_lines(line) << '\n';
    }

    const bool quiet_;
    std::ostream& out_;
};

}  // namespace tarvo::cli
