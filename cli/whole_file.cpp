#include "whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "command_error.h"

namespace tarvo::cli {

namespace fs = std::filesystem;

namespace {

// What the process gives to new files.
mode_t usual_permissions() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

WholeFile::WholeFile(std::string path, Old old) : path_(std::move(path)), old_(old) {
    const fs::path folder = fs::path(path_).parent_path();
    folder_ = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder_ < 0) fail("cannot be made: ");
    part_ = (folder / ".tarvo-XXXXXX").string();
    watch_.tell(TARVO_PART_FILE_MAKING, -1, "");
    descriptor_ = ::mkostemp(part_.data(), O_CLOEXEC);
    const int error = errno;
    if (descriptor_ >= 0) {
        watch_.tell(TARVO_PART_FILE_MADE, folder_, fs::path(part_).filename().c_str());
        return;
    }
    watch_.tell(TARVO_PART_FILE_GONE, -1, "");
    ::close(folder_);
    errno = error;
    fail("cannot be made: ");
}

WholeFile::~WholeFile() {
    if (!named_) ::unlink(part_.c_str());
    watch_.tell(TARVO_PART_FILE_GONE, -1, "");
    if (descriptor_ >= 0) ::close(descriptor_);
    ::close(folder_);
}

void WholeFile::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor_, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail("cannot be written: ");
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

void WholeFile::commit() {
    struct stat before {};
    const bool there = ::stat(path_.c_str(), &before) == 0;
    if (::fchmod(descriptor_, there ? before.st_mode & 07777 : usual_permissions()) != 0 || ::fsync(descriptor_) != 0)
        fail("cannot be written: ");
    // A link, which fails where there is a file, even one that came after all checks.
    const int named =
        old_ == Old::replaced ? ::rename(part_.c_str(), path_.c_str()) : ::link(part_.c_str(), path_.c_str());
    if (named != 0) fail("cannot be made: ");
    named_ = old_ == Old::replaced;
    if (::close(std::exchange(descriptor_, -1)) != 0) fail("cannot be written: ");
}

void WholeFile::fail(const char* what) const {
    throw CommandError(ExitStatus::file_error, path_ + ": " + what + std::strerror(errno));
}

}  // namespace tarvo::cli
