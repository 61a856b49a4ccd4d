#pragma once

// SHA-256, as FIPS 180-4 defines it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tarvo::library {

class Sha256 {
public:
    void add(std::span<const std::uint8_t> bytes);
    // The digest in 64 small hexadecimal digits. Nothing can be added behind it.
    std::string finish();

private:
    static constexpr std::size_t kBlock = 64;
    void take(const std::uint8_t* block);

    std::array<std::uint32_t, 8> state_ = {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                           0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};
    std::array<std::uint8_t, kBlock> waiting_{};
    std::uint64_t length_ = 0;  // in bytes
};

}  // namespace tarvo::library
