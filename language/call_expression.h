#pragma once

// One call as people write it for the tool:
//
//     TRV_AdjustContrast(rect(100,50,300,200), &c808080, 1.6, 1.6, 1.6, 0)
//     p.Stretch(width / 2, height / 2)
//     Add("other photo.png", yield = 0)
//
// Only the written form is read here: nothing is looked up, opened, computed or called. Time and memory are in
// proportion to the text.

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "formula.h"
#include "placed_error.h"
#include "value.h"

namespace tarvo::language {

// A bare word, such as photo.png or ../mask.pgm. (A text in quotes is a literal, which names a file where a picture is
// wanted.)
struct FileName {
    std::string path;
    friend bool operator==(const FileName&, const FileName&) = default;
};

// A bare word that can be read as both, such as width or 1/2. What is wanted in its place decides.
struct FormulaOrFile {
    Formula formula;
    FileName file;
    friend bool operator==(const FormulaOrFile&, const FormulaOrFile&) = default;
};

// A name and numbers in brackets, which stand for a value together.
struct Form {
    enum class Kind {
        rectangle,    // rect(left, top, width, height)
        matrix,       // matrix(m00, m01, m02, m10, ..., m22)
        convolution,  // convolution(1, 2, 1), with any number of coefficients
        fit,          // fit(side) or fit(width, height), which stands for two values: a width and a height
        border,       // border() or border(levels), which is a rectangle
    };
    Kind kind;
    std::vector<Number> numbers;
    friend bool operator==(const Form&, const Form&) = default;
};

// A value that a program has already. No text spells it.
struct Given {
    host::Value value;
    friend bool operator==(const Given&, const Given&) = default;
};

// A single number is a literal and never a formula.
using Expression = std::variant<host::Literal, FileName, Formula, FormulaOrFile, Form, Given>;

// Positions count the bytes of the call's text from 0.
struct ArgumentExpression {
    std::string name;  // empty for an argument that is told by its place
    Expression value;
    std::size_t begin;                   // where the name begins, or the value if there is no name
    std::size_t value_begin, value_end;  // blanks behind the value belong to it
};

struct CallExpression {
    std::string name;
    std::size_t name_begin;
    std::vector<ArgumentExpression> arguments;  // named ones come last
};

// The message is one line that says where, what was expected and what was found. `column` counts characters from 1.
class ExpressionError : public PlacedError {
public:
    ExpressionError(std::size_t position, std::size_t column, std::string_view what);
    std::size_t column() const { return column_; }

private:
    std::size_t column_;
};

// Throws ExpressionError.
CallExpression parse_call(std::string_view text);

}  // namespace tarvo::language
