#pragma once

// What plugins have registered, in the order in which they did.

#include <deque>
#include <string>
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

private:
    friend struct Services;
    std::vector<int> plugin_versions_;
    std::deque<RegisteredMethod> methods_;
    std::deque<RegisteredClass> classes_;
    std::deque<RegisteredClass> extensions_;
    std::vector<std::string> log_;
};

}  // namespace tarvo::host
