#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What libFuzzer calls for each input, and the replay of a corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Stops at an input for which a promise is not kept, so that the fuzzer keeps it.
#define FUZZ_CHECK(promise)                                                              \
    do {                                                                                 \
        if (!(promise)) {                                                                \
            std::fprintf(stderr, "%s:%d: not kept: %s\n", __FILE__, __LINE__, #promise); \
            std::abort();                                                                \
        }                                                                                \
    } while (false)
