#pragma once

// Passes arguments to an entry point of a plugin, about whose C++ signature only the declaration tells.

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "declaration.h"
#include "value.h"

namespace tarvo::host {

// The arguments of one call, in the order in which they are passed. Each is held with a reference until the frame goes.
class CallFrame {
public:
    // Puts an integer, color, boolean, object or nil into the next integer slot, a double into the next slot for
    // doubles. Throws CallError when there are more of one sort than slots.
    void pass(const Value& value);
    // Passes the address of a copy of the value: an integer, double, boolean or color. The variable must live until
    // `write_back`, which puts into it what the entry point left in the copy.
    void pass_by_ref(const Value& value, Value& variable);

    // Calls the entry point and takes over the reference that comes with an object. A returned handle must be a live
    // object's, of whatever class. Throws CallError.
    Value call(void* entry, const std::optional<Type>& result, const ObjectStore& objects) const;
    void write_back();

private:
    static constexpr std::size_t kSlots = 8;

    // A copy of a variable, with room for whatever width of integer the entry point writes.
    struct Copy {
        Value* variable;
        Value passed;
        alignas(double) std::array<std::byte, 8> bytes;
    };

    std::array<std::intptr_t, kSlots> words_{};
    std::array<double, kSlots> doubles_{};
    std::size_t word_count_ = 0;
    std::size_t double_count_ = 0;
    std::deque<Copy> copies_;  // a deque, so that their addresses stay
    std::vector<Value> held_;
};

}  // namespace tarvo::host
