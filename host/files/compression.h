#pragma once

#include <cstdint>

namespace tarvo::host {

// How much time an encoder takes for a smaller file. The pixels are the same.
enum class Compression : std::uint8_t { fast, normal, small };

}  // namespace tarvo::host
