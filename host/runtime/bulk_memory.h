#pragma once

// Memory for pixels and whatever else comes in bulk. Small pieces are plain allocations of exactly the asked size. For
// large ones the page faults of fresh memory would cost more than any work on the bytes: they are mappings fit for huge
// pages, kept for the next object when one dies. A memory checker sees every step beyond either kind, and every one
// into memory that was given back.

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tarvo::host {

class BulkMemory {
public:
    BulkMemory() = default;
    // The bytes hold anything. Throws std::bad_alloc.
    explicit BulkMemory(std::size_t size);
    BulkMemory(BulkMemory&& other) noexcept { swap(other); }
    BulkMemory& operator=(BulkMemory other) noexcept {
        swap(other);
        return *this;
    }
    ~BulkMemory();

    std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }

    // From this size on, it is a mapping.
    static constexpr std::size_t kLarge = std::size_t{1} << 20;
    // Idle mappings that are kept, together.
    static constexpr std::size_t kMostIdle = std::size_t{512} << 20;
    // Bytes of idle mappings now.
    static std::size_t idle();

private:
    void swap(BulkMemory& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;  // of a mapping; 0 for plain memory
};

}  // namespace tarvo::host
