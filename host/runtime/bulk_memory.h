#pragma once

// Memory for pixels and other large data. Small pieces are plain allocations of exactly the size asked for. For large
// ones the page faults of fresh memory would cost more than any work on the bytes, so they are mappings suited to huge
// pages, which are kept for the next object when one dies. A memory checker sees every access beyond either kind, and
// every access to memory that was given back. All functions may be called on any thread.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

namespace tarvo::host {

class BulkMemory {
public:
    BulkMemory() = default;
    // The bytes are not cleared. Throws std::bad_alloc.
    explicit BulkMemory(std::size_t size);
    BulkMemory(BulkMemory&& other) noexcept { swap(other); }
    BulkMemory& operator=(BulkMemory other) noexcept {
        swap(other);
        return *this;
    }
    ~BulkMemory();

    std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }
    // What lies before that place will not be read again: of a mapping, all that is whole goes back to the system.
    void release_before(std::size_t place) noexcept;

    // From this size on, the memory is a mapping. WebAssembly has none: its memory only grows, and what is given back
    // is for whatever comes next.
#ifdef __wasm__
    static constexpr std::size_t kLarge = std::numeric_limits<std::size_t>::max();
#else
    static constexpr std::size_t kLarge = std::size_t{1} << 20;
#endif
    // The most bytes of idle mappings that are kept, unless told otherwise.
    static constexpr std::size_t kMostIdle = std::size_t{512} << 20;
    // Keeps at most so many, from now on. Throws std::bad_alloc.
    static void keep_idle(std::size_t most);
    // The bytes of all idle mappings now.
    static std::size_t idle();
    // Gives them all back to the system.
    static void release_idle();

private:
    void swap(BulkMemory& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
        std::swap(released_, other.released_);
    }

    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;  // the bytes of the mapping; 0 for a plain allocation
    std::size_t released_ = 0;
};

}  // namespace tarvo::host
