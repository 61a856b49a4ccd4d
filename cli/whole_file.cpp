#include "whole_file.h"

#include <cstdint>
#include <utility>

#include "about_file.h"
#include "command_error.h"

namespace tarvo::cli {

namespace {

template <class Work>
auto on_file(const std::string& path, Work work) {
    try {
        return host::about_file(path, work);
    } catch (const host::FileError& error) {
        throw CommandError(ExitStatus::file_error, error.what());
    }
}

}  // namespace

WholeFile::WholeFile(std::string path, Old old)
    : path_(std::move(path)), file_(on_file(path_, [&] { return host::FileWriter(path_, &watch_, old); })) {}

void WholeFile::write(std::string_view text) {
    on_file(path_, [&] { file_.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}); });
}

void WholeFile::commit(Listener& listener) {
    for (const std::string& line : on_file(path_, [&] { return file_.commit(); }))
        listener.note(TARVO_NOTE_FILE, path_ + ' ' + line);
}

}  // namespace tarvo::cli
