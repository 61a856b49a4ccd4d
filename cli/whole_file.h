#pragma once

// Text files that appear whole or not at all, as pictures do.

#include <string>
#include <string_view>

#include "file_writer.h"
#include "interrupts.h"
#include "listener.h"

namespace tarvo::cli {

// Throws CommandError.
class WholeFile {
public:
    using Old = host::FileWriter::Old;

    WholeFile(std::string path, Old old);

    void write(std::string_view text);
    // Notes what is not kept of an old file.
    void commit(Listener& listener);

private:
    // Signals that end the tool remove what is half written.
    class Watch final : public host::PartFileWatch {
    public:
        void making() noexcept override { part_.tell(TARVO_PART_FILE_MAKING, -1, ""); }
        void made(int folder, const char* name) noexcept override { part_.tell(TARVO_PART_FILE_MADE, folder, name); }
        void gone() noexcept override { part_.tell(TARVO_PART_FILE_GONE, -1, ""); }

    private:
        WatchedPart part_;
    };

    const std::string path_;
    Watch watch_;
    host::FileWriter file_;
};

}  // namespace tarvo::cli
