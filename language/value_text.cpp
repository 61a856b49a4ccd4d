#include "value_text.h"

#include <charconv>
#include <cstdio>
#include <string_view>
#include <variant>

#include "shown_text.h"

namespace tarvo::language {

namespace {

// Returns a text whose lines end with a line feed, whatever they ended with before.
std::string with_line_ends(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool half_of_pair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (!half_of_pair) result += text[i] == '\r' ? '\n' : text[i];
    }
    return result;
}

struct ValueText {
    std::string operator()(host::Nil) const { return "nil"; }
    std::string operator()(std::int32_t number) const { return std::to_string(number); }
    std::string operator()(bool truth) const { return truth ? "true" : "false"; }

    // Writes the shortest text that reads as the same number.
    std::string operator()(double number) const {
        char text[32];
        return {text, std::to_chars(text, text + sizeof text, number).ptr};
    }

    std::string operator()(host::Color color) const {
        char text[16];
        std::snprintf(text, sizeof text, "&c%06X", static_cast<unsigned>(color.rgb));
        return text;
    }

    std::string operator()(const host::ObjectRef& object) const {
        if (!object) return "nil";
        if (const auto* text = dynamic_cast<const host::StringObject*>(object.get()))
            return host::is_plain_text(text->bytes()) ? with_line_ends(text->bytes())
                                                      : bytes("string", text->bytes().size());
        if (const auto* block = dynamic_cast<const host::MemoryBlock*>(object.get()))
            return bytes("MemoryBlock", block->bytes.size());
        return "a " + host::class_name(*object.get());
    }

    static std::string bytes(const char* what, std::size_t count) {
        return std::string("a ") + what + " of " + std::to_string(count) + " bytes";
    }
};

}  // namespace

std::string value_text(const host::Value& value) { return std::visit(ValueText{}, value); }

std::string depth_text(int depth) { return std::to_string(depth) + (depth == 1 ? " bit" : " bits"); }

}  // namespace tarvo::language
