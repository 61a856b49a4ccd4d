#pragma once

// The forms of an operation: on host pictures and on client pictures, of a region or weighted by a mask, as many as the
// plugin registers. Each is called as its declaration says.

#include <string>
#include <string_view>
#include <vector>

#include "session.h"

namespace tarvo::test {

// An operation by its name, without the WithMask of some forms; where another has that name too, a parameter tells
// which is meant.
struct OperationName {
    std::string_view name;
    std::string_view parameter = {};
};

// What is declared behind the picture and the rectangle or mask; not the budget for yields, which is a pixel in all
// calls here, nor `as_picture`.
using Numbers = std::vector<Value>;

struct Form {
    const host::Callable* method;
    bool on_clients;
    bool by_mask;             // of a region otherwise
    bool as_picture = false;  // of a result on client pictures: backed by a host picture

    bool gives_result() const { return method->declaration.result.has_value(); }
    std::string name() const;
    // `second` is the rectangle or the mask. The form takes as many of the numbers as it has parameters for.
    Value call(Session& session, const ObjectRef& p, const ObjectRef& second, const Numbers& numbers) const;
    // The same. Numbers that are passed by reference become what the operation leaves in them.
    Value call_by_ref(Session& session, const ObjectRef& p, const ObjectRef& second, Numbers& numbers) const;
};

// Each that gives a client picture is there twice, for results of both kinds of backing.
std::vector<Form> forms_of(const Session& session, const OperationName& operation);

enum class Of { region, mask };
// The form on host pictures. Throws when there is none.
Form picture_form(const Session& session, const OperationName& operation, Of of = Of::region);
Form client_form(const Session& session, const OperationName& operation, Of of = Of::region, bool as_picture = false);

}  // namespace tarvo::test
