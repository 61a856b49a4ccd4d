#include "call_frame.h"

#include <cstring>
#include <string>
#include <type_traits>

#include "caller.h"
#include "real_interface.h"

// Entry points are called by a type that is not their own, on purpose.
#if defined(__clang__)
#define CALLS_ANY_FUNCTION __attribute__((no_sanitize("function")))
#else
#define CALLS_ANY_FUNCTION
#endif

namespace tarvo::host {
namespace {

// The System V calling conventions of x86-64 and of 32-bit PowerPC pass integers and addresses in one sequence of
// registers (six and then the stack on the one, eight on the other) and doubles in another (eight on both), each in
// order. So this one prototype reaches every entry point that takes at most eight of each sort, however they are
// interleaved. An entry point does not see slots that it does not take, and finds zero in those without an argument.
using Word = REALword;

template <class Result>
CALLS_ANY_FUNCTION Result call_entry(void* entry, const std::array<Word, 8>& w, const std::array<double, 8>& d) {
    const auto function = reinterpret_cast<REALentry<Result>>(entry);
    return function(w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7], d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
}

using Bytes = std::array<std::byte, 8>;

template <class T>
Bytes stored(T value) {
    Bytes bytes{};
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

template <class T>
T loaded(const Bytes& bytes) {
    T value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

// Fills the copy of a variable whose address an entry point is given. To it a boolean is one byte.
struct StoredVariable {
    Bytes operator()(std::int32_t value) const { return stored(value); }
    Bytes operator()(double value) const { return stored(value); }
    Bytes operator()(bool value) const { return stored<std::uint8_t>(value); }
    Bytes operator()(Color value) const { return stored(value.rgb); }
    Bytes operator()(Nil) const { throw CallError("nil is no variable to pass by reference"); }
    Bytes operator()(const ObjectRef&) const { throw CallError("an object is no variable to pass by reference"); }
};

struct LoadedVariable {
    const Bytes& bytes;
    Value operator()(std::int32_t) const { return loaded<std::int32_t>(bytes); }
    Value operator()(double) const { return loaded<double>(bytes); }
    Value operator()(bool) const { return loaded<std::uint8_t>(bytes) != 0; }
    Value operator()(Color) const { return color_of(loaded<std::uint32_t>(bytes)); }
    Value operator()(Nil) const { return Nil{}; }
    Value operator()(const ObjectRef& object) const { return object; }
};

// Converts a value to the word that it is passed as. Doubles are not passed as words.
struct AsWord {
    Word operator()(Nil) const { return 0; }
    Word operator()(std::int32_t value) const { return value; }
    Word operator()(bool value) const { return value; }
    Word operator()(Color value) const { return static_cast<Word>(value.rgb); }
    Word operator()(const ObjectRef& object) const { return reinterpret_cast<Word>(object.handle()); }
    Word operator()(double) const { return 0; }
};

Value owned_object(Word word, const ObjectStore& objects) {
    if (word == 0) return Nil{};
    Object* object = objects.find(reinterpret_cast<const void*>(word));
    if (!object) throw CallError("the result is no live object");
    return ObjectRef::adopt(object);
}

template <class T, std::size_t kSlots>
void fill_next(std::array<T, kSlots>& slots, std::size_t& count, T value) {
    if (count == kSlots)
        throw CallError("more than " + std::to_string(kSlots) +
                        (std::is_same_v<T, double> ? " doubles" : " integers and objects") +
                        " are more than a method can be passed");
    slots[count++] = value;
}

}  // namespace

void CallFrame::pass(const Value& value) {
    if (const auto* real = std::get_if<double>(&value))
        fill_next(doubles_, double_count_, *real);
    else
        fill_next(words_, word_count_, std::visit(AsWord{}, value));
    held_.push_back(value);
}

void CallFrame::pass_by_ref(const Value& value, Value& variable) {
    copies_.push_back({&variable, value, std::visit(StoredVariable{}, value)});
    fill_next(words_, word_count_, reinterpret_cast<Word>(copies_.back().bytes.data()));
}

Value CallFrame::call(void* entry, const std::optional<Type>& result, const ObjectStore& objects) const {
    if (result && result->kind == TypeKind::real) return call_entry<double>(entry, words_, doubles_);
    const Word word = call_entry<Word>(entry, words_, doubles_);
    if (!result) return Nil{};
    if (result->is_object()) return owned_object(word, objects);
    if (result->kind == TypeKind::boolean) return (word & 0xFF) != 0;
    if (result->kind == TypeKind::color) return color_of(static_cast<std::uint32_t>(word));
    return static_cast<std::int32_t>(word);
}

void CallFrame::write_back() {
    for (const Copy& copy : copies_) *copy.variable = std::visit(LoadedVariable{copy.bytes}, copy.passed);
}

}  // namespace tarvo::host
