#include "value.h"

#include "registry.h"

namespace tarvo::host {
namespace {

struct TypeName {
    std::string operator()(Nil) const { return "nil"; }
    std::string operator()(std::int32_t) const { return "integer"; }
    std::string operator()(double) const { return "double"; }
    std::string operator()(bool) const { return "boolean"; }
    std::string operator()(Color) const { return "color"; }
    std::string operator()(const ObjectRef& object) const { return object ? class_name(*object.get()) : "nil"; }
};

}  // namespace

bool is_nil(const Value& value) {
    const auto* object = std::get_if<ObjectRef>(&value);
    return std::holds_alternative<Nil>(value) || (object && !*object);
}

std::string type_name(const Value& value) { return std::visit(TypeName{}, value); }

std::string class_name(const Object& object) {
    switch (object.type()) {
        case ObjectType::picture: return "picture";
        case ObjectType::instance: return static_cast<const Instance&>(object).cls().name;
        case ObjectType::string: return "string";
        case ObjectType::memory_block: return "MemoryBlock";
        case ObjectType::integer_array: return "integer()";
        case ObjectType::folder_item: return "FolderItem";
        case ObjectType::screen: return "screen";
    }
    return {};
}

}  // namespace tarvo::host
