#include "bulk_memory.h"

#include <sys/mman.h>

#include <limits>
#include <new>
#include <vector>

#include "watched_memory.h"

namespace tarvo::host {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

struct Mapping {
    std::uint8_t* address;
    std::size_t capacity;
};

// Maps memory that begins at a multiple of a huge page: one huge page more than needed is mapped, and what lies before
// and behind is given back.
Mapping map_aligned(std::size_t capacity) {
    const std::size_t span = capacity + kHugePage;
    void* mapped = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    auto* start = static_cast<std::uint8_t*>(mapped);
    const std::size_t before = (kHugePage - reinterpret_cast<std::uintptr_t>(start) % kHugePage) % kHugePage;
    const std::size_t behind = kHugePage - before;
    if (before != 0) munmap(start, before);
    if (behind != 0) munmap(start + before + capacity, behind);
    madvise(start + before, capacity, MADV_HUGEPAGE);  // a system without huge pages refuses, which does no harm
    return {start + before, capacity};
}

// Tells memory checkers how many bytes of a mapping may be touched: its size when it is in use, none when it is idle.
void allow_only([[maybe_unused]] const Mapping& mapping, [[maybe_unused]] std::size_t size) {
#ifdef WATCHED_MEMORY
    ASAN_UNPOISON_MEMORY_REGION(mapping.address, size);
    ASAN_POISON_MEMORY_REGION(mapping.address + size, mapping.capacity - size);
#endif
}

void unmap(const Mapping& mapping) {
    allow_only(mapping, mapping.capacity);  // other memory may get these addresses
    munmap(mapping.address, mapping.capacity);
}

// The mappings that nobody uses, the one that has been idle longest first.
class IdleMappings {
public:
    // Reserves room for all that can ever be idle, so that giving one back cannot fail.
    IdleMappings() { mappings_.reserve(BulkMemory::kMostIdle / kHugePage + 1); }

    std::size_t bytes() const { return bytes_; }

    // Takes the smallest mapping that holds the size and wastes at most half of itself; a null address when there is
    // none.
    Mapping take(std::size_t size) {
        auto best = mappings_.end();
        for (auto it = mappings_.begin(); it != mappings_.end(); ++it) {
            if (it->capacity < size || it->capacity / 2 > size) continue;
            if (best == mappings_.end() || it->capacity < best->capacity) best = it;
        }
        if (best == mappings_.end()) return {nullptr, 0};
        const Mapping taken = *best;
        mappings_.erase(best);
        bytes_ -= taken.capacity;
        return taken;
    }

    void give(const Mapping& mapping) noexcept {
        allow_only(mapping, 0);
        mappings_.push_back(mapping);
        bytes_ += mapping.capacity;
        keep(BulkMemory::kMostIdle);
    }

    // Lets the longest idle go until there are no more bytes.
    void keep(std::size_t most) noexcept {
        while (bytes_ > most) {
            bytes_ -= mappings_.front().capacity;
            unmap(mappings_.front());
            mappings_.erase(mappings_.begin());
        }
    }

private:
    std::vector<Mapping> mappings_;
    std::size_t bytes_ = 0;
};

// They are never destroyed, because a host may live until the process ends.
IdleMappings& idle_mappings() {
    static IdleMappings& only = *new IdleMappings;
    return only;
}

Mapping mapping_for(std::size_t size) {
    if (size > std::numeric_limits<std::size_t>::max() - 2 * kHugePage) throw std::bad_alloc();
    const std::size_t capacity = (size + kHugePage - 1) / kHugePage * kHugePage;
    const Mapping idle = idle_mappings().take(capacity);
    return idle.address ? idle : map_aligned(capacity);
}

}  // namespace

BulkMemory::BulkMemory(std::size_t size) : size_(size) {
    if (size < kLarge) {
        data_ = new std::uint8_t[size];
        return;
    }
    const Mapping mapping = mapping_for(size);
    allow_only(mapping, size);
    data_ = mapping.address;
    capacity_ = mapping.capacity;
}

BulkMemory::~BulkMemory() {
    if (capacity_ == 0) {
        delete[] data_;
    } else {
        idle_mappings().give({data_, capacity_});
    }
}

std::size_t BulkMemory::idle() { return idle_mappings().bytes(); }

void BulkMemory::release_idle() { idle_mappings().keep(0); }

}  // namespace tarvo::host
