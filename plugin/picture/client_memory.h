#pragma once

// Memory of client pictures. Counted, because a program can change or empty a client picture while an operation that
// works on it gives the host control: whoever has the memory locked keeps it.

#include <cstdint>

// Cleared memory with one holder; null when there is none of that size.
std::uint8_t* NewClientMemory(std::int64_t bytes);
// One holder more, and one less: the last one frees it. Null is allowed.
void HoldClientMemory(std::uint8_t* memory);
void DropClientMemory(std::uint8_t* memory);
