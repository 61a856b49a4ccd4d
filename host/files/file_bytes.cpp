#include "file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include "file_error.h"

namespace tarvo::host {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 18;

FileError system_error(const char* what) { return FileError(std::string(what) + ": " + std::strerror(errno)); }

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }
    // False when what was written did not arrive.
    bool close() {
        const int number = std::exchange(number_, -1);
        return number < 0 || ::close(number) == 0;
    }

private:
    int number_;
};

// Bytes read, 0 at the end; writes and reads that a signal broke off are tried again.
template <class Transfer>
ssize_t retried(Transfer transfer) {
    ssize_t count = 0;
    do count = transfer();
    while (count < 0 && errno == EINTR);
    return count;
}

FileError too_large(std::size_t most_bytes) {
    return FileError("larger than " + std::to_string(most_bytes) + " bytes");
}

// Of a regular file; 0 for what has no size before it is read.
std::uintmax_t size_of(int file) {
    struct stat known {};
    const bool regular = ::fstat(file, &known) == 0 && S_ISREG(known.st_mode);
    return regular ? static_cast<std::uintmax_t>(known.st_size) : 0;
}

void write_all(int file, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = retried([&] { return ::write(file, bytes.data(), bytes.size()); });
        if (count < 0) throw system_error("cannot be written");
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

// A new file beside the one that it will replace; removed unless it does.
class NewFile {
public:
    explicit NewFile(const fs::path& target) {
        for (int n = 0; n < 100 && !file_; ++n) {
            path_ = target.parent_path() / (".tarvo-" + std::to_string(::getpid()) + "-" + std::to_string(n));
            file_.emplace(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
            if (*file_) return;
            const int error = errno;
            file_.reset();
            errno = error;
            if (error != EEXIST) break;
        }
        throw system_error("cannot be made");
    }
    ~NewFile() {
        if (!replaced_) ::unlink(path_.c_str());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void write(std::span<const std::uint8_t> bytes) {
        write_all(file_->get(), bytes);
        if (!file_->close()) throw system_error("cannot be written");
    }

    // The old file's permissions go over to the new one.
    void replace(const fs::path& target) {
        struct stat old {};
        if (::stat(target.c_str(), &old) == 0) ::chmod(path_.c_str(), old.st_mode & 0777);
        if (::rename(path_.c_str(), target.c_str()) != 0) throw system_error("cannot be replaced");
        replaced_ = true;
    }

private:
    fs::path path_;
    std::optional<Descriptor> file_;
    bool replaced_ = false;
};

}  // namespace

std::vector<std::uint8_t> read_file(const std::string& path, std::size_t most_bytes) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) throw system_error("cannot be opened");
    const std::uintmax_t size = size_of(file.get());
    if (size > most_bytes) throw too_large(most_bytes);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(static_cast<std::size_t>(size) + kChunk);  // the end is seen without growing
    for (;;) {
        const std::size_t have = bytes.size();
        if (have > most_bytes) throw too_large(most_bytes);
        bytes.resize(have + kChunk);
        const ssize_t count = retried([&] { return ::read(file.get(), bytes.data() + have, kChunk); });
        if (count < 0) throw system_error("cannot be read");
        bytes.resize(have + static_cast<std::size_t>(count));
        if (count == 0) return bytes;
    }
}

void replace_file(const std::string& path, std::span<const std::uint8_t> bytes) {
    std::error_code error;
    const fs::path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : fs::path(path);
    if (fs::exists(target, error) && !fs::is_regular_file(target, error)) throw FileError("not a regular file");
    NewFile file(target);
    file.write(bytes);
    file.replace(target);
}

}  // namespace tarvo::host
