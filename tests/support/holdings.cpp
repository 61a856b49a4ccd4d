#include "holdings.h"

#include <algorithm>
#include <cctype>

#include "platform.h"

namespace tarvo::test {

void PrintTo(const Holdings& held, std::ostream* out) {
    *out << held.references << " references, " << held.picture_locks << " pictures locked, " << held.platform_locks
         << " locks of the platform's";
}

Holdings holdings_in(const Session& session) {
    Holdings held;
    for (const host::Object* each : session.host.objects().all()) held.references += each->plugin_references();
    held.picture_locks = session.host.accounts().picture_locks;
    const PlatformCounts platform = PlatformLiveObjects();
    held.platform_locks = platform.handleLocks + platform.pixelLocks;
    return held;
}

bool is_declared_crookedly(const host::Callable& method) {
    const bool has_picture = method.declaration.name.find("RGB") != std::string::npos;
    return has_picture && method.owner.empty() && !method.extends();
}

bool changes_its_object(const host::Callable& method) {
    return method.declaration.name == "TRV_AdjustRGB_InPlace" || (!method.owner.empty() && method.owner != "picture");
}

std::vector<std::string> names_of(const std::deque<host::Callable>& methods) {
    std::vector<std::string> all;
    for (const host::Callable& method : methods) {
        std::string name = method.owner + (method.owner.empty() ? "" : "_") + method.declaration.name;
        std::erase_if(name, [](char c) { return c != '_' && !std::isalnum(static_cast<unsigned char>(c)); });
        all.push_back(name + "_" + std::to_string(all.size()));
    }
    return all;
}

const std::vector<std::string>& method_names() {
    static const std::vector<std::string> names = names_of(Session().caller.callables());
    return names;
}

}  // namespace tarvo::test
