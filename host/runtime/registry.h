#pragma once

// What plugins have registered, in the order in which they did.

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "real_interface.h"

namespace tarvo::host {

struct RegisteredMethod {
    std::string declaration;
    void* function = nullptr;
    void* setter = nullptr;
    bool has_flags = false;  // false for the records of hosts below 5.9
    REALword flags = 0;
};

struct RegisteredProperty {
    std::string group, name, type;
    REALword flags = 0;
    void* getter = nullptr;
    void* setter = nullptr;
    std::int32_t parameter = 0;
};

struct RegisteredClass {
    std::string name;
    bool is_extension = false;  // of a host class, such as "picture"
    REALword version = 0;
    std::size_t data_size = 0;
    void* constructor = nullptr;
    void* destructor = nullptr;
    REALword flags = 0;
    std::vector<RegisteredProperty> properties;
    std::vector<RegisteredMethod> methods;
};

class Registry {
public:
    // Plugin interface versions declared, in order.
    const std::vector<int>& plugin_versions() const { return plugin_versions_; }
    const std::deque<RegisteredMethod>& methods() const { return methods_; }
    const std::deque<RegisteredClass>& classes() const { return classes_; }
    const std::deque<RegisteredClass>& extensions() const { return extensions_; }
    // Each registration in order: "method TRV_Add(...) as picture", "class TRV_Rectangle", "extension picture".
    const std::vector<std::string>& log() const { return log_; }

    // Null when there is no such class. Names are compared as the language does, without regard to case.
    const RegisteredClass* find_class(std::string_view name) const;

    // What plugins know a class by: null when there is no such class. A reference is the same for every host of the
    // process, since plugins keep it.
    REALclassRefStruct* class_reference(std::string_view name) const;
    // Null when the address is no class reference, or of a class that is not registered here.
    const RegisteredClass* class_of(const REALclassRefStruct* reference) const;

    // What plugins hand in. The records are read at once. Which record a class's methods are depends on the host.
    enum class MethodRecords { with_flags, without_flags };
    void add_plugin_version(int version);
    // False for a record without function or declaration.
    bool add_method(const REALmethodDefinition& definition, MethodRecords records);
    // Writes the record's data offset. False for a record that lacks its name, whose lists have impossible sizes, or
    // whose class is registered already.
    bool add_class(REALclassDefinition& definition, MethodRecords records);
    bool add_extension(REALclassDefinition& definition, MethodRecords records);

private:
    std::vector<int> plugin_versions_;
    std::deque<RegisteredMethod> methods_;
    std::deque<RegisteredClass> classes_;
    std::deque<RegisteredClass> extensions_;
    std::vector<std::string> log_;
};

}  // namespace tarvo::host
