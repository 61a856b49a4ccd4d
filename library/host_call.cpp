#include "host_call.h"

#include <chrono>
#include <optional>

#include "argument_values.h"
#include "failure_reason.h"
#include "helpers.h"
#include "names.h"
#include "options.h"
#include "picture_files.h"
#include "shown_text.h"

namespace tarvo::library {
namespace {

using host::Callable;
using host::ObjectRef;
using host::same_name;
using host::Value;

constexpr std::int32_t kUsualYield = 1 << 20;
constexpr std::string_view kMessage = "message";  // the output in which a message box comes back

// "TRV_Stretch", or "TRV_ColorMatrix.Invert".
std::string name_of(const Callable& method) {
    const bool member = !method.owner.empty() && !method.extends();
    return (member ? method.owner + "." : "") + method.declaration.name;
}

const host::Picture* as_picture(const Value& value) {
    const auto* object = std::get_if<ObjectRef>(&value);
    return object ? dynamic_cast<const host::Picture*>(object->get()) : nullptr;
}

const Value& given_value(const language::ArgumentExpression& argument) {
    return std::get<language::Given>(argument.value).value;
}

}  // namespace

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

HostCall::HostCall(const tarvo_call_options& options)
    : options_(options), notes_(options), limits_(limits_of(options.max_pixels, options.max_memory)), host_(limits_) {
    host_.stop_by(options.yield, options.context);
    if (notes_.wanted())
        host().on_message_box = [this](const std::string& text) { notes_.tell(TARVO_NOTE_MESSAGE, text); };
}

void HostCall::fail(tarvo_status status, const std::string& message, const std::string& argument) const {
    Failure failure(status, operation_.empty() ? message : operation_ + ": " + message);
    failure.operation = operation_;
    failure.argument = argument;
    throw failure;
}

void HostCall::name_operation(const std::vector<const Callable*>& methods) {
    if (!methods.empty()) operation_ = name_of(*methods.front());
}

// --- what comes in ---------------------------------------------------------------------------------------------------

Value HostCall::value_of(const tarvo_value& given) {
    switch (given.type) {
        case TARVO_NIL: return host::Nil{};
        case TARVO_INTEGER: return given.as.integer;
        case TARVO_REAL: return given.as.real;
        case TARVO_BOOLEAN: return given.as.boolean != 0;
        case TARVO_COLOR: return host::color_of(given.as.color);
        case TARVO_BYTES:
            if (given.as.bytes.length != 0) require(given.as.bytes.data, "as.bytes.data");
            return host().new_string({static_cast<const char*>(given.as.bytes.data), given.as.bytes.length});
        case TARVO_PICTURE:
            if (!given.as.picture) return {};
            if (!given_carried_) given_carried_ = given.as.picture->carried;
            return host().new_picture(given.as.picture->value);
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

Value HostCall::self_of(const tarvo_value& given) {
    Value self = value_of(given);
    if (given.type == TARVO_PICTURE && given.as.picture) carried_ = given.as.picture->carried;
    if (given.type == TARVO_OBJECT && given.as.object) carried_ = given.as.object->carried;
    return self;
}

// The same object is the same instance wherever it is given.
Value HostCall::object(tarvo_object& given) {
    for (const auto& [known, instance] : objects_)
        if (known == &given) return instance;
    return objects_.emplace_back(&given, instance_of(caller(), given)).second;
}

// Operations that change their picture work on a copy.
Value HostCall::copied(const Value& in_hand) {
    const host::Picture* const picture = as_picture(in_hand);
    return picture ? Value(host().new_picture(host::PictureValue::of(*picture).copy())) : in_hand;
}

Value HostCall::read(const std::string& path) {
    if (options_.read_files == 0)
        throw wrong_use("the text names a file, " + host::quoted(path) + ", and read_files is not set");
    return read_picture(host_, path, {.max_pixels = limits_.max_pixels, .on_block = host().on_yield}, notes_).picture;
}

// Lets an operation yield that the caller has not told when to.
void HostCall::ask_for_yields(const language::Binding& binding, std::vector<Value>& values) const {
    if (!options_.yield) return;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (binding.fillings[i].source == language::Filling::Source::default_value &&
            same_name(binding.method->parameters[i].name, "yield"))
            values[i] = options_.yield_pixels != 0 ? options_.yield_pixels : kUsualYield;
}

// --- calls -----------------------------------------------------------------------------------------------------------

// The outer call's helpers, if this one is made while it yields, are not this one's.
Value HostCall::invoke(const Callable& method, std::vector<Value>& values) {
    std::optional<Helpers> helpers;
    if (options_.threads != 1) helpers.emplace(options_.threads);
    const plugin::UsedRunner used(helpers ? &*helpers : nullptr);
    const auto begin = std::chrono::steady_clock::now();
    Value returned = caller().invoke(method, values);
    milliseconds_ = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    return returned;
}

tarvo_result* HostCall::run(const language::CallExpression& call, const language::Binding& binding,
                            const Value& in_hand) {
    const Callable& method = *binding.method;
    operation_ = name_of(method);
    const Value self = method.changes_its_picture() ? copied(in_hand) : in_hand;
    auto [values, cautions] =
        language::make_values(caller(), call, binding, self, [&](const std::string& path) { return read(path); });
    ask_for_yields(binding, values);
    host().clear_refusal();
    const Value returned = invoke(method, values);
    const std::int32_t code = host_.code();
    tell(cautions);

    auto result = std::make_unique<tarvo_result>();
    result->code = code;
    result->defect = check(method, values, returned, code);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!method.parameters[i].by_ref) continue;
        result->outputs.emplace_back().name = method.parameters[i].name;
        keep_value(values[i], result->outputs.back().value);
    }
    tell_losses(self, returned);
    finish(*result, method.changes_its_picture() ? self : returned, self);
    return result.release();
}

tarvo_result* HostCall::run_member(std::string_view class_name, std::string_view member, const Value& self,
                                   const language::CallExpression& call) {
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

tarvo_result* HostCall::run_property(const host::RegisteredProperty& property, const Value& self,
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

tarvo_result* HostCall::run_assignment(const Callable& method, const Value& self,
                                       const language::CallExpression& call) {
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

// --- what comes out --------------------------------------------------------------------------------------------------

// With a code an object is a result with a defect, which is returned, and anything else is no result. Throws Failure.
KeptError HostCall::check(const Callable& method, const std::vector<Value>& values, const Value& returned,
                          std::int32_t code) {
    const bool nothing = method.declaration.result && host::is_nil(returned);
    if (code == 0 && !nothing) return nullptr;

    const std::string argument = language::failed_argument(caller(), method, values, code);
    const std::string reason = language::failure_reason(caller(), method, values, code);
    const std::optional<host::Refusal>& refusal = host().refusal();
    const bool no_room = refusal && nothing && argument.empty();
    std::string message = operation_ + ": " + (code != 0 ? message_of_code(code) : "no result");
    if (no_room)
        message += ": " + std::string(refusal->what());
    else if (!reason.empty())
        message += ": " + reason;
    for (const std::string& box : host().message_boxes()) message += "; " + box;

    Failure failure(TARVO_OPERATION, message);
    failure.code = code;
    failure.operation = operation_;
    failure.argument = argument;
    failure.reason = reason;
    if (refusal) {
        failure.refusal = refusal->what();
        failure.limit = limit_of(*refusal);
        if (no_room) failure.status = failure.limit == TARVO_MAX_MEMORY ? TARVO_MEMORY : TARVO_LIMIT;
    }
    if (nothing || !std::holds_alternative<ObjectRef>(returned)) throw failure;
    return error_of(failure);
}

void HostCall::tell(const std::vector<std::string>& cautions) {
    for (const std::string& caution : cautions) notes_.tell(TARVO_NOTE_CAUTION, operation_ + ": " + caution);
    notes_.tell_complaints(host(), operation_);
}

void HostCall::tell_losses(const Value& self, const Value& returned) {
    const host::Picture *const from = as_picture(self), *const to = as_picture(returned);
    if (!notes_.wanted() || !from || !to) return;
    if (from->mask() && !to->mask()) notes_.tell(TARVO_NOTE_MASK, operation_ + ": the result has no mask");
    if (from->depth() > 16 && to->depth() == 16)
        notes_.tell(TARVO_NOTE_COLORS, operation_ + ": the result has 5 bits a channel");
}

void HostCall::finish(tarvo_result& result, const Value& returned, const Value& self) {
    result.operation = operation_;
    result.milliseconds = milliseconds_;
    keep_value(returned, result.value);
    keep_objects(self);
    std::string shown;
    for (const std::string& box : host().message_boxes()) shown += (shown.empty() ? "" : "\n") + box;
    if (shown.empty()) return;
    result.outputs.emplace_back().name = kMessage;
    result.outputs.back().value.set_bytes(std::move(shown));
}

// Objects keep what the call has made of them. Of those that are pictures only the one that it is made on changes.
void HostCall::keep_objects(const Value& self) {
    for (const auto& [given, instance] : objects_) {
        const bool changed = Value(instance) == self;
        if (!given->picture || changed) keep(caller(), instance, *given);
        if (changed) given->carried = carried_ ? carried_ : given_carried_;
    }
}

void HostCall::keep_value(const Value& value, KeptValue& kept) {
    struct Keep {
        HostCall& call;
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

void HostCall::keep_object(const ObjectRef& reference, KeptValue& kept) {
    const host::Object& object = *reference.get();
    kept.set_class(host::class_name(object));
    if (const auto* picture = dynamic_cast<const host::Picture*>(&object)) {
        kept.set_picture(new_picture(*picture, carried_));
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

void HostCall::keep_instance(const ObjectRef& reference, const host::Instance& instance, KeptValue& kept) {
    for (const auto& [given, known] : objects_)
        if (known == reference) return kept.set_object(retained(given));
    const bool is_picture = is_kept_as_picture(caller(), instance.cls());
    if (!is_picture || options_.client_pictures != 0) {
        auto made = std::make_unique<tarvo_object>(instance.cls());
        keep(caller(), reference, *made);
        if (is_picture) made->carried = carried_;
        return kept.set_object(made.release());
    }
    const Value picture = caller().convert(reference, host::type_named("picture"));
    if (!host::is_nil(picture)) return keep_object(std::get<ObjectRef>(picture), kept);
    const auto& refusal = host().refusal();
    if (refusal) throw host::Refusal(*refusal);
}

}  // namespace tarvo::library
