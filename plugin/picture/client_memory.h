#pragma once

// Memory of client pictures. It counts its holders: a program can change or empty a client picture while an operation
// on it gives the host control, and then the locked TRV_Picture still holds the memory that it works on.

#include <cstdint>

namespace tarvo::plugin {

// Returns cleared memory with one holder; null when there is none of that size.
std::uint8_t* new_client_memory(std::int64_t bytes);
// Add a holder and remove one; with the last one the memory is freed. Null is allowed.
void hold_client_memory(std::uint8_t* memory);
void drop_client_memory(std::uint8_t* memory);

}  // namespace tarvo::plugin
