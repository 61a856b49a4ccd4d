#pragma once

// The rows of the registration tables. A row pairs a function with the declaration by which programs call it. A row
// whose function and declaration do not fit each other does not compile. The host calls every function through a
// Boundary, which no exception passes.

#include <cstddef>
#include <iterator>
#include <tuple>
#include <type_traits>

#include "real_interface.h"

namespace tarvo::plugin::registration {

// --- signatures: what a declaration and a function have in common ----------------------------------------------------

// A letter for the result, then one for each argument: v nothing, i integer or color, d double, b boolean, s string,
// p picture, m memory block, o any other object, a integer array, I and D references to an integer and a double.
struct Signature {
    static constexpr std::size_t kMost = 12;
    char letters[kMost] = {};
    std::size_t count = 0;

    constexpr void add(char letter) { letters[count++] = letter; }  // does not compile past the end
    friend constexpr bool operator==(const Signature& a, const Signature& b) {
        if (a.count != b.count) return false;
        for (std::size_t i = 0; i < a.count; ++i)
            if (a.letters[i] != b.letters[i]) return false;
        return true;
    }
};

template <class T>
inline constexpr char kLetter = '\0';
template <>
inline constexpr char kLetter<void> = 'v';
template <>
inline constexpr char kLetter<int> = 'i';
template <>
inline constexpr char kLetter<double> = 'd';
template <>
inline constexpr char kLetter<bool> = 'b';
template <>
inline constexpr char kLetter<REALstringStruct*> = 's';
template <>
inline constexpr char kLetter<REALpictureStruct*> = 'p';
template <>
inline constexpr char kLetter<REALmemoryBlockStruct*> = 'm';
template <>
inline constexpr char kLetter<REALobjectStruct*> = 'o';
template <>
inline constexpr char kLetter<REALintArrayStruct*> = 'a';
template <>
inline constexpr char kLetter<int*> = 'I';
template <>
inline constexpr char kLetter<double*> = 'D';

template <class Result, class... Arguments>
consteval Signature signature_of(Result (*)(Arguments...)) {
    Signature signature;
    signature.add(kLetter<Result>);
    (signature.add(kLetter<Arguments>), ...);
    for (std::size_t i = 0; i < signature.count; ++i)
        if (!signature.letters[i]) throw "a type that no declaration can name";
    return signature;
}

class DeclarationReader {
public:
    consteval explicit DeclarationReader(const char* text) : at_(text) {}

    // `self` is the letter of the object that a member is called on; 'v' when there is none.
    consteval Signature read(char self) {
        Signature arguments;
        if (self != 'v') arguments.add(self);
        identifier();
        if (*at_++ != '(') throw "an opening bracket is missing";
        skip_blanks();
        while (*at_ != ')') {
            arguments.add(parameter());
            if (*at_ == ',') ++at_;
            skip_blanks();
        }
        ++at_;
        Signature whole;
        whole.add(keyword("as") ? type() : 'v');
        if (*at_) throw "there is more text behind the declaration";
        for (std::size_t i = 0; i < arguments.count; ++i) whole.add(arguments.letters[i]);
        return whole;
    }

private:
    struct Identifier {
        const char* start;
        std::size_t length;
        consteval bool is(const char* other) const {
            std::size_t i = 0;
            for (; i < length && other[i]; ++i)
                if (lower(start[i]) != lower(other[i])) return false;
            return i == length && !other[i];
        }
    };

    static consteval char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
    static consteval bool in_identifier(char c) {
        return (lower(c) >= 'a' && lower(c) <= 'z') || (c >= '0' && c <= '9') || c == '_';
    }
    consteval void skip_blanks() {
        while (*at_ == ' ') ++at_;
    }
    consteval Identifier identifier() {
        skip_blanks();
        Identifier result = {at_, 0};
        while (in_identifier(*at_)) ++at_, ++result.length;
        if (!result.length) throw "a name is missing";
        skip_blanks();
        return result;
    }
    consteval bool keyword(const char* wanted) {
        skip_blanks();
        if (!in_identifier(*at_)) return false;
        const char* const before = at_;
        if (identifier().is(wanted)) return true;
        at_ = before;
        return false;
    }
    consteval char type() {
        const Identifier name = identifier();
        if (name.is("integer") || name.is("color")) return 'i';
        if (name.is("double")) return 'd';
        if (name.is("boolean")) return 'b';
        if (name.is("string")) return 's';
        if (name.is("picture")) return 'p';
        if (name.is("MemoryBlock")) return 'm';
        return 'o';
    }
    consteval char parameter() {
        keyword("extends");
        const bool by_ref = keyword("ByRef");
        identifier();
        bool array = false;
        if (*at_ == '(') {
            if (*++at_ != ')') throw "an array's brackets are empty";
            ++at_;
            array = true;
        }
        if (!keyword("as")) throw "a parameter has no type";
        const char letter = type();
        if (*at_ == '=') {
            ++at_;
            identifier();
        }
        if (array) return letter == 'i' ? 'a' : throw "only integers come in arrays";
        if (by_ref) return letter == 'i' ? 'I' : letter == 'd' ? 'D' : throw "only numbers are passed by reference";
        return letter;
    }

    const char* at_;
};

// The signature of a getter's setter, which takes the getter's arguments and then the value.
consteval Signature setter_of(const Signature& getter) {
    Signature setter;
    setter.add('v');
    for (std::size_t i = 1; i < getter.count; ++i) setter.add(getter.letters[i]);
    setter.add(getter.letters[0]);
    return setter;
}

// The class that a method is a member of: none, one of the plugin's, or the host's picture class.
enum class Owner { none, plugin_class, picture };

consteval char self_letter(Owner owner) {
    return owner == Owner::plugin_class ? 'o' : owner == Owner::picture ? 'p' : 'v';
}

// Returns a declaration that fits the function. Any other does not compile.
template <auto Function, Owner owner>
consteval const char* fitting(const char* declaration) {
    if (!(DeclarationReader(declaration).read(self_letter(owner)) == signature_of(Function)))
        throw "the declaration does not fit the function";
    return declaration;
}

consteval Signature declared_as_picture(Signature signature) {
    if (signature.letters[0] != 'o') throw "the function gives no client picture";
    signature.letters[0] = 'p';
    return signature;
}

// Returns a declaration that fits except for its result, which it calls a picture where the function returns a client
// picture.
template <auto Function>
consteval const char* fitting_but_for_result(const char* declaration) {
    if (!(DeclarationReader(declaration).read(self_letter(Owner::none)) == declared_as_picture(signature_of(Function))))
        throw "the declaration does not fit the function";
    return declaration;
}

// Returns the declaration of an assignable method: the getter fits it, and the setter fits the getter.
template <auto Getter, auto Setter, Owner owner>
consteval const char* fitting_both(const char* declaration) {
    if (!(setter_of(signature_of(Getter)) == signature_of(Setter))) throw "the setter does not fit the getter";
    return fitting<Getter, owner>(declaration);
}

// --- the boundary ----------------------------------------------------------------------------------------------------

template <auto Function>
struct Boundary;

// Calls a function for the host. What is thrown on the way ends here, as nil, 0 or nothing: host services may throw,
// though nothing of the plugin's own does.
template <class Result, class... Arguments, Result (*Function)(Arguments...)>
struct Boundary<Function> {
    static Result call(Arguments... arguments) noexcept {
        try {
            return Function(arguments...);
        } catch (...) {
            return Result();
        }
    }
};

#ifdef __wasm__
// The same with the one type that entry points have there.
template <auto Function>
struct Entry;

template <class Result, class... Arguments, Result (*Function)(Arguments...)>
struct Entry<Function> {
    using Returned = std::conditional_t<std::is_same_v<Result, double>, double, REALword>;

    static Returned call(REALword w0, REALword w1, REALword w2, REALword w3, REALword w4, REALword w5, REALword w6,
                         REALword w7, double d0, double d1, double d2, double d3, double d4, double d5, double d6,
                         double d7) noexcept {
        const REALword words[] = {w0, w1, w2, w3, w4, w5, w6, w7};
        const double doubles[] = {d0, d1, d2, d3, d4, d5, d6, d7};
        const REALword* word = words;
        const double* real = doubles;
        const auto next = [&]<class T>(std::type_identity<T>) {
            if constexpr (std::is_same_v<T, double>)
                return *real++;
            else if constexpr (std::is_pointer_v<T>)
                return reinterpret_cast<T>(*word++);
            else
                return static_cast<T>(*word++);
        };
        const std::tuple<Arguments...> arguments{next(std::type_identity<Arguments>())...};  // from left to right
        if constexpr (std::is_void_v<Result>)
            return std::apply(Boundary<Function>::call, arguments), 0;
        else if constexpr (std::is_pointer_v<Result>)
            return reinterpret_cast<REALword>(std::apply(Boundary<Function>::call, arguments));
        else
            return std::apply(Boundary<Function>::call, arguments);
    }
};
#else
template <auto Function>
using Entry = Boundary<Function>;
#endif

}  // namespace tarvo::plugin::registration

// The address that the host calls. This and the rows below are macros because only an initialiser that is written out
// in place is sure to be constant, and the tables are complete before any code of the library runs.
#define TRV_ENTRY(function) reinterpret_cast<void*>(&registration::Entry<&function>::call)
// The same of a constructor or destructor, about whose argument no declaration has to tell.
#define TRV_LIFE_ENTRY(function) reinterpret_cast<void*>(&registration::Boundary<&function>::call)

// The row of a global method.
#define TRV_METHOD(function, declaration) \
    { TRV_ENTRY(function), nullptr, registration::fitting<&function, registration::Owner::none>(declaration), 0 }

// The row of a global method that returns a client picture and is declared to return a picture, which programs then use
// it as.
#define TRV_METHOD_DECLARED_AS_PICTURE(function, declaration) \
    { TRV_ENTRY(function), nullptr, registration::fitting_but_for_result<&function>(declaration), 0 }

// The row of a member of one of the plugin's classes. The instance is the function's first argument.
#define TRV_MEMBER(function, declaration, flags)                                                    \
    {                                                                                               \
        TRV_ENTRY(function), nullptr,                                                               \
            registration::fitting<&function, registration::Owner::plugin_class>(declaration), flags \
    }

// The row of a member that can also be assigned to.
#define TRV_ASSIGNABLE_MEMBER(getter, setter, declaration, flags)                                               \
    {                                                                                                           \
        TRV_ENTRY(getter), TRV_ENTRY(setter),                                                                   \
            registration::fitting_both<&getter, &setter, registration::Owner::plugin_class>(declaration), flags \
    }

// The row of a method of the host's picture class. The picture is the function's first argument.
#define TRV_PICTURE_MEMBER(function, declaration) \
    { TRV_ENTRY(function), nullptr, registration::fitting<&function, registration::Owner::picture>(declaration), 0 }

// The row of a property, with the functions `getter(instance, parameter)` and `setter(instance, parameter, value)`.
#define TRV_PROPERTY(group, name, type, flags, getter, setter, parameter) \
    { group, name, type, flags, TRV_ENTRY(getter), TRV_ENTRY(setter), parameter, nullptr, 0, nullptr }
#define TRV_READ_ONLY_PROPERTY(group, name, type, flags, getter, parameter) \
    { group, name, type, flags, TRV_ENTRY(getter), nullptr, parameter, nullptr, 0, nullptr }

// The row of a method whose declaration does not fit its function, on purpose.
#define TRV_MISMATCHED_METHOD(function, declaration) \
    { TRV_ENTRY(function), nullptr, declaration, 0 }
