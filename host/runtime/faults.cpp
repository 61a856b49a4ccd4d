#include "host.h"
#include "services.h"

namespace tarvo::host {
namespace {

int known_index(std::string_view service) {
    const int index = service_index(service);
    if (index < 0) throw HostError("there is no service named \"" + std::string(service) + "\"");
    return index;
}

}  // namespace

Faults::Record& Faults::record(int service_index) {
    const auto index = static_cast<std::size_t>(service_index);
    if (records_.size() <= index) records_.resize(all_services().size());
    return records_[index];
}

const Faults::Record* Faults::find_record(int service_index) const {
    const auto index = static_cast<std::size_t>(service_index);
    return index < records_.size() ? &records_[index] : nullptr;
}

void Faults::fail_at(std::string_view service, int n, bool from_then_on) {
    Record& ordered = record(known_index(service));
    ordered.fails_at = n > 0 ? ordered.calls + n : kNever;
    ordered.from_then_on = from_then_on;
    happened_ = false;
}

void Faults::hide(std::string_view service) { record(known_index(service)).hidden = true; }

void Faults::clear() {
    for (Record& each : records_) each = {.calls = each.calls};
    happened_ = false;
}

int Faults::calls(std::string_view service) const {
    const Record* found = find_record(known_index(service));
    return found ? found->calls : 0;
}

bool Faults::next_call_fails(int service_index) {
    Record& called = record(service_index);
    ++called.calls;
    const bool fails = called.fails_at != kNever &&
                       (called.calls == called.fails_at || (called.from_then_on && called.calls > called.fails_at));
    happened_ = happened_ || fails;
    return fails;
}

bool Faults::hidden(std::string_view service) const {
    const Record* found = find_record(known_index(service));
    return found && found->hidden;
}

}  // namespace tarvo::host
