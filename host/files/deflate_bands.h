#pragma once

// Deflated data made in bands that follow each other in one stream.

#include <cstdint>
#include <memory>
#include <span>

#include "byte_sink.h"
#include "compression.h"

namespace tarvo::host {

// Each band is deflated on its own: it refers to no other, and ends on a byte. So the memory that it takes does not
// depend on how much there is in all. Where libdeflate is there, it finds the matches; it makes whole streams alone, of
// which this makes bands. Throws std::bad_alloc.
class DeflateBands {
public:
    enum class Coding : std::uint8_t {
        literals,  // bytes by how often each comes: what is best for the noise that photographs consist of
        runs,      // the same, and repetitions of one byte
        matches    // repetitions of whatever has been
    };

    explicit DeflateBands(Compression effort);
    ~DeflateBands();
    DeflateBands(const DeflateBands&) = delete;
    DeflateBands& operator=(const DeflateBands&) = delete;

    // Replaces what is in `out`.
    void deflate(std::span<const std::uint8_t> data, Coding coding, Bytes& out);
    // The Adler-32 of what had `check` with more behind it; of nothing it is 1.
    static std::uint32_t check(std::uint32_t check, std::span<const std::uint8_t> data);
    // What ends a stream of bands.
    static std::span<const std::uint8_t> end();

private:
    struct Libraries;
    void deflate_matches(std::span<const std::uint8_t> data, Bytes& out);

    std::unique_ptr<Libraries> libraries_;
};

}  // namespace tarvo::host
