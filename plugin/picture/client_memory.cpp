#include "client_memory.h"

#include <cstddef>
#include <cstdlib>

namespace tarvo::plugin {
namespace {

//     |  Header  |  memory ...
//     ^          ^
//     allocated  what callers have the address of
struct Header {
    std::int32_t holders;
    std::int32_t unused[3];
};
static_assert(sizeof(Header) % alignof(std::max_align_t) == 0);  // the memory is aligned as the allocation is

Header& header_of(std::uint8_t* memory) { return *(reinterpret_cast<Header*>(memory) - 1); }

}  // namespace

std::uint8_t* new_client_memory(std::int64_t bytes) {
    void* const block = std::calloc(1, sizeof(Header) + static_cast<std::size_t>(bytes));
    if (!block) return nullptr;
    auto* const header = static_cast<Header*>(block);
    header->holders = 1;
    return reinterpret_cast<std::uint8_t*>(header + 1);
}

void hold_client_memory(std::uint8_t* memory) {
    if (memory) ++header_of(memory).holders;
}

void drop_client_memory(std::uint8_t* memory) {
    if (memory && --header_of(memory).holders == 0) std::free(&header_of(memory));
}

}  // namespace tarvo::plugin
