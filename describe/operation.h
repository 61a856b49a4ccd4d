#pragma once

// The shape of what is told of an operation to people and programs: what it is for, what its arguments mean and may be,
// and how it can fail. What a declaration says already (types, results, ByRef) is not told again.

#include <cstddef>
#include <initializer_list>
#include <span>
#include <stdexcept>
#include <string_view>

namespace tarvo::describe {

// In plain words, without marks.
using Text = std::string_view;

// A few elements within the object itself, so that tables of tables are constants. Too many do not compile.
template <class T, std::size_t most>
class List {
public:
    constexpr List() = default;
    constexpr List(std::initializer_list<T> elements) {
        if (elements.size() > most) throw std::length_error("the list takes no more elements");
        for (const T& each : elements) elements_[count_++] = each;
    }
    constexpr const T* begin() const { return elements_; }
    constexpr const T* end() const { return elements_ + count_; }
    constexpr std::size_t size() const { return count_; }
    constexpr bool empty() const { return count_ == 0; }

private:
    T elements_[most]{};
    std::size_t count_ = 0;
};

// Some of an operation's forms, each of which has its declaration, told by their parameters. The object in front of the
// dot is one, too: "cp" is that of client pictures.
struct Forms {
    bool any = false;
    Text with{}, without{};  // a parameter that they declare, and one that they do not; empty for any

    // `declares(name)`: whether a form declares a parameter of that name.
    template <class Declares>
    constexpr bool have(Declares declares) const {
        return any && (with.empty() || declares(with)) && (without.empty() || !declares(without));
    }
};
inline constexpr Forms kNoForm{};
inline constexpr Forms kEveryForm{true};
constexpr Forms forms_with(Text parameter, Text without = {}) { return {true, parameter, without}; }
constexpr Forms forms_without(Text parameter) { return {true, {}, parameter}; }

struct Bound {
    enum class Kind { none, inclusive, exclusive } kind = Kind::none;
    double value = 0;
    Text times{};  // an integer argument by which the value is multiplied; empty for the value as it is

    constexpr bool given() const { return kind != Kind::none; }
    constexpr bool exclusive() const { return kind == Kind::exclusive; }
};
constexpr Bound including(double value) { return {Bound::Kind::inclusive, value}; }
constexpr Bound excluding(double value, Text times = {}) { return {Bound::Kind::exclusive, value, times}; }

struct Argument {
    Text name{};
    Text text{};
    Text unit{};
    Bound minimum{}, maximum{};
    Text left_out{};  // the literal that stands for the argument where it may be left out
};

// What comes back with an error's code.
enum class Gives {
    nothing,  // nil, false or 0; ByRef arguments stay as they were, if their text says nothing else
    result,   // a picture, in spite of the code
};

struct Error {
    int code = 0;     // 0: a failure without a code
    Text when{};      // empty: when `argument` is out of its range
    Text argument{};  // the one whose range gives this code, in the forms that declare it
    Gives gives = Gives::nothing;
    Forms forms = kEveryForm;
};

// What of an argument is counted.
enum class Part {
    value,
    red,  // of a colour
    green,
    blue,
    count,  // of an array's elements
    sum,    // of them, wrapped to 32 bits
};

// A number of a call: a part of an argument, times `scale`, its fraction cut off, and plus `offset`.
struct Quantity {
    Text argument{};
    Part part = Part::value;
    double scale = 1, offset = 0;
};

// A product of numbers lies within its bounds, or outside of them, and is a multiple of a number.
struct Condition {
    List<Quantity, 2> product{};
    Bound minimum{}, maximum{};
    bool outside = false;
    int multiple_of = 1;
};

// Whoever calls with such values is told: they are right, and what comes of them is easily taken for a bug.
struct Caution {
    Text argument{};  // the one to be told of
    Text text{};
    List<Condition, 2> when{};  // all of them hold
};

// For `tarvo apply INPUT 'CALL'`, from the top of the source tree. No input: the call makes a picture out of nothing.
struct Example {
    Text input{};
    Text call{};  // empty for no example
};

struct Operation {
    Text name{};  // as registered
    Text summary{};
    List<Text, 12> words{};          // by which people look for it, in small letters
    List<Argument, 10> arguments{};  // of all forms together, in an order that agrees with each of them
    Forms yields = kNoForm;          // those that give the host control when they are told to
    Forms keeps_mask = kNoForm;      // those in whose result the object's mask is seen
    Forms changes_self = kNoForm;    // those that change the object itself
    bool scales = false;             // the result is all of the picture, `width` by `height` pixels
    List<Error, 14> errors{};        // in the order of the checks
    List<Text, 7> notes{};
    std::span<const Caution> cautions{};  // of several for one argument, the first that holds counts
    Example example{};
};

struct Family {
    Text name;
    Text title;
    std::span<const Operation> operations;
};

struct Property {
    Text name{};
    Text text{};
};

struct Class {
    Text name{};
    Text summary{};
    List<Text, 8> words{};
    List<Property, 8> properties{};
    std::span<const Operation> methods{};
    List<Text, 7> notes{};
};

// The name by which programs other than the host's know a code.
struct ErrorName {
    int code;
    Text name;
};

}  // namespace tarvo::describe
