#include "engine.h"

#include <utility>

#include "bulk_memory.h"
#include "error_state.h"
#include "plugin_entry.h"

namespace tarvo::library {
namespace {

// A program has other uses for its memory than pictures to come.
constexpr std::size_t kMostIdle = std::size_t{128} << 20;

struct Plugin {
    const host::Registry registry = host::Host::registry_of(REALPluginMain);
    const host::Callables callables{registry};

    Plugin() { host::BulkMemory::keep_idle(kMostIdle); }
};

// Never destroyed: threads may call until the process ends.
const Plugin& plugin() {
    static const Plugin& only = *new Plugin;
    return only;
}

}  // namespace

const host::Registry& registry() { return plugin().registry; }

CallHost::CallHost(const host::Limits& limits)
    : host_(plugin().registry, {.limits = limits, .paper = host::Picture::Paper::unset}),
      entered_(host_),
      caller_(host_, plugin().callables),
      outer_code_(std::exchange(gTRV_Error, 0)) {}

CallHost::~CallHost() {
#ifdef TARVO_WATCHES_CALLS
    watch_end(host_);
#endif
    gTRV_Error = outer_code_;
}

std::int32_t CallHost::code() const { return gTRV_Error; }

void CallHost::stop_by(int (*yield)(void*), void* context) {
    if (!yield) return;
    host_.on_yield = [yield, context] {
        if (yield(context) != 0) throw host::Cancelled();
    };
}

const char* message_of_code(std::int32_t code) { return plugin::error_message(code); }

}  // namespace tarvo::library
