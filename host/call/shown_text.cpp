#include "shown_text.h"

#include <cstdint>
#include <cstdio>

namespace tarvo::host {
namespace {

struct Character {
    std::size_t bytes;  // 1 for a byte that begins no character
    bool plain;
};

// Whether a character beyond ASCII is a C1 control, ends a line or turns the direction of the text behind it.
bool is_control(std::uint32_t code) {
    return code <= 0x9F || code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

Character first_character(std::string_view text) {
    const auto byte = [&](std::size_t i) { return std::uint32_t{static_cast<unsigned char>(text[i])}; };
    const std::uint32_t first = byte(0);
    if (first < 0x80) return {1, first >= ' ' && first != 0x7F};
    const std::size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < bytes) return {1, false};
    std::uint32_t code = first & (0x7Fu >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if (!is_continuation_byte(text[i])) return {1, false};
        code = code << 6 | (byte(i) & 0x3F);
    }
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kLeast[bytes] || code > 0x10FFFF || surrogate) return {1, false};
    return {bytes, !is_control(code)};
}

bool is_layout(char c) { return c == '\n' || c == '\r' || c == '\t'; }

std::string spelled_out(std::string_view bytes) {
    std::string result;
    for (const char c : bytes) {
        char spelling[] = "\\x00";
        std::snprintf(spelling, sizeof spelling, "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
        result += spelling;
    }
    return result;
}

template <class Keep>
std::string with_controls_spelled_out(std::string_view text, Keep keep) {
    std::string result;
    while (!text.empty()) {
        const Character next = first_character(text);
        const std::string_view bytes = text.substr(0, next.bytes);
        if (next.plain || keep(bytes.front()))
            result += bytes;
        else
            result += spelled_out(bytes);
        text.remove_prefix(next.bytes);
    }
    return result;
}

}  // namespace

std::string shown(std::string_view text) {
    return with_controls_spelled_out(text, [](char) { return false; });
}

std::string shown_lines(std::string_view text) {
    return with_controls_spelled_out(text, [](char c) { return c == '\n' || c == '\t'; });
}

std::string_view beginning(std::string_view text, std::size_t most) {
    while (most < text.size() && is_continuation_byte(text[most])) ++most;
    return text.substr(0, most);
}

std::string quoted(std::string_view text) {
    const std::string_view kept = beginning(text, 40);
    return '"' + shown(kept) + (kept.size() < text.size() ? "..." : "") + '"';
}

bool is_plain_text(std::string_view text) {
    while (!text.empty()) {
        const Character next = first_character(text);
        if (!next.plain && !is_layout(text.front())) return false;
        text.remove_prefix(next.bytes);
    }
    return true;
}

}  // namespace tarvo::host
