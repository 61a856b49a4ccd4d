#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <utility>

namespace tarvo::host {

// A file that can be read at any place, as often as wanted.
class BytePlaces {
public:
    virtual ~BytePlaces() = default;
    virtual std::uint64_t size() const = 0;
    // Fills `out`. Returns false if the file ends before, and throws what reading the file throws.
    virtual bool read_at(std::uint64_t place, std::span<std::uint8_t> out) const = 0;
};

// True when a file of that size has so many bytes from there on.
inline bool has_bytes(std::uint64_t size, std::uint64_t place, std::uint64_t count) {
    return place <= size && count <= size - place;
}

// Gives a file's bytes in order, a block at a time: nobody holds more of it than a block.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    // Returns the bytes that come next; none only at the end. Those of the first block are enough to tell a file's
    // format. They stay valid until the next call. This and all calls that take bytes throw what `next_block` throws.
    std::span<const std::uint8_t> ahead() {
        if (block_.empty()) block_ = next_block();
        return block_;
    }
    // Takes that many of the bytes that are ahead.
    void skip(std::size_t count) { block_ = block_.subspan(count); }
    // Takes all bytes that are ahead, and returns them.
    std::span<const std::uint8_t> take() {
        ahead();
        return std::exchange(block_, {});
    }
    // Takes as many bytes as `out` has room for. Returns false if the file ends before.
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
    // Returns how many bytes are left, if that can be known before they are read.
    std::optional<std::uint64_t> left() const {
        const auto behind = behind_block();
        if (!behind) return behind;
        return *behind + block_.size();
    }
    // The whole file, whatever has been taken of it; null where its bytes come but once. Lives as long as this.
    virtual const BytePlaces* places() const { return nullptr; }

protected:
    ByteSource() = default;

private:
    virtual std::span<const std::uint8_t> next_block() = 0;
    virtual std::optional<std::uint64_t> behind_block() const = 0;

    std::span<const std::uint8_t> block_;
};

class MemoryPlaces final : public BytePlaces {
public:
    explicit MemoryPlaces(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint64_t size() const override { return bytes_.size(); }
    bool read_at(std::uint64_t place, std::span<std::uint8_t> out) const override {
        if (!has_bytes(bytes_.size(), place, out.size())) return false;
        std::ranges::copy(bytes_.subspan(static_cast<std::size_t>(place), out.size()), out.begin());
        return true;
    }

private:
    const std::span<const std::uint8_t> bytes_;
};

class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const std::uint8_t> bytes) : bytes_(bytes), places_(bytes) {}

    const BytePlaces* places() const override { return &places_; }

private:
    std::span<const std::uint8_t> next_block() override { return std::exchange(bytes_, {}); }
    std::optional<std::uint64_t> behind_block() const override { return bytes_.size(); }

    std::span<const std::uint8_t> bytes_;
    const MemoryPlaces places_;
};

}  // namespace tarvo::host
