#include "call_expression.h"

#include <algorithm>
#include <array>
#include <limits>

#include "formula_parser.h"
#include "names.h"
#include "scanner.h"
#include "shown_text.h"

namespace tarvo::language {
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

struct FormRule {
    std::string_view name;
    Form::Kind kind;
    std::size_t least, most;  // how many numbers it takes
    const char* number;       // what each number is to be, in words
    const char* written;      // how the form is written, for messages
};

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();
constexpr const char* kInteger = "an integer";
constexpr const char* kReal = "a number";

constexpr std::array<FormRule, 5> kForms = {{
    {"rect", Form::Kind::rectangle, 4, 4, kInteger, "rect(left, top, width, height)"},
    {"matrix", Form::Kind::matrix, 9, 9, kReal, "matrix(m00, m01, m02, m10, ..., m22)"},
    {"convolution", Form::Kind::convolution, 0, kAnyNumber, kInteger, "convolution(coefficients)"},
    {"fit", Form::Kind::fit, 1, 2, kInteger, "fit(side) or fit(width, height)"},
    {"border", Form::Kind::border, 0, 1, kInteger, "border() or border(levels)"},
}};

constexpr const char* kFormNames = "rect(...), matrix(...), convolution(...), fit(...) or border(...)";

class Parser {
public:
    explicit Parser(std::string_view text) : scanner_(text) {}

    CallExpression parse() {
        CallExpression call;
        name_of(call);
        open_list();
        if (!scanner_.take(')')) {
            do call.arguments.push_back(argument(!call.arguments.empty() && !call.arguments.back().name.empty()));
            while (scanner_.take(','));
            close_list();
        }
        if (!scanner_.at_end()) scanner_.fail_expecting("the end");
        return call;
    }

private:
    // Takes the name, before which programs write the object's variable and a dot.
    void name_of(CallExpression& call) {
        take_name(call);
        if (scanner_.take('.')) take_name(call);
    }

    void take_name(CallExpression& call) {
        call.name_begin = scanner_.position();
        call.name = scanner_.take_name();
        if (call.name.empty()) scanner_.fail_expecting("the name of an operation");
    }

    void open_list() {
        if (!scanner_.take('(')) scanner_.fail_expecting("\"(\"");
    }

    void close_list() {
        if (!scanner_.take(')')) scanner_.fail_expecting("\",\" or \")\"");
    }

    ArgumentExpression argument(bool named_only) {
        ArgumentExpression result;
        result.begin = scanner_.position();
        result.name = argument_name();
        if (named_only && result.name.empty()) scanner_.fail_expecting("a name and \"=\", as the argument before has");
        result.value_begin = scanner_.position();
        result.value = expression();
        result.value_end = scanner_.position();
        return result;
    }

    // Returns an empty name and takes nothing when no "name =" is next.
    std::string argument_name() {
        const std::size_t begin = scanner_.position();
        const std::string_view name = scanner_.take_name();
        if (!name.empty() && scanner_.take('=')) return std::string(name);
        scanner_.move_to(begin);
        return {};
    }

    Expression expression() {
        const std::string_view word = next_word();
        if (is_literal_keyword(word)) return *scanner_.take_literal();
        const bool is_formula = !word.empty() && reads_as_formula(word);
        if (!is_formula && is_file_name(word)) return form_or_file(word);
        if (is_formula || begins_number()) return formula(is_formula ? word : "");
        if (const auto literal = scanner_.take_literal()) return *literal;
        scanner_.fail_expecting(
            std::string("a number, a color (&cRRGGBB), true, false, nil, a file name, a text in quotes, ") +
            kFormNames);
    }

    // Returns the longest word that could be a file name; empty when something else is next.
    std::string_view next_word() {
        const std::string_view rest = scanner_.text().substr(scanner_.position());
        const auto end = std::find_if_not(rest.begin(), rest.end(), continues_word);
        return rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    }

    bool is_file_name(std::string_view word) {
        if (word.empty()) return false;
        const std::size_t begin = scanner_.position();
        const std::size_t number_end = scanner_.number_end();
        const bool is_number = number_end >= begin + word.size();
        const bool begins_as_number = number_end > begin || word.front() == '-';
        return !is_number && (!begins_as_number || looks_like_file(word));
    }

    bool begins_number() {
        if (scanner_.next_is('&')) return !is_color();
        return scanner_.next_is('(') || scanner_.next_is('-') || scanner_.number_end() > scanner_.position();
    }

    bool is_color() {
        const std::string_view rest = scanner_.text().substr(scanner_.position());
        return rest.size() > 1 && host::lower_case(rest[1]) == 'c';
    }

    // `word` is the beginning that could be a file name if nothing followed it; empty when there is none.
    Expression formula(std::string_view word) {
        const std::size_t begin = scanner_.position();
        scanner_.move_to(begin + word.size());
        const bool alone = scanner_.next_is(',') || scanner_.next_is(')');
        scanner_.move_to(begin);
        const Number number = take_number(scanner_, kReal);
        if (const auto* integer = std::get_if<std::int32_t>(&number.value)) return host::Literal(*integer);
        if (const auto* real = std::get_if<double>(&number.value)) return host::Literal(*real);
        Formula result = std::get<Formula>(number.value);
        if (!word.empty() && alone) return FormulaOrFile{std::move(result), {std::string(word)}};
        return result;
    }

    Expression form_or_file(std::string_view word) {
        const std::size_t begin = scanner_.position();
        scanner_.move_to(begin + word.size());
        if (!scanner_.next_is('(')) return FileName{std::string(word)};
        const auto rule = std::ranges::find_if(kForms, [&](const FormRule& r) { return same_name(r.name, word); });
        if (rule == kForms.end())
            scanner_.fail_at(
                begin, std::string("expected ") + kFormNames + ", found " + host::quoted(std::string(word) + "("));
        return form(*rule);
    }

    Form form(const FormRule& rule) {
        open_list();
        Form result{rule.kind, {}};
        if (rule.least == 0 && scanner_.take(')')) return result;
        for (;;) {
            result.numbers.push_back(number(rule.number));
            const std::size_t count = result.numbers.size();
            if (count < rule.most && scanner_.take(',')) continue;
            if (count >= rule.least && scanner_.take(')')) return result;
            fail_behind_number(rule, count);
        }
    }

    Number number(const char* expected) {
        Number result = take_number(scanner_, expected);
        if (expected == kReal || !std::holds_alternative<double>(result.value)) return result;
        scanner_.move_to(result.position);
        scanner_.fail_expecting(expected);
    }

    [[noreturn]] void fail_behind_number(const FormRule& rule, std::size_t count) {
        const std::string written = rule.written;
        if (count < rule.least) scanner_.fail_expecting("\",\" and the next number of " + written);
        if (count == rule.most) scanner_.fail_expecting("\")\" after the last number of " + written);
        scanner_.fail_expecting("\",\" or \")\"");
    }

    Scanner scanner_;
};

}  // namespace

ExpressionError::ExpressionError(std::size_t position, std::size_t column, std::string_view what)
    : PlacedError(position, "column " + std::to_string(column) + ": " + std::string(what)), column_(column) {}

CallExpression parse_call(std::string_view text) {
    try {
        return Parser(text).parse();
    } catch (const host::ScanError& error) {
        throw ExpressionError(error.position(), error.column(), error.what());
    }
}

}  // namespace tarvo::language
