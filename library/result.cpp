#include "result.h"

#include <utility>

#include "names.h"

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

const tarvo_value* tarvo_result_output(const tarvo_result* result, const char* name) {
    if (!result || !name) return nullptr;
    for (const tarvo_result::Output& output : result->outputs)
        if (tarvo::host::same_name(output.name, name)) return &output.value.value();
    return nullptr;
}

int32_t tarvo_result_code(const tarvo_result* result) { return result ? result->code : 0; }
void tarvo_result_release(tarvo_result* result) { delete result; }
