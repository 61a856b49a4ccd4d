#include "call_expression.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarvo::language {
namespace {

using host::Color;
using host::Literal;
using host::Nil;

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

// The one argument of a call, as written.
Expression argument(const std::string& text) {
    const CallExpression call = parse_call("F(" + text + ")");
    EXPECT_EQ(call.arguments.size(), 1u) << text;
    return call.arguments.at(0).value;
}

Expression literal(Literal value) { return value; }
Expression text(std::string value) { return Literal(std::move(value)); }
Expression file(std::string path) { return FileName{std::move(path)}; }

// The numbers of a form, computed for a picture of 300 by 200.
std::vector<double> numbers(const std::string& text, Form::Kind kind) {
    const auto form = std::get<Form>(argument(text));
    EXPECT_EQ(form.kind, kind) << text;
    std::vector<double> result;
    for (const Number& number : form.numbers) result.push_back(real_value(number, {300, 200}));
    return result;
}

TEST(CallExpression, AWholeCall) {
    const std::string text = "TRV_AdjustContrast(rect(100,50,300,200), &c808080, 1.6, 1.6, 1.6, 0)";
    const CallExpression call = parse_call(text);
    EXPECT_EQ(call.name, "TRV_AdjustContrast");
    ASSERT_EQ(call.arguments.size(), 6u);
    EXPECT_TRUE(std::holds_alternative<Form>(call.arguments[0].value));
    EXPECT_EQ(call.arguments[1].value, literal(Color{0x808080}));
    EXPECT_EQ(call.arguments[2].value, literal(1.6));
    EXPECT_EQ(call.arguments[5].value, literal(0));
    const std::size_t begins[] = {19, 41, 51, 56, 61, 66}, ends[] = {39, 49, 54, 59, 64, 67};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(call.arguments[i].name, "");
        EXPECT_EQ(call.arguments[i].begin, begins[i]);
        EXPECT_EQ(call.arguments[i].value_begin, begins[i]);
        EXPECT_EQ(call.arguments[i].value_end, ends[i]);
    }
}

TEST(CallExpression, BlanksAndEmptyCalls) {
    EXPECT_TRUE(parse_call("F()").arguments.empty());
    EXPECT_TRUE(parse_call(" \tF ( ) ").arguments.empty());
    EXPECT_EQ(parse_call("F(1 ,2\t, 3 )").arguments.size(), 3u);
    EXPECT_EQ(numbers(" rect ( 1 , -2 , 3 , 4 ) ", Form::Kind::rectangle), (std::vector<double>{1, -2, 3, 4}));
}

TEST(CallExpression, AnObjectMayStandInFront) {
    for (const char* text : {"p.F(1)", "  photo . F(1)"}) EXPECT_EQ(parse_call(text).name, "F") << text;
    EXPECT_EQ(parse_call("p.F(1)").name_begin, 2u);
    EXPECT_THROW(parse_call("a.b.F(1)"), ExpressionError);
    EXPECT_THROW(parse_call("p.(1)"), ExpressionError);
}

TEST(CallExpression, ArgumentsWithNames) {
    const CallExpression call = parse_call("F(1, center = &c808080, Width=width, x = \"a = b\", y=photo.png)");
    ASSERT_EQ(call.arguments.size(), 5u);
    const char* names[] = {"", "center", "Width", "x", "y"};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(call.arguments[i].name, names[i]);
    EXPECT_EQ(call.arguments[1].begin, 5u);
    EXPECT_EQ(call.arguments[1].value_begin, 14u);
    EXPECT_EQ(call.arguments[1].value, literal(Color{0x808080}));
    EXPECT_EQ(call.arguments[3].value, text("a = b"));
    EXPECT_EQ(call.arguments[4].value, file("photo.png"));
}

TEST(CallExpression, Integers) {
    EXPECT_EQ(argument("0"), literal(0));
    EXPECT_EQ(argument("-17"), literal(-17));
    EXPECT_EQ(argument("2147483647"), literal(2147483647));
    EXPECT_EQ(argument("-2147483648"), literal(kLeast));
    EXPECT_EQ(argument("&hFF"), literal(255));
    EXPECT_EQ(argument("&HfFfFfFfF"), literal(-1));
    EXPECT_EQ(argument("&b101"), literal(5));
    EXPECT_EQ(argument("&o17"), literal(15));
    EXPECT_EQ(argument("007"), literal(7));
}

TEST(CallExpression, Doubles) {
    EXPECT_EQ(argument("1.6"), literal(1.6));
    EXPECT_EQ(argument("-2."), literal(-2.0));
    EXPECT_EQ(argument(".5"), literal(0.5));
    EXPECT_EQ(argument("-.5"), literal(-0.5));
    EXPECT_EQ(argument("1e3"), literal(1000.0));
    EXPECT_EQ(argument("1E-3"), literal(0.001));
    EXPECT_EQ(argument("1e+3"), literal(1000.0));
    EXPECT_EQ(argument("1.e2"), literal(100.0));
    EXPECT_EQ(argument("1.0"), literal(1.0));
}

TEST(CallExpression, WordsOfTheLanguage) {
    EXPECT_EQ(argument("true"), literal(true));
    EXPECT_EQ(argument("False"), literal(false));
    EXPECT_EQ(argument("NIL"), literal(Nil{}));
    EXPECT_EQ(argument("&cFfA001"), literal(Color{0xFFA001}));
    EXPECT_EQ(argument("&C000000"), literal(Color{0}));
}

TEST(CallExpression, TextInQuotes) {
    EXPECT_EQ(argument("\"\""), text(""));
    EXPECT_EQ(argument("\"a, (b) &c \"\"quoted\"\"\""), text("a, (b) &c \"quoted\""));
    EXPECT_EQ(argument("\"\"\"\""), text("\""));
    EXPECT_EQ(argument("\"1.png\n\""), text("1.png\n"));
}

TEST(CallExpression, FileNames) {
    for (const char* path :
         {"photo.png", "photo", "../mask.pgm", "~/a_b-c.PNM", "/pictures/x", ".hidden", "..", "true.png", "rect.png",
          "nil2", "2010.png", "2010-05-01.jpg", "1/2.png", "-5.png", "1e3.pam", "1.5/x", "inf", "\xC3\xA4.png", "_"}) {
        EXPECT_EQ(argument(path), file(path));
    }
    EXPECT_EQ(parse_call("F(a.png,b.png)").arguments.size(), 2u);
}

TEST(CallExpression, Forms) {
    EXPECT_EQ(numbers("Matrix(1, 0.5, -1, .25, 1e1, 0, 7, 8, &h9)", Form::Kind::matrix),
              (std::vector<double>{1, 0.5, -1, 0.25, 10, 0, 7, 8, 9}));
    EXPECT_EQ(numbers("convolution(1,2,-1)", Form::Kind::convolution), (std::vector<double>{1, 2, -1}));
    EXPECT_TRUE(numbers("CONVOLUTION()", Form::Kind::convolution).empty());
    EXPECT_EQ(numbers("fit(200)", Form::Kind::fit), std::vector<double>{200});
    EXPECT_EQ(numbers("fit(width * 2, 600)", Form::Kind::fit), (std::vector<double>{600, 600}));
    EXPECT_TRUE(numbers("border()", Form::Kind::border).empty());
    EXPECT_EQ(numbers("Border(8)", Form::Kind::border), std::vector<double>{8});
    EXPECT_EQ(numbers("rect(width/4, (height-100)/2, width*0.5, 7)", Form::Kind::rectangle),
              (std::vector<double>{75, 50, 150, 7}));
}

TEST(CallExpression, NamesOfFormsAloneAreFiles) {
    for (const char* word : {"rect", "fit", "border", "matrix"}) EXPECT_EQ(argument(word), file(word));
}

TEST(CallExpression, Formulas) {
    const struct {
        const char* text;
        double value;
    } rows[] = {
        {"(5)*2", 10},         {"1+2*3", 7},           {"(1+2)*3", 9},
        {"10-4-3", 3},         {"100/10/5", 2},        {"2*-3", -6},
        {"-2*3", -6},          {"- (2 + 3) * 2", -10}, {"--5", 5},
        {"1 - -2", 3},         {"1 -2", -1},           {"-width + 1", -299},
        {"width", 300},        {"HEIGHT", 200},        {"height * 200 / width", 400.0 / 3},
        {"width/height", 1.5}, {"((((width))))", 300}, {"&hFF + 1", 256},
        {"1e2 * 1.5", 150},    {"1e-2 + 1", 1.01},     {"2147483647 * 2147483647", 2147483647.0 * 2147483647.0},
    };
    for (const auto& [text, value] : rows) {
        const Expression expression = argument(text);
        const auto* both = std::get_if<FormulaOrFile>(&expression);
        const auto* formula = both ? &both->formula : std::get_if<Formula>(&expression);
        ASSERT_TRUE(formula) << text;
        EXPECT_DOUBLE_EQ(real_value(*formula, {300, 200}), value) << text;
    }
}

TEST(CallExpression, BracketsAroundANumberLeaveTheNumber) {
    EXPECT_EQ(argument("((7))"), literal(7));
    EXPECT_EQ(argument("(1.5)"), literal(1.5));
}

TEST(CallExpression, WordsThatAreFormulasAndFiles) {
    for (const char* word : {"1/2", "width", "height-10", "2010-05", "width/2/2", "-width", "--5"}) {
        const Expression expression = argument(word);
        ASSERT_TRUE(std::holds_alternative<FormulaOrFile>(expression)) << word;
        EXPECT_EQ(std::get<FormulaOrFile>(expression).file.path, word);
    }
    EXPECT_TRUE(std::holds_alternative<Formula>(argument("width - 10")));
    EXPECT_TRUE(std::holds_alternative<Formula>(argument("1/2*3")));
    EXPECT_EQ(argument("width.png"), file("width.png"));
    EXPECT_EQ(argument("height/2.png"), file("height/2.png"));
}

// Nothing grows with the depth of brackets but memory in proportion to the text.
TEST(CallExpression, EqualTextsAreEqualExpressions) {
    const char* const texts[] = {"width",
                                 "height",
                                 "width + 1",
                                 "width + 2",
                                 "1 + width",
                                 "rect(1,2,3,4)",
                                 "rect(1,2,3,5)",
                                 "matrix(1,0,0,0,1,0,0,0,1)",
                                 "a.png",
                                 "b.png",
                                 "\"a.png\"",
                                 "fit(10)",
                                 "border(1)",
                                 "1",
                                 "1.0"};
    for (const char* one : texts)
        for (const char* other : texts)
            EXPECT_EQ(argument(one) == argument(other), std::string_view(one) == other) << one << ", " << other;
    EXPECT_EQ(Expression(Given{1}), Expression(Given{1}));
    EXPECT_NE(Expression(Given{1}), Expression(Given{2}));
    EXPECT_NE(Expression(Given{1}), literal(1));
}

TEST(CallExpression, DeepBracketsAreTaken) {
    const std::string open(200000, '('), close(200000, ')'), minus(200000, '-');
    EXPECT_EQ(argument(open + "7" + close), literal(7));
    EXPECT_EQ(integer_value(std::get<Formula>(argument(minus + "(7)")), {}), 7);
    EXPECT_THROW(argument(open + "7"), ExpressionError);
}

struct BadRow {
    const char* text;
    std::size_t column;
    const char* message;
};

#define ANY_ARGUMENT                                                                                      \
    "expected a number, a color (&cRRGGBB), true, false, nil, a file name, a text in quotes, rect(...), " \
    "matrix(...), convolution(...), fit(...) or border(...), found "

constexpr BadRow kBadRows[] = {
    {"", 1, "expected the name of an operation, found the end"},
    {"(1)", 1, "expected the name of an operation, found \"(\""},
    {"7(1)", 1, "expected the name of an operation, found \"7\""},
    {"F", 2, "expected \"(\", found the end"},
    {"F 1", 3, "expected \"(\", found \"1\""},
    {"F(", 3, ANY_ARGUMENT "the end"},
    {"F(,1)", 3, ANY_ARGUMENT "\",\""},
    {"F(1,)", 5, ANY_ARGUMENT "\")\""},
    {"F(+1)", 3, ANY_ARGUMENT "\"+\""},
    {"F(-)", 4, "expected a number, found \")\""},
    {"F(1 +)", 6, "expected a number, width, height or \"(\", found \")\""},
    {"F((1 + 2", 9, "expected an operator or \")\", found the end"},
    {"F(width +depth)", 10, "expected a number, width, height or \"(\", found \"depth\""},
    {"F(2 * &c000000)", 7, "expected a number, width, height or \"(\", found \"&\""},
    {"F(a = 1, 2)", 10, "expected a name and \"=\", as the argument before has, found \"2\""},
    {"F(a = )", 7, ANY_ARGUMENT "\")\""},
    {"F(= 1)", 3, ANY_ARGUMENT "\"=\""},
    {"p.", 3, "expected the name of an operation, found the end"},
    {"F(fit())", 7, "expected an integer, found \")\""},
    {"F(fit(1,2,3))", 10, "expected \")\" after the last number of fit(side) or fit(width, height), found \",\""},
    {"F(border(1,2))", 11, "expected \")\" after the last number of border() or border(levels), found \",\""},
    {"F(border(2.5))", 10, "expected an integer, found \"2.5\""},
    {"F(1", 4, "expected \",\" or \")\", found the end"},
    {"F(1 2)", 5, "expected \",\" or \")\", found \"2\""},
    {"F(a.png b.png)", 9, "expected \",\" or \")\", found \"b\""},
    {"F(\"a\"b)", 6, "expected \",\" or \")\", found \"b\""},
    {"F(1))", 5, "expected the end, found \")\""},
    {"F(1) G(2)", 6, "expected the end, found \"G\""},
    {"F(1)\n", 5, "expected the end, found \"\\x0A\""},
    {"F(2147483648)", 3, "\"2147483648\" does not fit an integer of 32 bits"},
    {"F(-2147483649)", 3, "\"-2147483649\" does not fit an integer of 32 bits"},
    {"F(99999999999999999999999)", 3, "\"99999999999999999999999\" does not fit an integer of 32 bits"},
    {"F(&h1FFFFFFFF)", 3, "expected an integer of 32 bits in base 16, found \"&h1FFFFFFFF\""},
    {"F(1e400)", 3, "\"1e400\" does not fit a double"},
    {"F(12abc)", 3, "expected a number, found \"12abc\""},
    {"F(1.2.3)", 3, "expected a number, found \"1.2.3\""},
    {"F(1.5e)", 3, "expected a number, found \"1.5e\""},
    {"F(&c12345)", 3, "expected six hexadecimal digits after &c, found \"&c12345\""},
    {"F(&c1234567)", 3, "expected six hexadecimal digits after &c, found \"&c1234567\""},
    {"F(&c-12345)", 3, "expected six hexadecimal digits after &c, found \"&c\""},
    {"F(&)", 3, "expected &h, &o, &b or &c with digits, found \"&\""},
    {"F(&o8)", 3, "expected an integer of 32 bits in base 8, found \"&o8\""},
    {"F(1, \"a)", 6, "expected a quote at the end of the text that begins here"},
    {"F(rect())", 8, "expected an integer, found \")\""},
    {"F(rect(1,2,3))", 13, "expected \",\" and the next number of rect(left, top, width, height), found \")\""},
    {"F(rect(1,2,3,4,5))", 15, "expected \")\" after the last number of rect(left, top, width, height), found \",\""},
    {"F(rect(1,2,3.5,4))", 12, "expected an integer, found \"3.5\""},
    {"F(rect(1,x,3,4))", 10, "expected an integer, found \"x\""},
    {"F(rect(1,2,3,true))", 14, "expected an integer, found \"true\""},
    {"F(matrix(1,2))", 13, "expected \",\" and the next number of matrix(m00, m01, m02, m10, ..., m22), found \")\""},
    {"F(matrix(1,nil))", 12, "expected a number, found \"nil\""},
    {"F(convolution(1,2.5))", 17, "expected an integer, found \"2.5\""},
    {"F(convolution(1,))", 17, "expected an integer, found \")\""},
    {"F(convolution(1 2))", 17, "expected \",\" or \")\", found \"2\""},
    {"F(square(1,2))", 3,
     "expected rect(...), matrix(...), convolution(...), fit(...) or border(...), found \"square(\""},
    {"F(\"\xC3\xA4\", *)", 8, ANY_ARGUMENT "\"*\""},
};

TEST(CallExpression, BadOnesAreRefusedWithTheirColumn) {
    for (const BadRow& row : kBadRows) {
        try {
            parse_call(row.text);
            ADD_FAILURE() << row.text << " is taken";
        } catch (const ExpressionError& error) {
            EXPECT_EQ(error.column(), row.column) << row.text;
            EXPECT_EQ(error.what(), "column " + std::to_string(row.column) + ": " + row.message);
        }
    }
}

TEST(CallExpression, MessagesAreOneShortLine) {
    const std::string long_word(10000, 'x');
    try {
        parse_call("F(1 " + long_word + "\n)");
        ADD_FAILURE() << "taken";
    } catch (const ExpressionError& error) {
        const std::string message = error.what();
        EXPECT_LT(message.size(), 200u);
        EXPECT_EQ(message.find('\n'), std::string::npos);
    }
}

// Cutting a call anywhere before its end is an error inside the text.
TEST(CallExpression, EveryBeginningIsRefused) {
    const std::string whole =
        "p.F(rect(1,2,3,4), &c102030, \"a\"\"b\", -1.5e3, matrix(1,2,3,4,5,6,7,8,9), ../a.png, (1 + width) * 2, c = "
        "fit(1, "
        "2))";
    EXPECT_EQ(parse_call(whole).arguments.size(), 8u);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        try {
            parse_call(std::string_view(whole).substr(0, length));
            ADD_FAILURE() << whole.substr(0, length) << " is taken";
        } catch (const ExpressionError& error) {
            EXPECT_GE(error.column(), 1u);
            EXPECT_LE(error.column(), length + 1);
        }
    }
}

}  // namespace
}  // namespace tarvo::language
