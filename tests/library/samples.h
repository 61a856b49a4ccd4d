#pragma once

// Pictures and errors for tests of the library.

#include <cstdint>
#include <string>
#include <vector>

#include "tarvo.hpp"

namespace tarvo::test {

// Rows of some layout that look like nothing else.
inline std::vector<std::uint8_t> noise(std::size_t size, std::uint32_t seed = 1) {
    std::vector<std::uint8_t> bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
    return bytes;
}

inline Picture noisy_picture(int width, int height, tarvo_layout layout = TARVO_RGB24) {
    const int step = layout == TARVO_GREY8 ? 1 : layout == TARVO_RGB24 ? 3 : 4;
    const auto rows = noise(static_cast<std::size_t>(width * height * step));
    return Picture::from_rows(rows.data(), width * step, width, height, layout);
}

inline std::vector<std::uint8_t> rows_of(const Picture& picture, tarvo_layout layout) {
    const int step = layout == TARVO_GREY8 ? 1 : layout == TARVO_RGB24 ? 3 : 4;
    std::vector<std::uint8_t> rows(static_cast<std::size_t>(picture.width() * picture.height() * step));
    picture.to_rows(rows.data(), picture.width() * step, layout);
    return rows;
}

// The error of a call of the C interface; frees it.
class Failed {
public:
    tarvo_error** operator&() { return &error_; }
    ~Failed() { tarvo_error_free(error_); }
    tarvo_status status() const { return tarvo_error_status(error_); }
    std::int32_t code() const { return tarvo_error_code(error_); }
    tarvo_limit limit() const { return tarvo_error_limit(error_); }
    std::string message() const { return tarvo_error_message(error_); }
    std::string operation() const { return tarvo_error_operation(error_); }
    std::string argument() const { return tarvo_error_argument(error_); }
    bool happened() const { return error_ != nullptr; }

private:
    tarvo_error* error_ = nullptr;
};

// The status that work ends with.
template <class Work>
tarvo_status status_of(Work work) {
    try {
        work();
        return TARVO_OK;
    } catch (const Error& error) {
        return error.status();
    }
}

}  // namespace tarvo::test
