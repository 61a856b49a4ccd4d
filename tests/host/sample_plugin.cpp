// A small plugin that counts in its declarations how often this copy of it was started, and keeps one class whose
// instances it counts.

#include <string>

#include "platform.h"
#include "real_interface.h"

namespace {

int starts = 0;
int instances = 0;
std::string declaration;
REALresolver resolver = nullptr;

template <class Function>
Function* service(const char* name) {
    return reinterpret_cast<Function*>(resolver(name));
}

int count_instances() { return instances; }
void construct(REALobjectStruct*) { ++instances; }

// Uses a service, so that an instance that dies after its host would be noticed.
void destruct(REALobjectStruct*) {
    --instances;
    service<void()>("REALYieldToRB")();
}

REALclassDefinition sample_class;

}  // namespace

extern "C" __attribute__((visibility("default"))) int REALPluginMain(REALresolver callback) {
    resolver = reinterpret_cast<REALresolver>(callback("ResolverPPC"));
    service<void(int)>("RegisterPluginVersion")(kREALinterfaceVersion);
    if (service<double()>("REALGetRBVersion")() < 2005) return 0;

    declaration = "Starts" + std::to_string(++starts) + "() as integer";
    REALmethodDefinition method{reinterpret_cast<void*>(&count_instances), nullptr, declaration.c_str(), 0};
    service<void(REALmethodDefinition*)>("PluginRegisterMethod")(&method);

    sample_class.version = kREALinterfaceVersion;
    sample_class.name = "Sample";
    sample_class.constructor = reinterpret_cast<void*>(&construct);
    sample_class.destructor = reinterpret_cast<void*>(&destruct);
    service<void(REALclassDefinition*)>("PluginRegisterClass")(&sample_class);
    return 1;
}
