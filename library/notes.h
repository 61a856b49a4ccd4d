#pragma once

#include <string>

#include "host.h"
#include "tarvo.h"

namespace tarvo::library {

// Tells the program what its options want to be told.
class Notes {
public:
    Notes() = default;
    template <class Options>
    explicit Notes(const Options& options) : note_(options.note), context_(options.context) {}

    bool wanted() const { return note_ != nullptr; }
    void tell(tarvo_note kind, const std::string& text) const {
        if (note_) note_(context_, kind, text.c_str());
    }
    // Tells what a host has complained of since this was last asked for.
    void tell_complaints(host::Host& host, const std::string& operation) const {
        for (const std::string& complaint : host.complaints()) tell(TARVO_NOTE_COMPLAINT, operation + ": " + complaint);
        host.clear_complaints();
    }

private:
    void (*note_)(void* context, tarvo_note kind, const char* text) = nullptr;
    void* context_ = nullptr;
};

}  // namespace tarvo::library
