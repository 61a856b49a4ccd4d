#include "scanner.h"

#include <algorithm>
#include <charconv>

#include "names.h"
#include "shown_text.h"

namespace tarvo::host {
namespace {

template <class Condition>
std::size_t end_of_run(std::string_view text, std::size_t begin, Condition belongs) {
    while (begin < text.size() && belongs(text[begin])) ++begin;
    return begin;
}

// Returns the number that all of `digits` spell in a base; none when they are no such number or do not fit in 32 bits.
std::optional<std::uint32_t> unsigned_number(std::string_view digits, int base) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
    return value;
}

int base_of(char prefix) {
    switch (prefix) {
        case 'h':
        case 'c': return 16;
        case 'o': return 8;
        case 'b': return 2;
        default: return 0;
    }
}

}  // namespace

std::size_t Scanner::position() {
    position_ = end_of_run(text_, position_, [](char c) { return c == ' ' || c == '\t'; });
    return position_;
}

bool Scanner::take(char sign) {
    const bool found = next_is(sign);
    if (found) ++position_;
    return found;
}

std::string_view Scanner::next_name() {
    const std::size_t begin = position();
    if (begin == text_.size() || !begins_name(text_[begin])) return {};
    return text_.substr(begin, end_of_run(text_, begin, continues_name) - begin);
}

std::string_view Scanner::take_name() {
    const std::string_view name = next_name();
    position_ += name.size();
    return name;
}

bool Scanner::take_word(std::string_view keyword) {
    const bool found = same_name(next_name(), keyword);
    if (found) position_ += keyword.size();
    return found;
}

std::size_t Scanner::number_end() {
    const std::size_t begin = position();
    const std::size_t sign_end = begin + (next_is('-') ? 1 : 0);
    std::size_t end = end_of_run(text_, sign_end, is_digit);
    std::size_t digits = end - sign_end;
    if (end < text_.size() && text_[end] == '.') {
        const std::size_t fraction_end = end_of_run(text_, end + 1, is_digit);
        digits += fraction_end - end - 1;
        end = fraction_end;
    }
    if (digits == 0) return begin;
    if (end < text_.size() && lower_case(text_[end]) == 'e') {
        const bool has_sign = end + 1 < text_.size() && (text_[end + 1] == '-' || text_[end + 1] == '+');
        const std::size_t exponent = end + (has_sign ? 2 : 1);
        const std::size_t exponent_end = end_of_run(text_, exponent, is_digit);
        if (exponent_end > exponent) end = exponent_end;
    }
    return end;
}

std::optional<Literal> Scanner::take_literal() {
    if (take_word("true")) return true;
    if (take_word("false")) return false;
    if (take_word("nil")) return Nil{};
    if (next_is('"')) return take_string();
    if (next_is('&')) return take_prefixed();
    const std::size_t end = number_end();
    if (end > position_) return take_number(end);
    return std::nullopt;
}

Literal Scanner::take_number(std::size_t end) {
    const std::string_view word = text_.substr(position_, end - position_);
    const auto goes_on = [](char c) { return continues_name(c) || c == '.'; };
    if (const std::size_t word_end = end_of_run(text_, end, goes_on); word_end > end)
        fail_at(position_, "expected a number, found " + quoted(text_.substr(position_, word_end - position_)));

    const char* const last = word.data() + word.size();
    Literal result;
    std::errc error{};
    if (word.find_first_of(".eE") == std::string_view::npos)
        error = std::from_chars(word.data(), last, result.emplace<std::int32_t>()).ec;
    else
        error = std::from_chars(word.data(), last, result.emplace<double>()).ec;
    if (error != std::errc{}) {
        const bool integer = std::holds_alternative<std::int32_t>(result);
        fail_at(position_, quoted(word) + (integer ? " does not fit an integer of 32 bits" : " does not fit a double"));
    }
    position_ = end;
    return result;
}

Literal Scanner::take_prefixed() {
    const std::size_t begin = position_;
    const std::size_t end = end_of_run(text_, begin + 1, continues_name);
    const char prefix = end > begin + 1 ? lower_case(text_[begin + 1]) : '\0';
    const int base = base_of(prefix);
    const std::string_view word = text_.substr(begin, end - begin);
    if (base == 0) fail_at(begin, "expected &h, &o, &b or &c with digits, found " + quoted(word));

    const std::string_view digits = word.substr(2);
    const auto number = unsigned_number(digits, base);
    position_ = end;
    if (prefix == 'c') {
        if (!number || digits.size() != 6)
            fail_at(begin, "expected six hexadecimal digits after &c, found " + quoted(word));
        return Color{*number};
    }
    if (!number)
        fail_at(begin, "expected an integer of 32 bits in base " + std::to_string(base) + ", found " + quoted(word));
    return static_cast<std::int32_t>(*number);
}

std::string Scanner::take_string() {
    const std::size_t begin = position_;
    std::string result;
    for (std::size_t at = begin + 1;;) {
        const std::size_t quote = text_.find('"', at);
        if (quote == std::string_view::npos) fail_at(begin, "expected a quote at the end of the text that begins here");
        result += text_.substr(at, quote - at);
        at = quote + 1;
        if (at == text_.size() || text_[at] != '"') {
            position_ = at;
            return result;
        }
        result += '"';
        ++at;
    }
}

std::string Scanner::describe_next() {
    if (at_end()) return "the end";
    const std::size_t begin = position_;
    std::size_t end = std::max(end_of_run(text_, begin, continues_name), number_end());
    if (end == begin) end = end_of_run(text_, begin + 1, is_continuation_byte);
    return quoted(text_.substr(begin, end - begin));
}

void Scanner::fail_expecting(std::string_view expected) {
    const std::size_t begin = position();
    fail_at(begin, "expected " + std::string(expected) + ", found " + describe_next());
}

void Scanner::fail_at(std::size_t position, const std::string& message) const {
    throw ScanError(position, column_of(position), message);
}

std::size_t Scanner::column_of(std::size_t position) const {
    const std::string_view before = text_.substr(0, position);
    const auto characters = before.size() - std::count_if(before.begin(), before.end(), is_continuation_byte);
    return characters + 1;
}

}  // namespace tarvo::host
