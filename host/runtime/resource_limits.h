#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>

namespace tarvo::host {

// Bounds what a host takes. Unless told otherwise it takes all it can.
struct Limits {
    static constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t max_pixels = kNone;  // of one picture
    std::uint64_t max_memory = kNone;  // bytes of all objects together, and of what decoders take besides
};

// What a program bounds unless told otherwise: 268,435,456 pixels a picture, and half of the machine's memory.
Limits default_limits();

enum class Limit {
    pixels,
    memory,
    sides,  // which no option raises
};

// An error that may be cured by raising a limit says which.
class LimitedError : public std::runtime_error {
public:
    explicit LimitedError(const std::string& message, std::optional<Limit> limit = {})
        : std::runtime_error(message), limit_(limit) {}
    std::optional<Limit> limit() const { return limit_; }

private:
    std::optional<Limit> limit_;
};

}  // namespace tarvo::host
