#include "value_text.h"

#include <charconv>
#include <cstdio>
#include <string_view>
#include <variant>

#include "names.h"
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

std::string count_text(std::string_view class_name, std::size_t count) {
    return object_text(class_name) + " of " + std::to_string(count) + " bytes";
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
            return bytes_text(host::class_name(*text), text->bytes());
        if (const auto* block = dynamic_cast<const host::MemoryBlock*>(object.get()))
            return count_text(host::class_name(*block), block->bytes.size());
        return object_text(host::class_name(*object.get()));
    }
};

}  // namespace

std::string value_text(const host::Value& value) { return std::visit(ValueText{}, value); }

std::string bytes_text(std::string_view class_name, std::string_view bytes) {
    const bool is_text = host::same_name(class_name, "string") && host::is_plain_text(bytes);
    return is_text ? with_line_ends(bytes) : count_text(class_name, bytes.size());
}

std::string object_text(std::string_view class_name) { return "a " + std::string(class_name); }

std::string depth_text(int depth) { return std::to_string(depth) + (depth == 1 ? " bit" : " bits"); }

}  // namespace tarvo::language
