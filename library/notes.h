#pragma once

#include <string>

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

private:
    void (*note_)(void* context, tarvo_note kind, const char* text) = nullptr;
    void* context_ = nullptr;
};

}  // namespace tarvo::library
