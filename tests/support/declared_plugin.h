#pragma once

// A plugin that registers what a test declares. Its entry points give nil, false or 0.

#include <cstdint>
#include <vector>

#include "host.h"
#include "real_interface.h"

namespace tarvo::test {

struct DeclaredClass {
    const char* name;
    std::vector<const char*> methods;
};

struct Declared {
    std::vector<const char*> methods;
    std::vector<DeclaredClass> classes = {};
};

namespace detail {

inline std::intptr_t give_nothing() { return 0; }

inline std::vector<REALmethodDefinition> records_of(const std::vector<const char*>& declarations) {
    std::vector<REALmethodDefinition> records;
    for (const char* each : declarations) records.push_back({reinterpret_cast<void*>(&give_nothing), nullptr, each, 0});
    return records;
}

inline const Declared* starting = nullptr;

inline int start_declared(REALresolver callback) {
    const auto resolver = reinterpret_cast<REALresolver>(callback("ResolverPPC"));
    const auto add_method = reinterpret_cast<void (*)(REALmethodDefinition*)>(resolver("PluginRegisterMethod"));
    const auto add_class = reinterpret_cast<void (*)(REALclassDefinition*)>(resolver("PluginRegisterClass"));
    for (REALmethodDefinition& record : records_of(starting->methods)) add_method(&record);
    for (const DeclaredClass& each : starting->classes) {
        const std::vector<REALmethodDefinition> methods = records_of(each.methods);
        REALclassDefinition record;
        record.version = kREALinterfaceVersion;
        record.name = each.name;
        record.methods = methods.data();
        record.methodCount = static_cast<int>(methods.size());
        add_class(&record);
    }
    return 1;
}

}  // namespace detail

inline void start_plugin(host::Host& host, const Declared& declared) {
    detail::starting = &declared;
    host.start_plugin(detail::start_declared);
}

}  // namespace tarvo::test
