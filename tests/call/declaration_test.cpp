#include "declaration.h"

#include <gtest/gtest.h>

#include "shape.h"

namespace tarvo::host {
namespace {

std::string parsed(std::string_view text) { return shape_of(parse_declaration(text)); }

TEST(Declaration, BlanksAreFree) {
    EXPECT_EQ(parsed("F()"), "F");
    EXPECT_EQ(parsed("  F\t( ) "), "F");
    EXPECT_EQ(parsed("F(a as integer,b as double)as color"), "F a:<integer> b:<double> -> <color>");
    EXPECT_EQ(parsed(" F ( a( ) as integer , ByRef  b as double , c as double=1 )as  color "),
              "F a[]:<integer> &b:<double> c:<double>=1.00000 -> <color>");
}

TEST(Declaration, KeywordsAndBuiltInTypesHaveAnyCase) {
    EXPECT_EQ(parsed("f(EXTENDS p AS Picture, BYREF n As INTEGER, x as Double) as STRING"),
              "f ^p:Picture &n:<integer> x:<double> -> <string>");
    EXPECT_EQ(parse_declaration("F() as BooLean").result->name, "BooLean");
}

TEST(Declaration, KeywordsArePartsOfNames) {
    EXPECT_EQ(parsed("as_picture(extendsp as picture, byref_ as integer, nil2 as asset)"),
              "as_picture extendsp:picture byref_:<integer> nil2:asset");
}

TEST(Declaration, ExtendsIsKnown) {
    EXPECT_TRUE(parse_declaration("F(extends p as picture)").extends());
    EXPECT_FALSE(parse_declaration("F(p as picture)").extends());
    EXPECT_FALSE(parse_declaration("F()").extends());
}

TEST(Declaration, Arrays) {
    EXPECT_EQ(parsed("F(a() as integer, b( ) as string)"), "F a[]:<integer> b[]:<string>");
    const Type type = parse_declaration("F(a() as integer)").parameters[0].type;
    EXPECT_TRUE(type.is_object());
    EXPECT_EQ(to_string(type), "integer()");
}

TEST(Declaration, DefaultsOfEveryType) {
    EXPECT_EQ(parsed("F(i as integer = -5, h as integer = &hFF, d as double = 2, e as double = -.5e1)"),
              "F i:<integer>=-5 h:<integer>=255 d:<double>=2.00000 e:<double>=-5.00000");
    EXPECT_EQ(parsed("F(b as boolean = TRUE, c as color = &c0aFf10, s as string = \"a \"\"b\"\"\")"),
              "F b:<boolean>=true c:<color>=&c0AFF10 s:<string>=\"a \"b\"\"");
    EXPECT_EQ(parsed("F(p as picture = Nil, a() as integer = nil)"), "F p:picture=nil a[]:<integer>=nil");
}

TEST(Declaration, OnlyTheBuiltInNamesAreBuiltIn) {
    EXPECT_EQ(type_named("Integer").kind, TypeKind::integer);
    EXPECT_EQ(type_named("doublE").kind, TypeKind::real);
    EXPECT_EQ(type_named("integers").kind, TypeKind::object);
    EXPECT_EQ(type_named("picture").kind, TypeKind::object);
    EXPECT_FALSE(type_named("color").is_object());
    EXPECT_TRUE(type_named("string").is_object());
}

struct BadRow {
    const char* text;
    std::size_t column;
    const char* message;
};

constexpr BadRow kBadRows[] = {
    {"", 1, "expected a method's name, found the end"},
    {"   ", 4, "expected a method's name, found the end"},
    {"2D()", 1, "expected a method's name, found \"2D\""},
    {"as()", 1, "expected a method's name, found \"as\""},
    {"F", 2, "expected \"(\", found the end"},
    {"F as integer", 3, "expected \"(\", found \"as\""},
    {"F(", 3, "expected a parameter's name, found the end"},
    {"F(,)", 3, "expected a parameter's name, found \",\""},
    {"F(a as integer,)", 16, "expected a parameter's name, found \")\""},
    {"F(a)", 4, "expected \"as\" and a type, found \")\""},
    {"F(a integer)", 5, "expected \"as\" and a type, found \"integer\""},
    {"F(a as)", 7, "expected a type, found \")\""},
    {"F(a as 3)", 8, "expected a type, found \"3\""},
    {"F(a as ByRef)", 8, "expected a type, found \"ByRef\""},
    {"F(a as integer", 15, "expected \",\" or \")\", found the end"},
    {"F(a as integer b as integer)", 16, "expected \",\" or \")\", found \"b\""},
    {"F(a( as integer)", 6, "expected \")\" of an array, found \"as\""},
    {"F(a as integer())", 15, "expected \",\" or \")\", found \"(\""},
    {"F(a as integer, extends p as picture)", 17, "only the first parameter may be one that the method \"extends\""},
    {"F(extends ByRef p as integer)", 11, "expected a parameter's name, found \"ByRef\""},
    {"F(ByRef extends p as integer)", 9, "expected a parameter's name, found \"extends\""},
    {"F(ByRef p as picture)", 14, "a ByRef parameter is an integer, double, boolean or color, not \"picture\""},
    {"F(ByRef a() as integer)", 16, "a ByRef parameter is an integer, double, boolean or color, not \"integer()\""},
    {"F(ByRef a as integer = 1)", 22, "a ByRef or extends parameter has no default value"},
    {"F(extends a as integer = 1)", 24, "a ByRef or extends parameter has no default value"},
    {"F(a as integer, A as double)", 17, "a second parameter named \"A\""},
    {"F(a as integer = 1, b as integer)", 33,
     "expected \"=\" and a default value, as the parameter before has one, found \")\""},
    {"F(a as integer = true)", 18, "expected a default value of type integer, found \"true\""},
    {"F(a as integer = 1.5)", 18, "expected a default value of type integer, found \"1.5\""},
    {"F(a as boolean = 0)", 18, "expected a default value of type boolean, found \"0\""},
    {"F(a as color = 255)", 16, "expected a default value of type color, found \"255\""},
    {"F(a as picture = 1)", 18, "expected a default value of type picture, found \"1\""},
    {"F(a() as integer = 1)", 20, "expected a default value of type integer(), found \"1\""},
    {"F(a as string = nil)", 17, "expected a default value of type string, found \"nil\""},
    {"F(a as integer = )", 18, "expected a default value of type integer, found \")\""},
    {"F(a as integer = 2147483648)", 18, "\"2147483648\" does not fit an integer of 32 bits"},
    {"F(a as double = 1e999)", 17, "\"1e999\" does not fit a double"},
    {"F(a as double = 1.2.3)", 17, "expected a number, found \"1.2.3\""},
    {"F(a as integer = 12abc)", 18, "expected a number, found \"12abc\""},
    {"F(a as color = &c12345)", 16, "expected six hexadecimal digits after &c, found \"&c12345\""},
    {"F(a as color = &c12345G)", 16, "expected six hexadecimal digits after &c, found \"&c12345G\""},
    {"F(a as integer = &h)", 18, "expected an integer of 32 bits in base 16, found \"&h\""},
    {"F(a as integer = &b102)", 18, "expected an integer of 32 bits in base 2, found \"&b102\""},
    {"F(a as integer = &h100000000)", 18, "expected an integer of 32 bits in base 16, found \"&h100000000\""},
    {"F(a as integer = &x1)", 18, "expected &h, &o, &b or &c with digits, found \"&x1\""},
    {"F(a as string = \"a)", 17, "expected a quote at the end of the text that begins here"},
    {"F() integer", 5, "expected \"as\" and a type, or the end, found \"integer\""},
    {"F() as", 7, "expected a type, found the end"},
    {"F() as integer()", 15, "expected the end, found \"(\""},
    {"F() as picture picture", 16, "expected the end, found \"picture\""},
    {"F();", 4, "expected \"as\" and a type, or the end, found \";\""},
    {"F(\x01)", 3, "expected a parameter's name, found \"\\x01\""},
    {"F(\xC3\xA4 as integer)", 3, "expected a parameter's name, found \"\xC3\xA4\""},
    {"F(a as string = \"\xC3\xA4\", b)", 23, "expected \"as\" and a type, found \")\""},
};

TEST(Declaration, BadOnesAreRefusedWithTheirColumn) {
    for (const BadRow& row : kBadRows) {
        try {
            ADD_FAILURE() << row.text << " parsed as " << parsed(row.text);
        } catch (const DeclarationError& error) {
            EXPECT_EQ(error.column(), row.column) << row.text;
            EXPECT_EQ(error.what(), "column " + std::to_string(row.column) + ": " + row.message +
                                        ", in the declaration \"" + row.text + '"');
        }
    }
}

// Cutting a declaration anywhere gives another declaration or an error, never anything else.
TEST(Declaration, EveryBeginningIsParsedOrRefused) {
    const std::string text =
        "F(extends p as picture, ByRef a as integer, b() as integer, s as string = \"x\"\"y\") as color";
    int whole = 0;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        try {
            parse_declaration(std::string_view(text).substr(0, length));
            ++whole;
        } catch (const DeclarationError& error) {
            EXPECT_LE(error.column(), length + 1);
        }
    }
    EXPECT_EQ(whole, 7);  // behind ")" with and without a blank, then "as c", "as co", ... "as color"
}

}  // namespace
}  // namespace tarvo::host
