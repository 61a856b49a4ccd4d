#include "call_expression.h"

#include <algorithm>
#include <type_traits>

#include "names.h"
#include "scanner.h"

namespace tarvo::cli {
namespace {

using host::same_name;
using host::Scanner;

// Whether a byte belongs to a bare file name. Every byte of a character beyond ASCII does.
bool continues_word(char c) {
    constexpr std::string_view kSigns = "._-/~";
    const bool beyond_ascii = static_cast<unsigned char>(c) >= 0x80;
    return host::continues_name(c) || kSigns.find(c) != std::string_view::npos || beyond_ascii;
}

bool is_literal_keyword(std::string_view word) {
    return same_name(word, "true") || same_name(word, "false") || same_name(word, "nil");
}

// Whether a word that begins like a number is a file name, as "2010.png" and "1/a" are: it has a folder, or an
// extension that begins with a letter.
bool looks_like_file(std::string_view word) {
    const std::size_t dot = word.rfind('.');
    const std::string_view extension = dot == std::string_view::npos ? "" : word.substr(dot + 1);
    return word.find('/') != std::string_view::npos || (!extension.empty() && host::begins_name(extension.front()));
}

class Parser {
public:
    explicit Parser(std::string_view text) : scanner_(text) {}

    CallExpression parse() {
        CallExpression call;
        call.name = scanner_.take_name();
        if (call.name.empty()) scanner_.fail_expecting("the name of an operation");
        open_list();
        if (!scanner_.take(')')) {
            do call.arguments.push_back(argument());
            while (scanner_.take(','));
            close_list();
        }
        if (!scanner_.at_end()) scanner_.fail_expecting("the end");
        return call;
    }

private:
    void open_list() {
        if (!scanner_.take('(')) scanner_.fail_expecting("\"(\"");
    }

    void close_list() {
        if (!scanner_.take(')')) scanner_.fail_expecting("\",\" or \")\"");
    }

    ArgumentExpression argument() {
        const std::size_t begin = scanner_.position();
        return {expression(), scanner_.column_of(begin)};
    }

    Expression expression() {
        const std::string_view word = next_word();
        if (same_name(word, "rect")) return rectangle();
        if (same_name(word, "matrix")) return matrix();
        if (same_name(word, "convolution")) return convolution();
        if (is_file_name(word)) return file_name(word);
        if (const auto literal = scanner_.take_literal()) return *literal;
        scanner_.fail_expecting(
            "a number, a color (&cRRGGBB), true, false, nil, a file name, a text in quotes, rect(...), matrix(...) or "
            "convolution(...)");
    }

    // Returns the longest word that could be a file name; empty when something else is next.
    std::string_view next_word() {
        const std::string_view rest = scanner_.text().substr(scanner_.position());
        const auto end = std::find_if_not(rest.begin(), rest.end(), continues_word);
        return rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    }

    bool is_file_name(std::string_view word) {
        if (word.empty() || is_literal_keyword(word)) return false;
        const std::size_t begin = scanner_.position();
        const std::size_t number_end = scanner_.number_end();
        const bool is_number = number_end >= begin + word.size();
        const bool begins_as_number = number_end > begin || word.front() == '-';
        return !is_number && (!begins_as_number || looks_like_file(word));
    }

    FileName file_name(std::string_view word) {
        const std::size_t begin = scanner_.position();
        scanner_.move_to(begin + word.size());
        if (scanner_.next_is('('))
            scanner_.fail_at(begin, "expected rect(...), matrix(...) or convolution(...), found " +
                                        host::quoted(std::string(word) + "("));
        return {std::string(word)};
    }
    RectangleExpression rectangle() {
        const auto sides = numbers<std::int32_t, 4>("rect(left, top, width, height)");
        return {sides[0], sides[1], sides[2], sides[3]};
    }

    MatrixExpression matrix() { return {numbers<double, 9>("matrix(m00, m01, m02, m10, ..., m22)")}; }

    ConvolutionExpression convolution() {
        scanner_.take_name();
        open_list();
        ConvolutionExpression result;
        if (scanner_.take(')')) return result;
        do result.coefficients.push_back(number<std::int32_t>());
        while (scanner_.take(','));
        close_list();
        return result;
    }

    // Takes a name and exactly kCount numbers in brackets. `form` shows, in messages, how they are to be written.
    template <class Number, std::size_t kCount>
    std::array<Number, kCount> numbers(const std::string& form) {
        scanner_.take_name();
        open_list();
        std::array<Number, kCount> result{};
        for (std::size_t i = 0; i < kCount; ++i) {
            if (i > 0 && !scanner_.take(',')) scanner_.fail_expecting("\",\" and the next number of " + form);
            result[i] = number<Number>();
        }
        if (!scanner_.take(')')) scanner_.fail_expecting("\")\" after the last number of " + form);
        return result;
    }

    template <class Number>
    Number number() {
        const std::size_t begin = scanner_.position();
        const auto literal = scanner_.take_literal();
        if (literal) {
            if (const auto* integer = std::get_if<std::int32_t>(&*literal)) return static_cast<Number>(*integer);
            if (const auto* exact = std::get_if<Number>(&*literal)) return *exact;
        }
        scanner_.move_to(begin);
        scanner_.fail_expecting(std::is_same_v<Number, double> ? "a number" : "an integer");
    }

    Scanner scanner_;
};

}  // namespace

ExpressionError::ExpressionError(std::size_t column, std::string_view what)
    : std::runtime_error("column " + std::to_string(column) + ": " + std::string(what)), column_(column) {}

CallExpression parse_call(std::string_view text) {
    try {
        return Parser(text).parse();
    } catch (const host::ScanError& error) {
        throw ExpressionError(error.column(), error.what());
    }
}

}  // namespace tarvo::cli
