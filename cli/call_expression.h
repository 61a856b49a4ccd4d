#pragma once

// One call as people write it for the tool:
//
//     TRV_AdjustContrast(rect(100,50,300,200), &c808080, 1.6, 1.6, 1.6, 0)
//     p.Stretch(width / 2, height / 2)
//     Add("other photo.png", yield = 0)
//
// This is the written form only: nothing is looked up, opened, computed or called here. A call takes memory in
// proportion to its text.

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "formula.h"
#include "placed_error.h"
#include "value.h"

namespace tarvo::cli {

// A bare word, such as photo.png or ../mask.pgm. (A text in quotes is a literal, which names a file where a picture is
// wanted.)
struct FileName {
    std::string path;
    friend bool operator==(const FileName&, const FileName&) = default;
};

// A bare word that is both: width, 1/2. What is wanted in its place decides.
struct FormulaOrFile {
    Formula formula;
    FileName file;
    friend bool operator==(const FormulaOrFile&, const FormulaOrFile&) = default;
};

// A name with numbers in brackets behind it, which stand for one value.
struct Form {
    enum class Kind {
        rectangle,    // rect(left, top, width, height)
        matrix,       // matrix(m00, m01, m02, m10, ..., m22)
        convolution,  // convolution(1, 2, 1): any number of coefficients, also none
        fit,          // fit(side), fit(width, height): stands for a width and a height
        border,       // border(), border(levels): a rectangle
    };
    Kind kind;
    std::vector<Number> numbers;
    friend bool operator==(const Form&, const Form&) = default;
};

// A number alone is a literal, never a formula.
using Expression = std::variant<host::Literal, FileName, Formula, FormulaOrFile, Form>;

// Positions are in the call's text, in bytes from 0.
struct ArgumentExpression {
    std::string name;  // empty for an argument that its place tells
    Expression value;
    std::size_t begin;                   // of the name, if there is one
    std::size_t value_begin, value_end;  // the end is where the next sign stands
};

struct CallExpression {
    std::string name;
    std::size_t name_begin;
    std::vector<ArgumentExpression> arguments;  // those with names last
};

// The message is one line: where, what was expected, what was found. `column` counts characters from 1.
class ExpressionError : public PlacedError {
public:
    ExpressionError(std::size_t position, std::size_t column, std::string_view what);
    std::size_t column() const { return column_; }

private:
    std::size_t column_;
};

// Throws ExpressionError.
CallExpression parse_call(std::string_view text);

}  // namespace tarvo::cli
