#include "conversion.h"

#include <limits>

#include "names.h"

namespace tarvo::host {
namespace {

bool is_of_type(const Object& object, const Type& type) {
    if (type.array) return type.kind == TypeKind::integer && object.type() == ObjectType::integer_array;
    if (type.kind == TypeKind::string) return object.type() == ObjectType::string;
    return same_name(class_name(object), type.name);
}

// Fits a value to a type of plain values: no objects, no arrays.
struct FitToPlainType {
    TypeKind kind;

    std::optional<FittedValue> operator()(Nil) const { return std::nullopt; }
    std::optional<FittedValue> operator()(const ObjectRef&) const { return std::nullopt; }
    std::optional<FittedValue> operator()(bool value) const {
        if (kind == TypeKind::boolean) return FittedValue{Fit::exact, value};
        return std::nullopt;
    }
    std::optional<FittedValue> operator()(std::int32_t value) const {
        if (kind == TypeKind::integer) return FittedValue{Fit::exact, value};
        if (kind == TypeKind::real) return FittedValue{Fit::widened, static_cast<double>(value)};
        if (kind == TypeKind::color) return FittedValue{Fit::loose, color_of(static_cast<std::uint32_t>(value))};
        return std::nullopt;
    }
    std::optional<FittedValue> operator()(double value) const {
        if (kind == TypeKind::real) return FittedValue{Fit::exact, value};
        if (kind == TypeKind::integer) return FittedValue{Fit::loose, truncated(value)};
        return std::nullopt;
    }
    std::optional<FittedValue> operator()(Color value) const {
        if (kind == TypeKind::color) return FittedValue{Fit::exact, value};
        if (kind == TypeKind::integer) return FittedValue{Fit::loose, static_cast<std::int32_t>(value.rgb)};
        return std::nullopt;
    }
};

}  // namespace

std::optional<FittedValue> fit(const Value& value, const Type& type) {
    if (!type.is_object()) return std::visit(FitToPlainType{type.kind}, value);
    if (is_nil(value)) {
        const bool text = type.kind == TypeKind::string && !type.array;
        return FittedValue{text ? Fit::loose : Fit::exact, Nil{}};
    }
    const auto* object = std::get_if<ObjectRef>(&value);
    if (object && is_of_type(*object->get(), type)) return FittedValue{Fit::exact, value};
    return std::nullopt;
}

std::int32_t truncated(double value) {
    using Int32 = std::numeric_limits<std::int32_t>;
    if (value >= static_cast<double>(Int32::max())) return Int32::max();
    if (value > static_cast<double>(Int32::min())) return static_cast<std::int32_t>(value);
    return Int32::min();
}

}  // namespace tarvo::host
