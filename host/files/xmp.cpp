#include "xmp.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "byte_text.h"

namespace tarvo::host {

namespace {

constexpr std::string_view kExtensionName = "xmpNote:HasExtendedXMP";
constexpr std::size_t kDigitsOfName = 32;

// A part of a packet's text.
struct Part {
    std::size_t place, size;
};

// Returns where the next simple value of a property stands: name="..." or <name>...</name>.
std::optional<Part> next_value(std::string_view text, std::string_view property, std::size_t from) {
    for (std::size_t place; (place = text.find(property, from)) != text.npos; from = place + 1) {
        if (place == 0) continue;
        std::size_t value = place + property.size();
        const char before = text[place - 1];
        std::size_t end = text.npos;
        if (before == '<' && text.substr(value, 1) == ">") {
            end = text.find('<', ++value);
        } else if (before == ' ' || before == '\n' || before == '\t' || before == '\r') {
            const std::string_view opening = text.substr(value, 2);
            if (opening != "=\"" && opening != "='") continue;
            value += 2;
            end = text.find(opening[1], value);
        }
        if (end != text.npos) return Part{value, end - value};
    }
    return {};
}

bool is_number(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

void set_number(Bytes& packet, std::string_view property, int number) {
    const std::string digits = std::to_string(number);
    const std::string_view text = as_text(packet);
    Bytes changed;
    std::size_t copied = 0, from = 0;
    while (const auto value = next_value(text, property, from)) {
        from = value->place + value->size;
        if (!is_number(text.substr(value->place, value->size))) continue;
        append_text(changed, text.substr(copied, value->place - copied));
        append_text(changed, digits);
        copied = from;
    }
    if (copied == 0) return;
    append_text(changed, text.substr(copied));
    packet = std::move(changed);
}

// Returns what stands between the tags of rdf:RDF. The opening one may declare no names but that of RDF, which the
// packet has as well.
std::optional<Part> descriptions(std::string_view text) {
    const std::size_t opening = text.find("<rdf:RDF"), closing = text.rfind("</rdf:RDF>");
    if (opening == text.npos || closing == text.npos) return {};
    const std::size_t begin = text.find('>', opening);
    if (begin == text.npos || begin >= closing || text[begin - 1] == '/') return {};
    return Part{begin + 1, closing - begin - 1};
}

bool declares_names(std::string_view text) {
    std::string_view head = text.substr(0, text.find('>', text.find("<rdf:RDF")));
    for (std::size_t place; (place = head.find("xmlns:")) != head.npos;) {
        head = head.substr(place + 6);
        if (!head.starts_with("rdf=") && !head.starts_with("x=")) return true;
    }
    return false;
}

}  // namespace

void make_xmp_true(Bytes& packet, int width, int height) {
    set_number(packet, "tiff:Orientation", 1);
    set_number(packet, "tiff:ImageWidth", width);
    set_number(packet, "tiff:ImageLength", height);
    set_number(packet, "exif:PixelXDimension", width);
    set_number(packet, "exif:PixelYDimension", height);
}

std::string_view name_of_extension(std::span<const std::uint8_t> packet) {
    const std::string_view text = as_text(packet);
    const auto name = next_value(text, kExtensionName, 0);
    return name && name->size == kDigitsOfName ? text.substr(name->place, name->size) : std::string_view();
}

Bytes with_extension(std::span<const std::uint8_t> packet, std::span<const std::uint8_t> extension) {
    const std::string_view more = as_text(extension);
    const auto inner = descriptions(more);
    if (!inner || declares_names(more)) return {};
    std::string text(as_text(packet));
    const auto name = next_value(text, kExtensionName, 0);
    if (!name) return {};
    const bool is_element = text[name->place - 1] == '>';
    // With what stands before the name: an opening bracket, or a blank.
    const std::size_t begin = name->place - kExtensionName.size() - (is_element ? 2 : 3);
    const std::size_t end = name->place + name->size + (is_element ? kExtensionName.size() + 3 : 1);
    if (is_element && text.compare(name->place + name->size, kExtensionName.size() + 3,
                                   "</" + std::string(kExtensionName) + ">") != 0)
        return {};
    text.erase(begin, end - begin);
    const auto outer = descriptions(text);
    if (!outer) return {};
    text.insert(outer->place + outer->size, more.substr(inner->place, inner->size));
    return {text.begin(), text.end()};
}

}  // namespace tarvo::host
