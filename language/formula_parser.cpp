#include "formula_parser.h"

#include <optional>
#include <utility>

#include "names.h"

namespace tarvo::language {
namespace {

using host::same_name;
using host::Scanner;

std::optional<Term::Kind> side_named(std::string_view name) {
    if (same_name(name, "width")) return Term::Kind::width;
    if (same_name(name, "height")) return Term::Kind::height;
    return std::nullopt;
}

// Puts operators and operands in postfix order. It does not recurse, so that brackets may be nested to any depth.
class FormulaParser {
public:
    explicit FormulaParser(Scanner& scanner) : scanner_(scanner) {}

    Number parse(const char* expected) {
        const std::size_t begin = scanner_.position();
        const char* wanted = expected;
        do {
            operand(wanted);
            wanted = "a number, width, height or \"(\"";
        } while (take_operator());
        if (brackets_ > 0) scanner_.fail_expecting("an operator or \")\"");
        while (!waiting_.empty()) apply_waiting();
        return {plain_value(), begin};
    }

private:
    void operand(const char* expected) {
        while (!take_number() && !take_side()) {
            const std::size_t begin = scanner_.position();
            if (scanner_.take('-'))
                waiting_.push_back({Term::Kind::negate, 0, begin});
            else if (scanner_.take('('))
                open_bracket(begin);
            else
                scanner_.fail_expecting(expected);
        }
        while (brackets_ > 0 && scanner_.take(')')) close_bracket();
    }

    bool take_number() {
        const std::size_t begin = scanner_.position();
        if (!scanner_.next_is('&') && scanner_.number_end() == begin) return false;
        const std::optional<host::Literal> literal = scanner_.take_literal();
        if (const auto* integer = std::get_if<std::int32_t>(&*literal))
            terms_.push_back({Term::Kind::integer, static_cast<double>(*integer), begin});
        else if (const auto* real = std::get_if<double>(&*literal))
            terms_.push_back({Term::Kind::real, *real, begin});
        else
            scanner_.move_to(begin);
        return scanner_.position() > begin;
    }

    bool take_side() {
        const std::size_t begin = scanner_.position();
        const std::optional<Term::Kind> side = side_named(scanner_.next_name());
        if (!side) return false;
        scanner_.take_name();
        terms_.push_back({*side, 0, begin});
        return true;
    }

    bool take_operator() {
        constexpr std::pair<char, Term::Kind> kOperators[] = {{'+', Term::Kind::add},
                                                              {'-', Term::Kind::subtract},
                                                              {'*', Term::Kind::multiply},
                                                              {'/', Term::Kind::divide}};
        const std::size_t begin = scanner_.position();
        for (const auto& [sign, kind] : kOperators) {
            if (!scanner_.take(sign)) continue;
            while (!waiting_.empty() && binding(waiting_.back().kind) >= binding(kind)) apply_waiting();
            waiting_.push_back({kind, 0, begin});
            return true;
        }
        return false;
    }

    // An open bracket waits as a kind of term that is no operator and so binds nothing.
    static constexpr Term::Kind kBracket = Term::Kind::integer;

    static int binding(Term::Kind kind) {
        switch (kind) {
            case Term::Kind::negate: return 3;
            case Term::Kind::multiply:
            case Term::Kind::divide: return 2;
            case Term::Kind::add:
            case Term::Kind::subtract: return 1;
            default: return 0;
        }
    }

    void open_bracket(std::size_t begin) {
        waiting_.push_back({kBracket, 0, begin});
        ++brackets_;
    }

    void close_bracket() {
        while (waiting_.back().kind != kBracket) apply_waiting();
        waiting_.pop_back();
        --brackets_;
    }

    void apply_waiting() {
        terms_.push_back(waiting_.back());
        waiting_.pop_back();
    }

    std::variant<std::int32_t, double, Formula> plain_value() {
        if (terms_.size() == 1 && terms_[0].kind == Term::Kind::integer)
            return static_cast<std::int32_t>(terms_[0].number);
        if (terms_.size() == 1 && terms_[0].kind == Term::Kind::real) return terms_[0].number;
        return Formula{std::move(terms_)};
    }

    Scanner& scanner_;
    std::vector<Term> terms_;
    std::vector<Term> waiting_;  // operators and open brackets
    std::size_t brackets_ = 0;
};

}  // namespace

Number take_number(Scanner& scanner, const char* expected) { return FormulaParser(scanner).parse(expected); }

bool reads_as_formula(std::string_view word) {
    Scanner scanner(word);
    bool computed = false;
    for (;;) {
        while (scanner.number_end() == scanner.position() && scanner.take('-')) computed = true;
        const bool is_side = side_named(scanner.next_name()).has_value();
        const std::size_t end = is_side ? scanner.position() + scanner.next_name().size() : scanner.number_end();
        if (end == scanner.position()) return false;
        scanner.move_to(end);
        computed = computed || is_side;
        if (scanner.at_end()) return computed;
        if (!scanner.take('-') && !scanner.take('/')) return false;
        computed = true;
    }
}

}  // namespace tarvo::language
