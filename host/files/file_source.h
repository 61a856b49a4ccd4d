#pragma once

#include <functional>
#include <memory>
#include <string>

#include "byte_source.h"
#include "descriptor.h"

namespace tarvo::host {

// A file that is being read. Throws FileError; messages do not name the file.
class FileSource final : public ByteSource {
public:
    // "/dev/stdin" is standard input as it is, at the place where it is. `on_wait` is called before the first byte of a
    // pipe that nobody writes to yet, which is then waited for.
    explicit FileSource(const std::string& path, const std::function<void()>& on_wait = {});

    // Of a regular file.
    const BytePlaces* places() const override { return size_ ? &places_ : nullptr; }

private:
    class Places final : public BytePlaces {
    public:
        explicit Places(const FileSource& of) : of_(of) {}
        std::uint64_t size() const override { return *of_.size_; }
        bool read_at(std::uint64_t place, std::span<std::uint8_t> out) const override;

    private:
        const FileSource& of_;
    };

    std::span<const std::uint8_t> next_block() override;
    std::optional<std::uint64_t> behind_block() const override { return behind_; }
    static Descriptor opened(const std::string& path);
    void wait_for_writer(const std::function<void()>& on_wait);

    Descriptor file_;
    std::optional<std::uint64_t> size_, behind_;
    const Places places_{*this};
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t held_ = 0;  // bytes that the buffer has already, from looking for a pipe's writer
};

}  // namespace tarvo::host
