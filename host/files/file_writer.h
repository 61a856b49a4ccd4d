#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "byte_sink.h"
#include "descriptor.h"

namespace tarvo::host {

// Is told of part files while they exist, so that a program can remove them when a signal ends it. The library itself
// leaves signals alone. It calls `making`, then `made` if a part file was made, then `gone`.
class PartFileWatch {
public:
    virtual ~PartFileWatch() = default;
    virtual void making() noexcept = 0;
    // The folder stays open, and the name valid, until `gone`.
    virtual void made(int folder, const char* name) noexcept = 0;
    virtual void gone() noexcept = 0;
};

// Makes or replaces a file as a whole: at no time is there a part of it under its name, and until `commit` has returned
// nothing has changed. The bytes go to a part file beside it, which only its owner can read, and which is removed on
// every way but that one. A symbolic link is followed once, and its end is replaced, or made. What exists and is no
// regular file is refused. Throws FileError; messages do not name the file.
class FileWriter final : public ByteSink {
public:
    enum class Old : std::uint8_t { replaced, kept };  // a file that is there; kept: it is an error, also at the end

    explicit FileWriter(const std::string& path, PartFileWatch* watch = nullptr, Old old = Old::replaced);
    ~FileWriter() override;

    // Throws FileError where no file can be made at that path, as far as that shows before anything is made.
    static void check(const std::string& path);

    // Gives the file its permissions and its name. To be called after the last byte. Returns what is not kept of an
    // old file, in words that go behind the file's name; its permissions are kept.
    std::vector<std::string> commit();

private:
    // A name in an open folder.
    struct Place {
        Descriptor folder;
        std::string name;
    };

    static Place split(int base, const std::string& path);
    static Place end_of_links(const std::string& path);
    static std::optional<struct stat> old_file(const Place& target);
    void make_part();
    void remove_part() noexcept;
    void give_name();
    void take(std::span<const std::uint8_t> block) override;
    void put_at(std::uint64_t place, std::span<const std::uint8_t> bytes) override;
    std::vector<std::string> not_kept(const struct stat& made) const;

    PartFileWatch* const watch_;
    const Old keep_or_replace_;
    const Place target_;
    const std::optional<struct stat> old_;
    std::string part_name_;
    Descriptor part_;
    bool part_exists_ = false;
};

}  // namespace tarvo::host
