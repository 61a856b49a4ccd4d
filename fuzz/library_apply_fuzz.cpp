// The library's calls by text: each line is one, on what the one before gave.

#include <string>

#include "fuzz_check.h"
#include "tarvo.h"

namespace {

tarvo_picture* masked_picture() {
    constexpr int kWidth = 16, kHeight = 9;
    std::uint8_t rows[4 * kWidth * kHeight];
    for (std::size_t i = 0; i < sizeof rows; ++i) rows[i] = static_cast<std::uint8_t>(37 * i);
    tarvo_picture* picture = nullptr;
    FUZZ_CHECK(tarvo_picture_from_rows(rows, 4 * kWidth, kWidth, kHeight, TARVO_RGBA32, &picture, nullptr) == TARVO_OK);
    return picture;
}

void check_error(tarvo_status status, const tarvo_error* error) {
    FUZZ_CHECK(error && tarvo_error_status(error) == status && *tarvo_error_message(error) != '\0');
    FUZZ_CHECK(status != TARVO_CANCELLED && status != TARVO_FILE);
}

// Returns the picture of the result, or none.
tarvo_picture* picture_of(const tarvo_result* result) {
    const tarvo_value* value = tarvo_result_value(result);
    FUZZ_CHECK(value && value->type >= TARVO_NIL && value->type <= TARVO_INTEGERS);
    if (value->type != TARVO_PICTURE) return nullptr;
    char hex[65];
    FUZZ_CHECK(tarvo_picture_sha256(value->as.picture, hex) == TARVO_OK && hex[64] == '\0');
    return tarvo_picture_retain(value->as.picture);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tarvo_call_options options = {};
    options.size = sizeof options;
    options.threads = 1;
    options.max_pixels = 1 << 16;
    options.max_memory = 1 << 22;
    std::string text(reinterpret_cast<const char*>(data), size);
    tarvo_picture* picture = masked_picture();
    constexpr int kMostCalls = 8;
    for (int i = 0; i < kMostCalls && !text.empty(); ++i) {
        const std::string line = text.substr(0, text.find('\n'));
        text.erase(0, line.size() + 1);
        tarvo_result* result = nullptr;
        tarvo_error* error = nullptr;
        const tarvo_status status = tarvo_apply(line.c_str(), picture, &options, &result, &error);
        FUZZ_CHECK((status == TARVO_OK) == (result != nullptr));
        if (result) {
            if (tarvo_picture* made = picture_of(result)) {
                tarvo_picture_release(picture);
                picture = made;
            }
        } else {
            check_error(status, error);
        }
        tarvo_result_release(result);
        tarvo_error_free(error);
    }
    tarvo_picture_release(picture);
    return 0;
}
