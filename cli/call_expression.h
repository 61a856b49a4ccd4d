#pragma once

// One call as people write it for the tool:
//
//     TRV_AdjustContrast(rect(100,50,300,200), &c808080, 1.6, 1.6, 1.6, 0)
//     TRV_Add("other photo.png", 0)
//
// Only the written form is read here: nothing is looked up, opened or called.

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "value.h"

namespace tarvo::cli {

// A bare word, such as photo.png or ../mask.pgm. (A text in quotes is a literal, which names a file where a picture is
// wanted.)
struct FileName {
    std::string path;
    friend bool operator==(const FileName&, const FileName&) = default;
};

// rect(left, top, width, height).
struct RectangleExpression {
    std::int32_t left, top, width, height;
    friend bool operator==(const RectangleExpression&, const RectangleExpression&) = default;
};

// matrix(m00, m01, m02, m10, ..., m22).
struct MatrixExpression {
    std::array<double, 9> elements;
    friend bool operator==(const MatrixExpression&, const MatrixExpression&) = default;
};

// convolution(1, 2, 1): any number of coefficients, also none.
struct ConvolutionExpression {
    std::vector<std::int32_t> coefficients;
    friend bool operator==(const ConvolutionExpression&, const ConvolutionExpression&) = default;
};

using Expression = std::variant<host::Literal, FileName, RectangleExpression, MatrixExpression, ConvolutionExpression>;

struct ArgumentExpression {
    Expression value;
    std::size_t column;  // the character that it begins at, counted from 1
};

struct CallExpression {
    std::string name;
    std::vector<ArgumentExpression> arguments;
};

// The message is one line that says where, what was expected and what was found. `column` counts characters from 1.
class ExpressionError : public std::runtime_error {
public:
    ExpressionError(std::size_t column, std::string_view what);
    std::size_t column() const { return column_; }

private:
    std::size_t column_;
};

// Throws ExpressionError.
CallExpression parse_call(std::string_view text);

}  // namespace tarvo::cli
