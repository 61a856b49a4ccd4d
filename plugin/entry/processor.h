#pragma once

#include <cstdint>

// 1 when the processor has a vector unit, as the operating system tells it at start; else 0.
extern std::int32_t gTRV_HasAltiVec;
// Always 0.
extern std::int32_t gTRV_HasMMX;
