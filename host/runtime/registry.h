#pragma once

// Everything that plugins have registered, in the order in which they did.

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
    bool has_flags = false;  // the records for hosts below 5.9 have none
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
    bool is_extension = false;  // extends a host class, such as "picture"
    REALword version = 0;
    std::size_t data_size = 0;
    void* constructor = nullptr;
    void* destructor = nullptr;
    REALword flags = 0;
    std::vector<RegisteredProperty> properties;
    std::vector<RegisteredMethod> methods;
    REALclassRefStruct* reference = nullptr;  // what plugins know the class by; null for an extension
};

// Once plugins have started, a registry only changes by their registering more. One that nobody can register with any
// more is a constant that any number of hosts, on any threads, may read.
class Registry {
public:
    // The versions of the plugin interface that plugins have declared, in order.
    const std::vector<int>& plugin_versions() const { return plugin_versions_; }
    const std::deque<RegisteredMethod>& methods() const { return methods_; }
    const std::deque<RegisteredClass>& classes() const { return classes_; }
    const std::deque<RegisteredClass>& extensions() const { return extensions_; }
    // Each registration in order: "method TRV_Add(...) as picture", "class TRV_Rectangle", "extension picture".
    const std::vector<std::string>& log() const { return log_; }

    // Returns null when there is no such class. Names are compared without regard to case, as in the language.
    const RegisteredClass* find_class(std::string_view name) const;

    // Returns what plugins know a class by; null when there is no such class. A class has the same reference in every
    // host of the process, since plugins keep it.
    REALclassRefStruct* class_reference(std::string_view name) const;
    // Returns null when the address is no class reference, or belongs to a class that is not registered here.
    const RegisteredClass* class_of(const REALclassRefStruct* reference) const;

    // Which records a class's methods are. That depends on the host's version.
    enum class MethodRecords { with_flags, without_flags };
    void add_plugin_version(int version);
    // Reads the record. Returns false if it has no function or no declaration.
    bool add_method(const REALmethodDefinition& definition, MethodRecords records);
    // Reads the record and writes its data offset. Returns false if it has no name, if its lists have impossible sizes,
    // or if its class is registered already.
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
