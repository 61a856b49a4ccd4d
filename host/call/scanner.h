#pragma once

// Reads one line of text piece by piece: the names, signs and literals that declarations and calls are made of.

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "value.h"

namespace tarvo::host {

// `position` counts bytes from 0, `column` characters from 1.
class ScanError : public std::runtime_error {
public:
    ScanError(std::size_t position, std::size_t column, const std::string& what)
        : std::runtime_error(what), position_(position), column_(column) {}
    std::size_t position() const { return position_; }
    std::size_t column() const { return column_; }

private:
    std::size_t position_, column_;
};

// The text must outlive the scanner. Blanks and tabs between pieces are skipped; positions count bytes from 0.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text) {}

    // The position where the next piece begins.
    std::size_t position();
    void move_to(std::size_t position) { position_ = position; }
    std::string_view text() const { return text_; }
    // The number of the character at a position, counted from 1. The text is UTF-8. It is read from its beginning,
    // which only a message is worth.
    std::size_t column_of(std::size_t position) const;

    bool at_end() { return position() == text_.size(); }
    bool next_is(char sign) { return !at_end() && text_[position_] == sign; }
    bool take(char sign);
    // Takes the keyword if it is the next name.
    bool take_word(std::string_view keyword);
    // Returns the next name without taking it; empty when something else is next.
    std::string_view next_name();
    std::string_view take_name();

    // Takes an integer of 32 bits (decimal, &h, &o, &b), a double, &cRRGGBB, true, false, nil, or a "text" with "" for
    // a quote. Returns none when something else is next. Throws ScanError for what begins as a literal and is none.
    std::optional<Literal> take_literal();
    // Returns the position behind the decimal number that is next; that of the next piece if it is no number.
    std::size_t number_end();

    // Throw ScanError: at the next piece with "expected ..., found ...", or at any place with any message.
    [[noreturn]] void fail_expecting(std::string_view expected);
    [[noreturn]] void fail_at(std::size_t position, const std::string& message) const;

private:
    Literal take_number(std::size_t end);
    Literal take_prefixed();
    std::string take_string();
    std::string describe_next();

    std::string_view text_;
    std::size_t position_ = 0;
};

}  // namespace tarvo::host
