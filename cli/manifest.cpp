#include "manifest.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <string_view>

#include "command_error.h"
#include "hash_line.h"
#include "shown_text.h"

namespace tarvo::cli {
namespace {

constexpr std::string_view kVersion = "tarvo-manifest 1";
constexpr std::string_view kFirstLine = "tarvo-manifest 1: SHA-256 of pixels, as tarvo hash prints it";
constexpr std::string_view kTolerance = "tolerance=";
constexpr std::size_t kHashDigits = 64;

[[noreturn]] void fail(const std::string& path, const std::string& why) {
    throw CommandError(ExitStatus::file_error, path + ": " + why);
}

// Takes words and numbers from the beginning of a line. What it cannot take makes it fail for good.
class LineReader {
public:
    explicit LineReader(std::string_view line) : rest_(line) {}

    bool good() const { return good_; }
    std::string_view rest() const { return rest_; }
    std::string_view take_digits(std::size_t count) {
        const std::string_view digits = rest_.substr(0, count);
        expect(digits.size() == count && digits.find_first_not_of("0123456789abcdef") == std::string_view::npos);
        return advance(digits);
    }
    bool take_if(std::string_view word) {
        const bool there = rest_.starts_with(word);
        if (there) rest_.remove_prefix(word.size());
        return there;
    }
    void take(std::string_view word) { expect(take_if(word)); }
    template <class Number>
    Number take_number(Number most) {
        Number number = 0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
        expect(error == std::errc() && number >= 0 && number <= most);
        if (good_) rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return number;
    }

private:
    void expect(bool there) { good_ = good_ && there; }
    std::string_view advance(std::string_view taken) {
        rest_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest_;
    bool good_ = true;
};

PictureEntry take_entry(LineReader& line) {
    PictureEntry entry;
    entry.hash = line.take_digits(kHashDigits);
    line.take("  ");
    entry.width = line.take_number<int>(TARVO_LONGEST_SIDE);
    line.take("x");
    entry.height = line.take_number<int>(TARVO_LONGEST_SIDE);
    line.take(" rgb");
    entry.masked = line.take_if("a");
    if (line.take_if(" ") && !line.take_if(" ")) {
        line.take(kTolerance);
        Tolerance tolerance;
        tolerance.pixels = line.take_number<std::uint64_t>(UINT64_MAX);
        line.take(":");
        tolerance.difference = line.take_number<int>(255);
        entry.tolerance = tolerance;
        line.take("  ");
    }
    return entry;
}

std::string text_of(const std::string& name, const PictureEntry& entry) {
    std::string text =
        entry.hash + "  " + std::to_string(entry.width) + 'x' + std::to_string(entry.height) + ' ' + entry.kind();
    if (entry.tolerance)
        text += ' ' + std::string(kTolerance) + std::to_string(entry.tolerance->pixels) + ':' +
                std::to_string(entry.tolerance->difference);
    return text + "  " + escaped_name(name) + '\n';
}

std::string text_of(const Manifest& manifest) {
    std::string text = std::string(kFirstLine) + '\n';
    for (const auto& [name, entry] : manifest) text += text_of(name, entry);
    return text;
}

}  // namespace

PictureEntry PictureEntry::of(const Picture& picture) {
    return {picture.sha256(), picture.width(), picture.height(), picture.has_mask()};
}

bool PictureEntry::is_same(const PictureEntry& other) const {
    return hash == other.hash && width == other.width && height == other.height && masked == other.masked;
}

Manifest read_manifest(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) fail(path, std::string("cannot be read: ") + std::strerror(errno));
    std::string text;
    if (!std::getline(file, text)) fail(path, "is no manifest");
    if (text != kVersion && !text.starts_with(std::string(kVersion) + ':'))
        fail(path, "is no manifest that this tool knows: its first line is " + host::quoted(text) + ", not " +
                       host::quoted(kVersion));
    Manifest manifest;
    for (int number = 2; std::getline(file, text); ++number) {
        if (text.empty() || text.front() == '#') continue;
        LineReader line(text);
        const PictureEntry entry = take_entry(line);
        const auto name = plain_name(line.rest());
        if (!line.good() || !name || name->empty())
            fail(path,
                 "line " + std::to_string(number) + " is not HASH  WIDTHxHEIGHT KIND  NAME: " + host::quoted(text));
        if (!manifest.emplace(*name, entry).second)
            fail(path, "line " + std::to_string(number) + " has a name again: " + host::quoted(*name));
    }
    if (file.bad()) fail(path, "cannot be read");
    return manifest;
}

void write_manifest(const std::string& path, const Manifest& manifest, WholeFile::Old old, Listener& listener) {
    WholeFile file(path, old);
    file.write(text_of(manifest));
    file.commit(listener);
}

}  // namespace tarvo::cli
