#include "file_writer.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/random.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace tarvo::host {

namespace {

constexpr int kMostLinks = 40;
constexpr int kMostNames = 100;
constexpr mode_t kPermissions = 0777;

FileError not_regular() { return FileError("not a regular file"); }

std::string random_name() {
    std::uint64_t number = 0;
    if (retried([&] { return ::getrandom(&number, sizeof number, 0); }) != sizeof number)
        throw system_error("cannot be made");
    char name[32];
    std::snprintf(name, sizeof name, ".tarvo-%016" PRIx64, number);
    return name;
}

// Returns the permissions that the process takes from new files; all but the owner's if the system does not tell. The
// call that asks for them also sets them, for all threads, so they are read from the system's account of the process.
mode_t creation_mask() {
    mode_t mask = 077;
    std::FILE* status = std::fopen("/proc/self/status", "re");
    if (!status) return mask;
    char line[256];
    unsigned told = 0;
    while (std::fgets(line, sizeof line, status))
        if (std::sscanf(line, "Umask: %o", &told) == 1) mask = told & kPermissions;
    std::fclose(status);
    return mask;
}

// Writes by `put(rest)`, which tells how many bytes it took.
template <class Put>
void write_all(std::span<const std::uint8_t> rest, Put put) {
    while (!rest.empty()) {
        const ssize_t count = retried([&] { return put(rest); });
        if (count == 0) errno = EIO;  // no call that takes nothing may be repeated for ever
        if (count <= 0) throw system_error("cannot be written");
        rest = rest.subspan(static_cast<std::size_t>(count));
    }
}

bool same_file(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

}  // namespace

FileWriter::FileWriter(const std::string& path, PartFileWatch* watch, Old old)
    : watch_(watch), keep_or_replace_(old), target_(end_of_links(path)), old_(old_file(target_)) {
    if (old_ && keep_or_replace_ == Old::kept) {
        errno = EEXIST;
        throw system_error("cannot be made");
    }
    make_part();
}

FileWriter::~FileWriter() { remove_part(); }

void FileWriter::check(const std::string& path) {
    const Place target = end_of_links(path);
    old_file(target);
    if (::faccessat(target.folder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0)
        throw system_error("its folder cannot be written in");
}

FileWriter::Place FileWriter::split(int base, const std::string& path) {
    const std::size_t name = path.rfind('/') + 1;  // 0 without a slash
    const std::string folder = name == 0 ? "." : path.substr(0, std::max<std::size_t>(name - 1, 1));
    Place place{Descriptor(retried([&] { return ::openat(base, folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); })),
                path.substr(name)};
    if (!place.folder && (errno == ENOENT || errno == ENOTDIR))
        throw FileError("there is no folder \"" + folder + "\"");
    if (!place.folder) throw system_error("cannot be made");
    if (place.name.empty() || place.name == "." || place.name == "..") throw not_regular();
    return place;
}

FileWriter::Place FileWriter::end_of_links(const std::string& path) {
    Place place = split(AT_FDCWD, path);
    for (int links = 0; links < kMostLinks; ++links) {
        char text[PATH_MAX];
        const ssize_t length = ::readlinkat(place.folder.get(), place.name.c_str(), text, sizeof text);
        if (length < 0 && (errno == EINVAL || errno == ENOENT)) return place;  // no link, or nothing yet
        if (length == sizeof text) errno = ENAMETOOLONG;
        if (length < 0 || length == sizeof text) throw system_error("cannot be made");
        place = split(place.folder.get(), std::string(text, static_cast<std::size_t>(length)));
    }
    errno = ELOOP;
    throw system_error("cannot be made");
}

std::optional<struct stat> FileWriter::old_file(const Place& target) {
    struct stat old {};
    if (::fstatat(target.folder.get(), target.name.c_str(), &old, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) throw system_error("cannot be made");
        return std::nullopt;
    }
    if (!S_ISREG(old.st_mode)) throw not_regular();
    return old;
}

void FileWriter::make_part() {
    if (watch_) watch_->making();
    try {
        constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        for (int n = 0; n < kMostNames && !part_; ++n) {
            part_name_ = random_name();
            part_ =
                Descriptor(retried([&] { return ::openat(target_.folder.get(), part_name_.c_str(), kFlags, 0600); }));
            if (!part_ && errno != EEXIST) break;
        }
        if (!part_) throw system_error("cannot be made");
    } catch (...) {
        if (watch_) watch_->gone();
        throw;
    }
    part_exists_ = true;
    if (watch_) watch_->made(target_.folder.get(), part_name_.c_str());
}

void FileWriter::remove_part() noexcept {
    if (!part_exists_) return;
    ::unlinkat(target_.folder.get(), part_name_.c_str(), 0);
    part_exists_ = false;
    if (watch_) watch_->gone();
}

void FileWriter::take(std::span<const std::uint8_t> block) {
    write_all(block, [this](auto rest) { return ::write(part_.get(), rest.data(), rest.size()); });
}

void FileWriter::put_at(std::uint64_t place, std::span<const std::uint8_t> bytes) {
    const std::uint64_t end = place + bytes.size();
    write_all(bytes, [this, end](auto rest) {
        return ::pwrite(part_.get(), rest.data(), rest.size(), static_cast<off_t>(end - rest.size()));
    });
}

std::vector<std::string> FileWriter::commit() {
    flush();
    const mode_t mode = old_ ? old_->st_mode & kPermissions : 0666 & ~creation_mask();
    struct stat made {
    }, placed{};
    if (retried([&] { return ::fchmod(part_.get(), mode); }) != 0 || ::fstat(part_.get(), &made) != 0)
        throw system_error("cannot be written");
    if (old_ && retried([&] { return ::fsync(part_.get()); }) != 0) throw system_error("cannot be written");
    if (!part_.close()) throw system_error("cannot be written");
    give_name();
    if (::fstatat(target_.folder.get(), target_.name.c_str(), &placed, AT_SYMLINK_NOFOLLOW) != 0 ||
        !same_file(made, placed))
        throw FileError("somebody else changed it while it was written");
    return not_kept(made);
}

void FileWriter::give_name() {
    const int folder = target_.folder.get();
    const char* const part = part_name_.c_str();
    const char* const name = target_.name.c_str();
    if (keep_or_replace_ == Old::kept) {
        // A second name cannot be that of a file which came after all checks.
        if (retried([&] { return ::linkat(folder, part, folder, name, 0); }) != 0) throw system_error("cannot be made");
        return remove_part();
    }
    if (retried([&] { return ::renameat(folder, part, folder, name); }) != 0) throw system_error("cannot be replaced");
    part_exists_ = false;
    if (watch_) watch_->gone();
}

std::vector<std::string> FileWriter::not_kept(const struct stat& made) const {
    std::vector<std::string> lines;
    if (!old_) return lines;
    if (old_->st_uid != made.st_uid || old_->st_gid != made.st_gid)
        lines.emplace_back("belonged to another user or group: the new file does not");
    if (old_->st_nlink > 1) lines.emplace_back("had other names: they keep the old file");
    if (!(old_->st_mode & S_IWUSR)) lines.emplace_back("was read-only: it is replaced all the same");
    return lines;
}

}  // namespace tarvo::host
