#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarvo::host {

using Bytes = std::vector<std::uint8_t>;

// Takes a file's bytes in order and passes them on in blocks.
class ByteSink {
public:
    virtual ~ByteSink() = default;
    ByteSink(const ByteSink&) = delete;
    ByteSink& operator=(const ByteSink&) = delete;

    // Takes bytes. Throws what `take` throws.
    void write(std::span<const std::uint8_t> bytes) {
        if (waiting_.size() + bytes.size() > kBlock) flush();
        if (bytes.size() >= kBlock) return take(bytes);
        waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
    }
    // Writes over bytes that were written before.
    void replace(std::uint64_t place, std::span<const std::uint8_t> bytes) {
        flush();
        put_at(place, bytes);
    }
    // Passes on what is waiting. To be called after the last byte.
    void flush() {
        if (!waiting_.empty()) take(waiting_);
        waiting_.clear();
    }

protected:
    ByteSink() { waiting_.reserve(kBlock); }

private:
    static constexpr std::size_t kBlock = std::size_t{1} << 16;

    virtual void take(std::span<const std::uint8_t> block) = 0;
    virtual void put_at(std::uint64_t place, std::span<const std::uint8_t> bytes) = 0;

    Bytes waiting_;
};

class MemorySink final : public ByteSink {
public:
    Bytes bytes;

private:
    void take(std::span<const std::uint8_t> block) override { bytes.insert(bytes.end(), block.begin(), block.end()); }
    void put_at(std::uint64_t place, std::span<const std::uint8_t> over) override {
        std::copy(over.begin(), over.end(), bytes.begin() + static_cast<std::ptrdiff_t>(place));
    }
};

}  // namespace tarvo::host
