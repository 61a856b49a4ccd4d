#pragma once

// A picture's pixels in a memory block, for programs that want them as numbers.

#include <cstdint>

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Returns a new memory block with the pixels of a region, row after row without padding. A pixel is a number in the
// machine's byte order: 0x00RRGGBB in 32 bits, or 0RRRRRGGGGGBBBBB in 16 bits if the source is at most 16 bits deep.
// `row_bytes` may be null; it gets the bytes of a row, 0 after a failure.
REALmemoryBlockStruct* TRV_MakeMemoryBlock(REALpictureStruct* p, REALobjectStruct* rect, bool mask_to_alpha,
                                           int* row_bytes);

// The kernel. `bytes` has room for the whole region.
void PrivMakeMemoryBlock(const TRV_Picture& source, const tarvo::plugin::Region& region, std::uint8_t* bytes);
