#include "registry.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <span>

#include "names.h"
#include "object.h"

// To plugins, a class reference is no more than an address.
struct REALclassRefStruct {
    std::string name;
};

namespace tarvo::host {
namespace {

// Returns the reference that the process has for the class. It is never destroyed, because plugins keep it and may live
// until the process ends.
REALclassRefStruct* reference_to(const std::string& name) {
    static std::mutex& one_at_a_time = *new std::mutex;
    static auto& all = *new std::vector<std::unique_ptr<REALclassRefStruct>>;
    const std::lock_guard lock(one_at_a_time);
    const auto known = std::find_if(all.begin(), all.end(), [&](const auto& it) { return same_name(it->name, name); });
    if (known != all.end()) return known->get();
    return all.emplace_back(new REALclassRefStruct{name}).get();
}

std::string text_or_empty(const char* text) { return text ? text : ""; }

// Whether a number of records, or of bytes in an instance, is plausible.
bool is_count(REALword count) {
    constexpr REALword kMost = 1 << 16;
    return count >= 0 && count <= kMost;
}

bool is_list(const void* list, REALword count) { return is_count(count) && (count == 0 || list); }

RegisteredMethod read(const REALmethodDefinition& record) {
    return {text_or_empty(record.declaration), record.function, record.setter, true, record.flags};
}

RegisteredMethod read(const REALmethodDefinitionV6& record) {
    return {text_or_empty(record.declaration), record.function, record.setter, false, 0};
}

RegisteredProperty read(const REALpropertyDefinition& record) {
    return {text_or_empty(record.group),
            text_or_empty(record.name),
            text_or_empty(record.type),
            record.flags,
            record.getter,
            record.setter,
            static_cast<std::int32_t>(record.parameter)};
}

template <class Record>
auto read_list(const void* list, REALword count) {
    std::vector<decltype(read(std::declval<const Record&>()))> all;
    for (const Record& record : std::span(static_cast<const Record*>(list), static_cast<std::size_t>(count))) {
        all.push_back(read(record));
    }
    return all;
}

bool is_plausible(const REALclassDefinition& definition) {
    return definition.name && is_count(definition.dataSize) &&
           is_list(definition.properties, definition.propertyCount) &&
           is_list(definition.methods, definition.methodCount);
}

RegisteredClass read(const REALclassDefinition& definition, Registry::MethodRecords records) {
    RegisteredClass cls;
    cls.name = definition.name;
    cls.version = definition.version;
    cls.data_size = static_cast<std::size_t>(definition.dataSize);
    cls.constructor = definition.constructor;
    cls.destructor = definition.destructor;
    cls.flags = definition.flags;
    cls.properties = read_list<REALpropertyDefinition>(definition.properties, definition.propertyCount);
    cls.methods = records == Registry::MethodRecords::with_flags
                      ? read_list<REALmethodDefinition>(definition.methods, definition.methodCount)
                      : read_list<REALmethodDefinitionV6>(definition.methods, definition.methodCount);
    return cls;
}

}  // namespace

const RegisteredClass* Registry::find_class(std::string_view name) const {
    const auto found = std::find_if(classes_.begin(), classes_.end(),
                                    [&](const RegisteredClass& cls) { return same_name(cls.name, name); });
    return found == classes_.end() ? nullptr : &*found;
}

REALclassRefStruct* Registry::class_reference(std::string_view name) const {
    const RegisteredClass* cls = find_class(name);
    return cls ? cls->reference : nullptr;
}

const RegisteredClass* Registry::class_of(const REALclassRefStruct* reference) const {
    if (!reference) return nullptr;
    const auto known = std::find_if(classes_.begin(), classes_.end(),
                                    [&](const RegisteredClass& cls) { return cls.reference == reference; });
    return known == classes_.end() ? nullptr : &*known;
}

void Registry::add_plugin_version(int version) { plugin_versions_.push_back(version); }

bool Registry::add_method(const REALmethodDefinition& definition, MethodRecords records) {
    if (!definition.function || !definition.declaration) return false;
    RegisteredMethod method = read(definition);
    if (records == MethodRecords::without_flags) {
        method.has_flags = false;
        method.flags = 0;
    }
    log_.push_back("method " + method.declaration);
    methods_.push_back(std::move(method));
    return true;
}

bool Registry::add_class(REALclassDefinition& definition, MethodRecords records) {
    if (!is_plausible(definition) || find_class(definition.name)) return false;
    classes_.push_back(read(definition, records));
    classes_.back().reference = reference_to(classes_.back().name);
    definition.dataOffset = Instance::kDataOffset;
    log_.push_back("class " + classes_.back().name);
    return true;
}

bool Registry::add_extension(REALclassDefinition& definition, MethodRecords records) {
    if (!is_plausible(definition)) return false;
    extensions_.push_back(read(definition, records));
    extensions_.back().is_extension = true;
    log_.push_back("extension " + extensions_.back().name);
    return true;
}

}  // namespace tarvo::host
