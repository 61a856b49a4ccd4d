#include "file_source.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

namespace tarvo::host {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 18;
constexpr std::string_view kStandardInput = "/dev/stdin";

}  // namespace

// Opened in the usual way, a pipe would wait for its writer without a word.
Descriptor FileSource::opened(const std::string& path) {
    if (path == kStandardInput) return Descriptor(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    return Descriptor(retried([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }));
}

FileSource::FileSource(const std::string& path, const std::function<void()>& on_wait)
    : file_(opened(path)), buffer_(std::make_unique_for_overwrite<std::uint8_t[]>(kBlock)) {
    struct stat known {};
    if (!file_ || ::fstat(file_.get(), &known) != 0) throw system_error("cannot be opened");
    if (path == kStandardInput) return;  // whoever has opened it may be in the middle, and chose how to wait
    if (S_ISFIFO(known.st_mode)) wait_for_writer(on_wait);
    if (S_ISREG(known.st_mode)) size_ = behind_ = static_cast<std::uint64_t>(known.st_size);
    const int flags = ::fcntl(file_.get(), F_GETFL);
    if (flags < 0 || ::fcntl(file_.get(), F_SETFL, flags & ~O_NONBLOCK) != 0) throw system_error("cannot be opened");
}

// A read that does not wait finds the end of a pipe without a writer, and nothing yet of one whose writer is late.
void FileSource::wait_for_writer(const std::function<void()>& on_wait) {
    const ssize_t count = retried([&] { return ::read(file_.get(), buffer_.get(), kBlock); });
    if (count < 0 && errno != EAGAIN) throw system_error("cannot be read");
    if (count > 0) held_ = static_cast<std::size_t>(count);
    if (count != 0) return;
    if (on_wait) on_wait();
    struct pollfd pipe {
        file_.get(), POLLIN, 0
    };
    if (retried([&] { return ::poll(&pipe, 1, -1); }) < 0) throw system_error("cannot be read");
}

// Reads until the block is full or the file ends.
std::span<const std::uint8_t> FileSource::next_block() {
    std::size_t have = std::exchange(held_, 0);
    while (have < kBlock) {
        const ssize_t count = retried([&] { return ::read(file_.get(), buffer_.get() + have, kBlock - have); });
        if (count < 0) throw system_error("cannot be read");
        if (count == 0) break;
        have += static_cast<std::size_t>(count);
    }
    if (behind_) *behind_ -= std::min<std::uint64_t>(*behind_, have);
    return {buffer_.get(), have};
}

bool FileSource::Places::read_at(std::uint64_t place, std::span<std::uint8_t> out) const {
    if (!has_bytes(size(), place, out.size())) return false;
    while (!out.empty()) {
        const ssize_t count =
            retried([&] { return ::pread(of_.file_.get(), out.data(), out.size(), static_cast<off_t>(place)); });
        if (count < 0) throw system_error("cannot be read");
        if (count == 0) return false;  // it is shorter by now
        place += static_cast<std::uint64_t>(count);
        out = out.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace tarvo::host
