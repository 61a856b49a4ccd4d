#include "result.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "names.h"
#include "value_text.h"

namespace tarvo::library {

KeptValue::~KeptValue() {
    if (value_.type == TARVO_PICTURE) released(value_.as.picture);
    if (value_.type == TARVO_OBJECT) released(value_.as.object);
}

void KeptValue::set(std::int32_t integer) {
    value_.type = TARVO_INTEGER;
    value_.as.integer = integer;
}

void KeptValue::set(double real) {
    value_.type = TARVO_REAL;
    value_.as.real = real;
}

void KeptValue::set(bool boolean) {
    value_.type = TARVO_BOOLEAN;
    value_.as.boolean = boolean ? 1 : 0;
}

void KeptValue::set(host::Color color) {
    value_.type = TARVO_COLOR;
    value_.as.color = color.rgb;
}

void KeptValue::set_bytes(std::string bytes) {
    bytes_ = std::move(bytes);
    value_.type = TARVO_BYTES;
    value_.as.bytes = {bytes_.data(), bytes_.size()};
}

void KeptValue::set_integers(std::vector<std::int32_t> integers) {
    integers_ = std::move(integers);
    value_.type = TARVO_INTEGERS;
    value_.as.integers = {integers_.data(), integers_.size()};
}

std::string KeptValue::text() const {
    switch (value_.type) {
        case TARVO_NIL: return language::value_text({});
        case TARVO_INTEGER: return language::value_text(value_.as.integer);
        case TARVO_REAL: return language::value_text(value_.as.real);
        case TARVO_BOOLEAN: return language::value_text(value_.as.boolean != 0);
        case TARVO_COLOR: return language::value_text(host::color_of(value_.as.color));
        case TARVO_BYTES: return language::bytes_text(class_, bytes_);
        default: return language::object_text(class_);
    }
}

void KeptValue::set_picture(tarvo_picture* picture) {
    value_.type = TARVO_PICTURE;
    value_.as.picture = picture;
}

void KeptValue::set_object(tarvo_object* object) {
    value_.type = TARVO_OBJECT;
    value_.as.object = object;
}

}  // namespace tarvo::library

const tarvo_value* tarvo_result_value(const tarvo_result* result) { return result ? &result->value.value() : nullptr; }

namespace {

// Null when there is none of that name; the operation's own without a name.
const tarvo::library::KeptValue* value_named(const tarvo_result& result, const char* name) {
    if (!name) return &result.value;
    for (const tarvo_result::Output& output : result.outputs)
        if (tarvo::host::same_name(output.name, name)) return &output.value;
    return nullptr;
}

}  // namespace

const tarvo_value* tarvo_result_output(const tarvo_result* result, const char* name) {
    if (!result || !name) return nullptr;
    const auto* const value = value_named(*result, name);
    return value ? &value->value() : nullptr;
}

const char* tarvo_result_output_name(const tarvo_result* result, size_t place) {
    return result && place < result->outputs.size() ? result->outputs[place].name.c_str() : nullptr;
}

char* tarvo_result_text(const tarvo_result* result, const char* output) {
    const auto* const value = result ? value_named(*result, output) : nullptr;
    char* copy = nullptr;
    if (value)
        tarvo::library::guarded(nullptr, [&] {
            const std::string text = value->text();
            copy = static_cast<char*>(std::malloc(text.size() + 1));
            if (copy) std::memcpy(copy, text.c_str(), text.size() + 1);
        });
    return copy;
}

const tarvo_error* tarvo_result_defect(const tarvo_result* result) { return result ? result->defect.get() : nullptr; }
const char* tarvo_result_operation(const tarvo_result* result) { return result ? result->operation.c_str() : ""; }
double tarvo_result_milliseconds(const tarvo_result* result) { return result ? result->milliseconds : 0; }
int32_t tarvo_result_code(const tarvo_result* result) { return result ? result->code : 0; }
void tarvo_result_release(tarvo_result* result) { delete result; }
