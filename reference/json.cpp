#include "json.h"

#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "wording.h"

namespace tarvo::reference {
namespace {

using Json = nlohmann::ordered_json;  // members stay in the order in which they are written here
using describe::Bound;
using describe::Text;

template <class Texts>
Json texts(const Texts& all) {
    Json list = Json::array();
    for (const auto& each : all) list.push_back(each);
    return list;
}

Json text_or_null(Text text) { return text.empty() ? Json(nullptr) : Json(text); }

// Whole numbers without a fraction, whatever the argument's type.
Json number(double value) { return value == std::trunc(value) ? Json(static_cast<std::int64_t>(value)) : Json(value); }

Json bound(const Bound& bound) {
    if (!bound.given()) return nullptr;
    if (bound.times.empty()) return number(bound.value);
    return {{"factor", number(bound.value)}, {"argument", bound.times}};
}

Json argument(const Operation& operation, const Argument& argument) {
    const describe::Argument& about = *argument.about;
    const Error* const error = operation.range_error(argument);
    const std::string range = range_text(about);
    return {{"name", about.name},
            {"type", argument.type},
            {"unit", text_or_null(about.unit)},
            {"minimum", bound(about.minimum)},
            {"exclusiveMinimum", about.minimum.exclusive()},
            {"maximum", bound(about.maximum)},
            {"exclusiveMaximum", about.maximum.exclusive()},
            {"range", text_or_null(range)},
            {"code", error ? Json(error->about->code) : Json(nullptr)},
            {"default", text_or_null(about.left_out)},
            {"required", argument.required()},
            {"by_ref", argument.by_ref},
            {"text", about.text},
            {"forms", argument.forms}};
}

Json error(const Error& error) {
    return {{"code", error.about->code},
            {"when", error.when},
            {"argument", text_or_null(error.about->argument)},
            {"result", error.about->gives == describe::Gives::nothing ? "nil" : "picture"},
            {"forms", error.forms}};
}

// What is told of a form, and, by its first form, of the operation.
void tell(Json& json, const Form& form) {
    json["self"] = form.self;
    json["result"] = form.result;
    json["yields"] = form.yields;
    json["keeps_mask"] = form.keeps_mask;
    json["changes_self"] = form.changes_self;
}

Json form_json(const Form& form) {
    Json json = {{"declaration", form.declaration()}, {"assignable", form.callable->assignable()}};
    tell(json, form);
    return json;
}

Json operation(const Operation& operation) {
    const describe::Operation& about = *operation.about;
    Json json = {{"name", about.name},
                 {"family", text_or_null(operation.family)},
                 {"summary", about.summary},
                 {"words", texts(about.words)}};
    tell(json, operation.forms.front());
    Json &declarations = json["declarations"] = Json::array(), &forms = json["forms"] = Json::array();
    for (const Form& each : operation.forms) {
        declarations.push_back(each.declaration());
        forms.push_back(form_json(each));
    }
    Json& arguments = json["arguments"] = Json::array();
    for (const Argument& each : operation.arguments) arguments.push_back(argument(operation, each));
    Json& errors = json["errors"] = Json::array();
    for (const Error& each : operation.errors) errors.push_back(error(each));
    json["notes"] = texts(about.notes);
    json["example"] = about.example.call.empty()
                          ? Json(nullptr)
                          : Json{{"input", text_or_null(about.example.input)}, {"call", about.example.call}};
    return json;
}

Json class_json(const Class& cls) {
    Json json = {{"name", cls.about->name}, {"summary", cls.about->summary}, {"words", texts(cls.about->words)}};
    Json& properties = json["properties"] = Json::array();
    for (const Property& each : cls.properties)
        properties.push_back({{"name", each.about->name},
                              {"type", each.type},
                              {"read_only", each.read_only},
                              {"text", each.about->text}});
    Json& methods = json["methods"] = Json::array();
    for (const Operation& each : cls.methods) methods.push_back(operation(each));
    json["notes"] = texts(cls.about->notes);
    return json;
}

}  // namespace

std::string description_json(const Reference& reference) {
    Json json = {{"version", TARVO_VERSION}};
    Json& operations = json["operations"] = Json::array();
    for (const Operation& each : reference.operations()) operations.push_back(operation(each));
    Json& classes = json["classes"] = Json::array();
    for (const Class& each : reference.classes()) classes.push_back(class_json(each));
    Json& errors = json["errors"] = Json::array();
    for (const Code& each : reference.codes())
        errors.push_back({{"code", each.code}, {"name", each.name}, {"text", each.text}});
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace tarvo::reference
