#include "hash_line.h"

namespace tarvo::cli {

std::string escaped_name(std::string_view name) {
    std::string escaped;
    for (const char c : name) switch (c) {
            case '\\': escaped += "\\\\"; break;
            case '\n': escaped += "\\n"; break;
            case '\r': escaped += "\\r"; break;
            default: escaped += c;
        }
    return escaped;
}

std::optional<std::string> plain_name(std::string_view escaped) {
    std::string name;
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != '\\') {
            name += escaped[i];
            continue;
        }
        if (++i == escaped.size()) return std::nullopt;
        switch (escaped[i]) {
            case '\\': name += '\\'; break;
            case 'n': name += '\n'; break;
            case 'r': name += '\r'; break;
            default: return std::nullopt;
        }
    }
    return name;
}

std::string hash_line(std::string_view hash, std::string_view name) {
    const std::string escaped = escaped_name(name);
    const char* const mark = escaped == name ? "" : "\\";
    return mark + std::string(hash) + "  " + escaped + '\n';
}

}  // namespace tarvo::cli
