#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <utility>

namespace tarvo::host {

// Gives a file's bytes in order, a block at a time: nobody holds more of it than a block.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    // The bytes that come next; none at the end alone. Those of the first block are enough to tell a file's format.
    // They stay until the next call. Throws what `next_block` throws, as all calls that take bytes do.
    std::span<const std::uint8_t> ahead() {
        if (block_.empty()) block_ = next_block();
        return block_;
    }
    // Of what is ahead.
    void skip(std::size_t count) { block_ = block_.subspan(count); }
    // What is ahead, taken.
    std::span<const std::uint8_t> take() {
        ahead();
        return std::exchange(block_, {});
    }
    // False when the file ends before.
    bool read(std::span<std::uint8_t> out) {
        while (!out.empty()) {
            const auto block = ahead();
            if (block.empty()) return false;
            const std::size_t count = std::min(block.size(), out.size());
            std::memcpy(out.data(), block.data(), count);
            skip(count);
            out = out.subspan(count);
        }
        return true;
    }
    // How many bytes there still are, where that can be known before they are read.
    std::optional<std::uint64_t> left() const {
        const auto behind = behind_block();
        if (!behind) return behind;
        return *behind + block_.size();
    }

protected:
    ByteSource() = default;

private:
    virtual std::span<const std::uint8_t> next_block() = 0;
    virtual std::optional<std::uint64_t> behind_block() const = 0;

    std::span<const std::uint8_t> block_;
};

class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

private:
    std::span<const std::uint8_t> next_block() override { return std::exchange(bytes_, {}); }
    std::optional<std::uint64_t> behind_block() const override { return bytes_.size(); }

    std::span<const std::uint8_t> bytes_;
};

}  // namespace tarvo::host
