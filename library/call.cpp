// Calls, by name with values, and by text.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "argument_values.h"
#include "call_binding.h"
#include "call_expression.h"
#include "engine.h"
#include "excerpt.h"
#include "failure.h"
#include "failure_reason.h"
#include "helpers.h"
#include "names.h"
#include "options.h"
#include "picture_file.h"
#include "result.h"
#include "shown_text.h"

namespace tarvo::library {
namespace {

using host::Callable;
using host::ObjectRef;
using host::same_name;
using host::Value;

constexpr std::int32_t kUsualYield = 1 << 20;
constexpr std::string_view kMessage = "message";  // the output in which a message box comes back

tarvo_call_options call_options(const tarvo_call_options* given) {
    tarvo_call_options defaults = {};
    defaults.threads = 1;
    const tarvo_call_options options = given_options(given, defaults);
    if (options.yield_pixels < 0)
        throw wrong_use("yield_pixels is " + std::to_string(options.yield_pixels) + ", allowed is 0 and above");
    if (options.threads < 0)
        throw wrong_use("threads is " + std::to_string(options.threads) + ", allowed is 0 and above");
    return options;
}

// "TRV_Stretch", or "TRV_ColorMatrix.Invert".
std::string name_of(const Callable& method) {
    const bool member = !method.owner.empty() && !method.extends();
    return (member ? method.owner + "." : "") + method.declaration.name;
}

// One call in its host.
class Call {
public:
    explicit Call(const tarvo_call_options& options)
        : options_(options), limits_(limits_of(options.max_pixels, options.max_memory)), host_(limits_) {
        host_.stop_by(options.yield, options.context);
    }

    host::Caller& caller() { return host_.caller(); }
    host::Host& host() { return host_.host(); }

    // --- what comes in ---

    Value value_of(const tarvo_value& given) {
        switch (given.type) {
            case TARVO_NIL: return host::Nil{};
            case TARVO_INTEGER: return given.as.integer;
            case TARVO_REAL: return given.as.real;
            case TARVO_BOOLEAN: return given.as.boolean != 0;
            case TARVO_COLOR: return host::color_of(given.as.color);
            case TARVO_BYTES:
                if (given.as.bytes.length != 0) require(given.as.bytes.data, "as.bytes.data");
                return host().new_string({static_cast<const char*>(given.as.bytes.data), given.as.bytes.length});
            case TARVO_PICTURE: return given.as.picture ? picture(*given.as.picture) : Value();
            case TARVO_OBJECT: return given.as.object ? object(*given.as.object) : Value();
            case TARVO_INTEGERS: {
                const auto& [data, count] = given.as.integers;
                if (count == 0) return host().new_integer_array({});
                require(data, "as.integers.data");
                return host().new_integer_array({data, data + count});
            }
        }
        throw wrong_use("there is no type " + std::to_string(given.type) + " of a value");
    }

    Value picture(const tarvo_picture& given) { return host().new_picture(given.value); }

    // --- calls ---

    tarvo_result* run(const language::CallExpression& call, const language::Binding& binding, const Value& in_hand) {
        const Callable& method = *binding.method;
        operation_ = name_of(method);
        const Value self = method.changes_its_picture() ? copied(in_hand) : in_hand;
        auto [values, notes] =
            language::make_values(caller(), call, binding, self, [&](const std::string& path) { return read(path); });
        ask_for_yields(binding, values);
        const Value returned = invoke(method, values);
        const std::int32_t code = host_.code();
        check(method, values, returned, code);

        auto result = std::make_unique<tarvo_result>();
        result->code = code;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!method.parameters[i].by_ref) continue;
            result->outputs.emplace_back().name = method.parameters[i].name;
            keep_value(values[i], result->outputs.back().value);
        }
        finish(*result, method.changes_its_picture() ? self : returned, self);
        return result.release();
    }

    // Calls a member of a class: a property, a method, or a method that is assigned to.
    tarvo_result* run_member(std::string_view class_name, std::string_view member, const Value& self,
                             language::CallExpression call) {
        const host::RegisteredClass* cls = host().registry().find_class(class_name);
        if (!cls) throw wrong_use("there is no class " + host::quoted(class_name));
        operation_ = cls->name + "." + std::string(member);
        if (!same_name(host::type_name(self), cls->name))
            throw wrong_use(operation_ + ": self is no " + cls->name + " but " + host::type_name(self));
        for (const host::RegisteredProperty& property : cls->properties)
            if (same_name(property.name, member)) return run_property(property, self, call);

        std::vector<const Callable*> methods = caller().named(member);
        std::erase_if(methods, [&](const Callable* method) { return !same_name(method->owner, cls->name); });
        if (methods.empty()) throw wrong_use(cls->name + " has no method or property " + host::quoted(member));
        for (const Callable* method : methods)
            if (method->assignable() && call.arguments.size() == method->declaration.parameters.size() + 1)
                return run_assignment(*method, self, call);
        return run(call, language::bind_to(caller(), methods, call, call.name, cls->name), self);
    }

    // Ends the call with an error that tells the operation.
    [[noreturn]] void fail(tarvo_status status, const std::string& message, const std::string& argument = {}) const {
        Failure failure(status, operation_.empty() ? message : operation_ + ": " + message);
        failure.operation = operation_;
        failure.argument = argument;
        throw failure;
    }
    // What an operation is called in errors, before it is known which of the methods of that name is meant.
    void name_operation(const std::vector<const Callable*>& methods) {
        if (!methods.empty()) operation_ = name_of(*methods.front());
    }

private:
    // The same object is the same instance wherever it is given.
    Value object(tarvo_object& given) {
        for (const auto& [known, instance] : objects_)
            if (known == &given) return instance;
        return objects_.emplace_back(&given, instance_of(caller(), given)).second;
    }

    // Operations that change their picture work on a copy.
    Value copied(const Value& in_hand) {
        const auto* object = std::get_if<ObjectRef>(&in_hand);
        const auto* picture = object ? dynamic_cast<const host::Picture*>(object->get()) : nullptr;
        return picture ? Value(host().new_picture(host::PictureValue::of(*picture).copy())) : in_hand;
    }

    Value read(const std::string& path) {
        if (options_.read_files == 0)
            throw wrong_use("the text names a file, " + host::quoted(path) + ", and read_files is not set");
        return host::read_picture_file(host(), path, {.max_pixels = limits_.max_pixels, .on_block = host().on_yield});
    }

    // The outer call's helpers, if this one is made while it yields, are not this one's.
    Value invoke(const Callable& method, std::vector<Value>& values) {
        std::optional<Helpers> helpers;
        if (options_.threads != 1) helpers.emplace(options_.threads);
        const plugin::UsedRunner used(helpers ? &*helpers : nullptr);
        return caller().invoke(method, values);
    }

    // Lets an operation yield that the caller has not told when to.
    void ask_for_yields(const language::Binding& binding, std::vector<Value>& values) const {
        if (!options_.yield) return;
        for (std::size_t i = 0; i < values.size(); ++i)
            if (binding.fillings[i].source == language::Filling::Source::default_value &&
                same_name(binding.method->parameters[i].name, "yield"))
                values[i] = options_.yield_pixels != 0 ? options_.yield_pixels : kUsualYield;
    }

    tarvo_result* run_property(const host::RegisteredProperty& property, const Value& self,
                               const language::CallExpression& call) {
        auto result = std::make_unique<tarvo_result>();
        Value got;
        if (call.arguments.empty())
            got = caller().get(self, property.name);
        else if (call.arguments.size() == 1)
            caller().set(self, property.name, given_value(call.arguments[0]));
        else
            throw wrong_use(operation_ + ": a property takes one argument at most");
        finish(*result, got, self);
        return result.release();
    }

    tarvo_result* run_assignment(const Callable& method, const Value& self, const language::CallExpression& call) {
        std::vector<Value> values;
        for (const language::ArgumentExpression& argument : call.arguments) {
            if (!argument.name.empty()) throw wrong_use(operation_ + ": arguments of an assignment have no names");
            values.push_back(given_value(argument));
        }
        const Value assigned = std::move(values.back());
        values.pop_back();
        caller().assign(self, method.declaration.name, values, assigned);
        auto result = std::make_unique<tarvo_result>();
        finish(*result, {}, self);
        return result.release();
    }

    static Value given_value(const language::ArgumentExpression& argument) {
        return std::get<language::Given>(argument.value).value;
    }

    // --- what comes out ---

    // With a code an object is a result with a defect, and anything else is no result.
    void check(const Callable& method, const std::vector<Value>& values, const Value& returned, std::int32_t code) {
        const bool nothing = method.declaration.result && host::is_nil(returned);
        const bool object = std::holds_alternative<ObjectRef>(returned) && !nothing;
        if (object || (code == 0 && !nothing)) return;

        Failure failure(TARVO_OPERATION, "");
        std::string message = operation_ + ": ";
        message += code != 0 ? message_of_code(code) : "no result";
        failure.argument = language::failed_argument(caller(), method, values, code);
        const auto& refusal = host().refusal();
        if (refusal && nothing && failure.argument.empty()) {
            failure.status = refusal->limit() == host::Limit::memory ? TARVO_MEMORY : TARVO_LIMIT;
            message += ": " + std::string(refusal->what());
        } else if (const std::string reason = language::failure_reason(caller(), method, values, code);
                   !reason.empty()) {
            message += ": " + reason;
        }
        for (const std::string& box : host().message_boxes()) message += "; " + box;
        Failure told(failure.status, message);
        told.code = code;
        told.operation = operation_;
        told.argument = failure.argument;
        throw told;
    }

    void finish(tarvo_result& result, const Value& returned, const Value& self) {
        keep_value(returned, result.value);
        keep_objects(self);
        std::string shown;
        for (const std::string& box : host().message_boxes()) shown += (shown.empty() ? "" : "\n") + box;
        if (shown.empty()) return;
        result.outputs.emplace_back().name = kMessage;
        result.outputs.back().value.set_bytes(std::move(shown));
    }

    // Objects keep what the call has made of them. Of those that are pictures only the one that it is made on changes.
    void keep_objects(const Value& self) {
        for (const auto& [given, instance] : objects_)
            if (!given->picture || Value(instance) == self) keep(caller(), instance, *given);
    }

    void keep_value(const Value& value, KeptValue& kept) {
        struct Keep {
            Call& call;
            KeptValue& kept;
            void operator()(host::Nil) const {}
            void operator()(std::int32_t integer) const { kept.set(integer); }
            void operator()(double real) const { kept.set(real); }
            void operator()(bool boolean) const { kept.set(boolean); }
            void operator()(host::Color color) const { kept.set(color); }
            void operator()(const ObjectRef& object) const {
                if (object) call.keep_object(object, kept);
            }
        };
        std::visit(Keep{*this, kept}, value);
    }

    void keep_object(const ObjectRef& reference, KeptValue& kept) {
        const host::Object& object = *reference.get();
        if (const auto* picture = dynamic_cast<const host::Picture*>(&object)) {
            kept.set_picture(new_picture(*picture));
        } else if (const auto* text = dynamic_cast<const host::StringObject*>(&object)) {
            kept.set_bytes(std::string(text->bytes()));
        } else if (const auto* block = dynamic_cast<const host::MemoryBlock*>(&object)) {
            kept.set_bytes({reinterpret_cast<const char*>(block->bytes.data()), block->bytes.size()});
        } else if (const auto* array = dynamic_cast<const host::IntegerArray*>(&object)) {
            kept.set_integers(array->elements);
        } else if (const auto* item = dynamic_cast<const host::FolderItem*>(&object)) {
            kept.set_bytes(item->path);
        } else if (const auto* instance = dynamic_cast<const host::Instance*>(&object)) {
            keep_instance(reference, *instance, kept);
        }
    }

    void keep_instance(const ObjectRef& reference, const host::Instance& instance, KeptValue& kept) {
        for (const auto& [given, known] : objects_)
            if (known == reference) return kept.set_object(retained(given));
        if (!is_kept_as_picture(caller(), instance.cls())) {
            auto made = std::make_unique<tarvo_object>(instance.cls());
            keep(caller(), reference, *made);
            return kept.set_object(made.release());
        }
        const Value picture = caller().convert(reference, host::type_named("picture"));
        if (!host::is_nil(picture)) return keep_object(std::get<ObjectRef>(picture), kept);
        const auto& refusal = host().refusal();
        if (refusal) throw host::Refusal(*refusal);
    }

    const tarvo_call_options& options_;
    const host::Limits limits_;
    CallHost host_;
    std::string operation_;
    std::vector<std::pair<tarvo_object*, ObjectRef>> objects_;
};

// Throws Failure for methods that all need an object, without one.
void check_object(const std::vector<const Callable*>& methods, const Value& self) {
    if (methods.empty() || !host::is_nil(self)) return;
    for (const Callable* method : methods)
        if (method->extends()) {
            Failure failure = wrong_use(method->declaration.name + ": there is no " +
                                        method->parameters.front().type.name + " to call it on");
            failure.operation = method->declaration.name;
            throw failure;
        }
}

std::string type_in_hand(const Value& self) { return host::is_nil(self) ? "" : host::type_name(self); }

language::CallExpression expression_of(Call& call, const char* operation, std::span<const tarvo_argument> arguments) {
    language::CallExpression expression{operation, 0, {}};
    bool named = false;
    for (const tarvo_argument& argument : arguments) {
        language::ArgumentExpression& made = expression.arguments.emplace_back();
        if (argument.name) made.name = argument.name;
        if (argument.name && made.name.empty()) throw wrong_use("an argument's name is empty");
        if (named && made.name.empty()) throw wrong_use("an argument without a name is behind one with a name");
        named = !made.name.empty();
        made.value = language::Given{call.value_of(argument.value)};
        made.begin = made.value_begin = made.value_end = 0;
    }
    return expression;
}

// Runs the work of a call. `placed(error)` tells an error of the call's text.
template <class Work, class Placed>
tarvo_result* told_by(const Call& call, Placed placed, Work work) {
    try {
        return work();
    } catch (const language::PlacedError& error) {
        call.fail(TARVO_USE, placed(error), error.parameter());
    } catch (const host::CallError& error) {
        call.fail(TARVO_USE, error.what());
    } catch (const host::Cancelled&) {
        call.fail(TARVO_CANCELLED, "stopped by its caller");
    }
}

tarvo_result* call_by_name(const char* operation, const tarvo_value* given_self,
                           std::span<const tarvo_argument> arguments, const tarvo_call_options* given_options) {
    const tarvo_call_options options = call_options(given_options);
    Call call(options);
    const auto message = [](const language::PlacedError& error) { return std::string(error.what()); };
    return told_by(call, message, [&] {
        const Value self = given_self ? call.value_of(*given_self) : Value();
        const language::CallExpression expression = expression_of(call, operation, arguments);
        const std::string_view name = operation;
        const std::size_t dot = name.find('.');
        if (dot != std::string_view::npos)
            return call.run_member(name.substr(0, dot), name.substr(dot + 1), self, expression);
        const auto methods = language::methods_named(call.caller(), name);
        check_object(methods, self);
        call.name_operation(methods);
        const language::Binding binding =
            language::bind_call(call.caller(), expression, expression.name, type_in_hand(self));
        return call.run(expression, binding, self);
    });
}

tarvo_result* call_by_text(const std::string& text, const tarvo_picture* picture,
                           const tarvo_call_options* given_options) {
    const tarvo_call_options options = call_options(given_options);
    Call call(options);
    const auto message = [&](const language::PlacedError& error) {
        return error.what() + ("\n" + language::excerpt(text, error.position()));
    };
    return told_by(call, message, [&] {
        const language::CallExpression expression = language::parse_call(text);
        const Value in_hand = picture ? call.picture(*picture) : Value();
        const auto methods = language::methods_named(call.caller(), expression.name);
        check_object(methods, in_hand);
        call.name_operation(methods);
        const language::Binding binding = language::bind_call(call.caller(), expression, text, type_in_hand(in_hand));
        return call.run(expression, binding, in_hand);
    });
}

}  // namespace
}  // namespace tarvo::library

using namespace tarvo::library;

tarvo_status tarvo_call(const char* operation, const tarvo_value* self, const tarvo_argument* arguments, size_t count,
                        const tarvo_call_options* options, tarvo_result** result, tarvo_error** error) {
    if (result) *result = nullptr;
    return guarded(error, [&] {
        require(operation, "operation");
        require(result, "result");
        if (count != 0) require(arguments, "arguments");
        *result = call_by_name(operation, self, {arguments, count}, options);
    });
}

tarvo_status tarvo_apply(const char* text, tarvo_picture* picture, const tarvo_call_options* options,
                         tarvo_result** result, tarvo_error** error) {
    if (result) *result = nullptr;
    return guarded(error, [&] {
        require(text, "text");
        require(result, "result");
        *result = call_by_text(text, picture, options);
    });
}
