#pragma once

// Bytes that are text, and text as bytes.

#include <cstdint>
#include <span>
#include <string_view>

namespace tarvo::host {

inline std::string_view as_text(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline std::span<const std::uint8_t> as_bytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// If the bytes begin with that text, takes it from them.
inline bool take_start(std::span<const std::uint8_t>& bytes, std::string_view start) {
    const bool starts = as_text(bytes).starts_with(start);
    if (starts) bytes = bytes.subspan(start.size());
    return starts;
}

// Appends text to bytes.
template <class Bytes>
void append_text(Bytes& to, std::string_view text) {
    to.insert(to.end(), text.begin(), text.end());
}

}  // namespace tarvo::host
