#include "bulk_memory.h"

#include <pthread.h>
#include <sys/mman.h>

#include <limits>
#include <mutex>
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
    const std::size_t behind = kHugePage - before;  // never none
    if (before != 0) munmap(start, before);
    munmap(start + before + capacity, behind);
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

// The mappings that nobody uses, the one that has been idle longest first. The lock is held while the list is read or
// changed, never while the system maps or unmaps.
class IdleMappings {
public:
    IdleMappings() { mappings_.reserve(room_for(most_)); }

    void lock() { one_at_a_time_.lock(); }
    void unlock() { one_at_a_time_.unlock(); }

    std::size_t bytes() {
        const std::lock_guard held(*this);
        return bytes_;
    }

    // Takes the smallest mapping that holds the size and wastes at most half of itself; a null address when there is
    // none.
    Mapping take(std::size_t size) {
        const std::lock_guard held(*this);
        auto best = mappings_.end();
        for (auto it = mappings_.begin(); it != mappings_.end(); ++it) {
            if (it->capacity < size || it->capacity / 2 > size) continue;
            if (best == mappings_.end() || it->capacity < best->capacity) best = it;
        }
        return best == mappings_.end() ? kNone : remove(best);
    }

    void give(const Mapping& mapping) noexcept {
        allow_only(mapping, 0);
        while (!add(mapping)) {
            const Mapping longest_idle = take_beyond(0);
            unmap(longest_idle.address ? longest_idle : mapping);
            if (!longest_idle.address) return;
        }
    }

    // Lets the longest idle go until there are no more bytes.
    void keep(std::size_t most) noexcept {
        for (Mapping excess = take_beyond(most); excess.address; excess = take_beyond(most)) unmap(excess);
    }

    void set_most(std::size_t most) {
        {
            const std::lock_guard held(*this);
            mappings_.reserve(room_for(most));
            most_ = most;
        }
        keep(most);
    }

private:
    static constexpr Mapping kNone = {nullptr, 0};

    // How many mappings so many bytes can be. There is always room for them, so that giving one back cannot fail.
    static std::size_t room_for(std::size_t bytes) { return bytes / kHugePage; }

    // Returns false when there would be too many bytes.
    bool add(const Mapping& mapping) {
        const std::lock_guard held(*this);
        if (mapping.capacity > most_ || bytes_ > most_ - mapping.capacity) return false;
        mappings_.push_back(mapping);
        bytes_ += mapping.capacity;
        return true;
    }

    // Takes the mapping that has been idle longest if there are more bytes than so many.
    Mapping take_beyond(std::size_t most) {
        const std::lock_guard held(*this);
        return bytes_ > most ? remove(mappings_.begin()) : kNone;
    }

    Mapping remove(std::vector<Mapping>::iterator place) {
        const Mapping removed = *place;
        mappings_.erase(place);
        bytes_ -= removed.capacity;
        return removed;
    }

    std::mutex one_at_a_time_;
    std::vector<Mapping> mappings_;
    std::size_t bytes_ = 0;
    std::size_t most_ = BulkMemory::kMostIdle;
};

// They are never destroyed, because a host may live until the process ends. No fork leaves a child with a list that
// another thread was changing.
IdleMappings& idle_mappings() {
    static IdleMappings& only = *[] {
        auto* const made = new IdleMappings;
        pthread_atfork([] { idle_mappings().lock(); }, [] { idle_mappings().unlock(); },
                       [] { idle_mappings().unlock(); });
        return made;
    }();
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

void BulkMemory::release_before(std::size_t place) noexcept {
    const std::size_t whole = place / kHugePage * kHugePage;
    if (capacity_ == 0 || whole <= released_) return;
    madvise(data_ + released_, whole - released_, MADV_DONTNEED);
    released_ = whole;
}

std::size_t BulkMemory::idle() { return idle_mappings().bytes(); }

void BulkMemory::keep_idle(std::size_t most) { idle_mappings().set_most(most); }

void BulkMemory::release_idle() { idle_mappings().keep(0); }

}  // namespace tarvo::host
