#include "manifest.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <string_view>
#include <utility>

#include "apply_words.h"
#include "command_error.h"
#include "hash_line.h"
#include "shown_text.h"

namespace tarvo::cli {
namespace {

constexpr std::string_view kVersion = "tarvo-manifest 1";
constexpr std::string_view kFirstLine = "tarvo-manifest 1: SHA-256 of pixels, as tarvo hash prints it";
constexpr std::string_view kCall = "@ ";
constexpr std::string_view kTolerance = "tolerance=";
constexpr std::size_t kHashDigits = 64;
constexpr std::size_t kMostShown = 300;  // of a recipe, in a line of many

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
    for (const auto& [recipe, group] : manifest) {
        if (group.entries.empty()) continue;
        if (!recipe.empty()) text += '\n';
        for (const std::string& call : recipe) text += std::string(kCall) + call + '\n';
        for (const auto& [name, entry] : group.entries) text += text_of(name, entry);
    }
    return text;
}

class ManifestReader {
public:
    explicit ManifestReader(const std::string& path) : path_(path) {}

    Manifest read() {
        std::ifstream file(path_, std::ios::binary);
        if (!file) fail(path_, std::string("cannot be read: ") + std::strerror(errno));
        std::string line;
        if (!std::getline(file, line)) fail(path_, "is no manifest");
        if (line != kVersion && !line.starts_with(std::string(kVersion) + ':'))
            fail(path_, "is no manifest that this tool knows: its first line is " + host::quoted(line) + ", not " +
                            host::quoted(kVersion));
        for (number_ = 2; std::getline(file, line); ++number_) take(line);
        if (file.bad()) fail(path_, "cannot be read");
        end_recipe();
        return std::move(manifest_);
    }

private:
    void take(const std::string& line) {
        if (line.starts_with('#')) return;
        if (line.empty()) return end_recipe();
        if (line.starts_with('@')) return take_call(line);
        if (!recipe_.empty()) begin_group();
        if (!group_) group_ = &manifest_.try_emplace(Recipe{}, Recipe{}).first->second;
        take_picture(line);
    }

    void take_call(const std::string& line) {
        const std::string call = line.starts_with(kCall) ? without_blanks(line.substr(kCall.size())) : "";
        if (call.empty()) wrong_line(number_, "is not @ CALL: " + host::quoted(line));
        recipe_.push_back(call);
        lines_.push_back(number_);
    }

    void take_picture(const std::string& text) {
        LineReader line(text);
        const PictureEntry entry = take_entry(line);
        const auto name = plain_name(line.rest());
        if (!line.good() || !name || name->empty())
            wrong_line(number_, "is not HASH  WIDTHxHEIGHT KIND  NAME: " + host::quoted(text));
        if (!group_->entries.emplace(*name, entry).second)
            wrong_line(number_, "has a name again: " + host::quoted(*name));
        if (group_->chain.begins_with_nothing() && group_->entries.size() > 1)
            wrong_line(number_, "is one too many: the recipe makes its picture of nothing, and has one");
    }

    void begin_group() {
        try {
            const auto [place, is_new] = manifest_.try_emplace(recipe_, recipe_);
            if (!is_new) wrong_line(lines_.front(), "has a recipe again: " + host::quoted(recipe_.front()));
            group_ = &place->second;
        } catch (const WrongCall& error) {
            wrong_line(lines_[error.index()], std::string("has a wrong call: ") + error.what());
        }
        recipe_.clear();
        lines_.clear();
    }

    // A recipe whose lines went, in a merge say, is not one with the next.
    void end_recipe() const {
        if (!recipe_.empty()) wrong_line(lines_.back(), "ends a recipe that has no pictures below it");
    }

    [[noreturn]] void wrong_line(int number, const std::string& what) const {
        fail(path_, "line " + std::to_string(number) + ' ' + what);
    }

    const std::string& path_;
    Manifest manifest_;
    int number_ = 0;
    PictureGroup* group_ = nullptr;
    // What stands above the next picture, and where.
    Recipe recipe_;
    std::vector<int> lines_;
};

}  // namespace

PictureEntry PictureEntry::of(const Picture& picture) {
    return {picture.sha256(), picture.width(), picture.height(), picture.has_mask()};
}

bool PictureEntry::is_same(const PictureEntry& other) const {
    return hash == other.hash && width == other.width && height == other.height && masked == other.masked;
}

std::string title(const std::string& name, const Recipe& recipe) {
    std::string calls;
    for (const std::string& call : recipe) {
        calls += ' ' + std::string(kCall) + call;
        if (calls.size() > kMostShown) return name + std::string(host::beginning(calls, kMostShown)) + "...";
    }
    return name + calls;
}

Manifest read_manifest(const std::string& path) { return ManifestReader(path).read(); }

void write_manifest(const std::string& path, const Manifest& manifest, WholeFile::Old old, Listener& listener) {
    WholeFile file(path, old);
    file.write(text_of(manifest));
    file.commit(listener);
}

}  // namespace tarvo::cli
