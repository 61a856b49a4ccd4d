// The library's decoder, at both depths: what it reads can be written, and read again as the same pixels.

#include <string>

#include "fuzz_check.h"
#include "tarvo.h"

namespace {

std::string sum_of(const tarvo_picture* picture) {
    char hex[65];
    FUZZ_CHECK(tarvo_picture_sha256(picture, hex) == TARVO_OK);
    return hex;
}

void check_written(const tarvo_picture* picture) {
    std::uint8_t* bytes = nullptr;
    std::size_t length = 0;
    FUZZ_CHECK(tarvo_picture_encode(picture, "pam", nullptr, &bytes, &length, nullptr) == TARVO_OK);
    tarvo_picture* again = nullptr;
    FUZZ_CHECK(tarvo_picture_decode(bytes, length, nullptr, &again, nullptr) == TARVO_OK);
    FUZZ_CHECK(sum_of(again) == sum_of(picture));
    tarvo_picture_release(again);
    tarvo_free(bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const std::int32_t keep_depth : {0, 1}) {
        tarvo_read_options options = {};
        options.size = sizeof options;
        options.keep_depth = keep_depth;
        options.max_pixels = 1 << 16;
        options.max_memory = 1 << 22;
        tarvo_picture* picture = nullptr;
        tarvo_error* error = nullptr;
        const tarvo_status status = tarvo_picture_decode(data, size, &options, &picture, &error);
        FUZZ_CHECK((status == TARVO_OK) == (picture != nullptr) && (status == TARVO_OK) == (error == nullptr));
        FUZZ_CHECK(status != TARVO_USE && status != TARVO_OPERATION && status != TARVO_CANCELLED);
        if (picture) check_written(picture);
        tarvo_error_free(error);
        tarvo_picture_release(picture);
    }
    return 0;
}
