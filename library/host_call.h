#pragma once

// One call of an operation, in a host of its own.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "call_binding.h"
#include "call_expression.h"
#include "engine.h"
#include "failure.h"
#include "notes.h"
#include "result.h"

namespace tarvo::library {

// Returns the caller's options over the defaults. Throws Failure.
tarvo_call_options call_options(const tarvo_call_options* given);

class HostCall {
public:
    // The options outlive it.
    explicit HostCall(const tarvo_call_options& options);

    host::Caller& caller() { return host_.caller(); }

    host::Value value_of(const tarvo_value& given);
    // The value that the operation is called on: what its file had goes on to the result.
    host::Value self_of(const tarvo_value& given);

    tarvo_result* run(const language::CallExpression& call, const language::Binding& binding,
                      const host::Value& in_hand);
    // Calls a member of a class: a property, a method, or a method that is assigned to.
    tarvo_result* run_member(std::string_view class_name, std::string_view member, const host::Value& self,
                             const language::CallExpression& call);

    // Ends the call with an error that tells the operation.
    [[noreturn]] void fail(tarvo_status status, const std::string& message, const std::string& argument = {}) const;
    // What an operation is called in errors, before it is known which of the methods of that name is meant.
    void name_operation(const std::vector<const host::Callable*>& methods);

private:
    host::Host& host() { return host_.host(); }
    host::Value object(tarvo_object& given);
    host::Value copied(const host::Value& in_hand);
    host::Value read(const std::string& path);
    host::Value invoke(const host::Callable& method, std::vector<host::Value>& values);
    void ask_for_yields(const language::Binding& binding, std::vector<host::Value>& values) const;
    tarvo_result* run_property(const host::RegisteredProperty& property, const host::Value& self,
                               const language::CallExpression& call);
    tarvo_result* run_assignment(const host::Callable& method, const host::Value& self,
                                 const language::CallExpression& call);

    KeptError check(const host::Callable& method, const std::vector<host::Value>& values, const host::Value& returned,
                    std::int32_t code);
    void tell(const std::vector<std::string>& cautions);
    void tell_losses(const host::Value& self, const host::Value& returned);
    void finish(tarvo_result& result, const host::Value& returned, const host::Value& self);
    void keep_objects(const host::Value& self);
    void keep_value(const host::Value& value, KeptValue& kept);
    void keep_object(const host::ObjectRef& reference, KeptValue& kept);
    void keep_instance(const host::ObjectRef& reference, const host::Instance& instance, KeptValue& kept);

    const tarvo_call_options& options_;
    const Notes notes_;
    const host::Limits limits_;
    CallHost host_;
    std::string operation_;
    SharedCarried carried_;        // of what the operation is called on
    SharedCarried given_carried_;  // of the first picture that was given
    double milliseconds_ = 0;
    std::vector<std::pair<tarvo_object*, host::ObjectRef>> objects_;
};

}  // namespace tarvo::library
