// As the fuzzer of all picture files, for PNG alone: the mutator puts the check sums of the chunks right, which a
// reader would otherwise stop at.

#include <algorithm>

#include "fuzz_check.h"
#include "picture_round_trip.h"

namespace {

constexpr std::size_t kSignatureBytes = 8;

std::uint32_t word_at(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

void put_word(std::uint8_t* bytes, std::uint32_t word) {
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(word >> (24 - 8 * i));
}

std::uint32_t crc_of(const std::uint8_t* bytes, std::size_t count) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::size_t i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

// A chunk is its length, its type, so many bytes, and the sum of the last two. One that claims more than there is gets
// what there is.
[[maybe_unused]] void put_right(std::uint8_t* file, std::size_t size) {
    constexpr std::uint8_t kSignature[kSignatureBytes] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (size < kSignatureBytes) return;
    std::copy_n(kSignature, kSignatureBytes, file);
    for (std::size_t place = kSignatureBytes; size - place >= 12;) {
        const std::size_t room = size - place - 12;
        if (word_at(file + place) > room) put_word(file + place, static_cast<std::uint32_t>(room));
        const std::size_t length = word_at(file + place);
        put_word(file + place + 8 + length, crc_of(file + place + 4, length + 4));
        place += length + 12;
    }
}

}  // namespace

#ifdef TARVO_FUZZERS
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned) {
    size = LLVMFuzzerMutate(data, size, most);
    put_right(data, size);
    return size;
}
#endif

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tarvo::fuzz::check_picture_file({data, size});
    return 0;
}
