#include "host.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "plugin_library.h"
#include "services.h"

namespace tarvo::host {
namespace {

constinit thread_local Host* current_host = nullptr;
// Hosts that load plugins share the process's platform state.
constinit std::atomic<bool> one_loads = false;

int* count_of(Accounts& accounts, ObjectType type) {
    switch (type) {
        case ObjectType::picture: return &accounts.pictures;
        case ObjectType::instance: return &accounts.instances;
        case ObjectType::string: return &accounts.strings;
        case ObjectType::memory_block: return &accounts.memory_blocks;
        case ObjectType::integer_array: return &accounts.arrays;
        case ObjectType::folder_item: return &accounts.folder_items;
        case ObjectType::screen: return nullptr;
    }
    return nullptr;
}

}  // namespace

Host::Host(HostOptions options, const Registry* shared) : options_(options), registry_(shared) {
    if (options.mask_depth < 1 || options.mask_depth > 32) {
        throw HostError("masks of " + std::to_string(options.mask_depth) + " bits cannot be made");
    }
    if (!shared) {
        own_registry_ = std::make_unique<Registry>();
        registry_ = own_registry_.get();
    }
    objects_.on_misuse = [this](const std::string& what) { complain(what); };
}

Host::Host(HostOptions options) : Host(options, nullptr) {
    if (current_host || one_loads.exchange(true)) throw HostError("there is a host already");
    loads_ = true;
    current_host = this;
}

Host::Host(const Registry& shared, HostOptions options) : Host(options, &shared) {
    platform_.reset(PlatformNewState());
    objects_.most_dead = 0;
}

// The objects go first, while the destructors of their classes still find this host and their code.
Host::~Host() {
    {
        const Entered for_the_last_time(*this);
        objects_.clear();
        plugins_.clear();
    }
    if (!loads_) return;
    current_host = nullptr;
    one_loads = false;
}

Registry Host::registry_of(REALpluginMain entry) {
    Host reader({}, nullptr);
    const Entered entered(reader);
    if (!reader.start_plugin(entry)) throw HostError("the plugin refused this host");
    return std::move(*reader.own_registry_);
}

Host::Entered::Entered(Host& host)
    : host_before_(std::exchange(current_host, &host)), platform_before_(PlatformUseState(host.platform_.get())) {}

Host::Entered::~Entered() {
    current_host = host_before_;
    PlatformUseState(platform_before_);
}

Host* Host::current() { return current_host; }

bool Host::load_plugin(const std::string& path, bool private_copy) {
    // For an old host a plugin rewrites its class records, and no later host could read them.
    const bool alone = private_copy || !reads_method_flags();
    const auto& library = plugins_.emplace_back(std::make_unique<PluginLibrary>(path, alone));
    return start_plugin(library->entry());
}

bool Host::start_plugin(REALpluginMain entry) { return entry(plugin_callback) != 0; }

void Host::check_memory(std::uint64_t bytes, const std::string& what) const {
    const std::uint64_t taken = objects_.bytes(), most = options_.limits.max_memory;
    if (bytes <= most && taken <= most - bytes) {
        if (taken + BulkMemory::idle() > most - bytes) BulkMemory::release_idle();
        return;
    }
    throw Refusal(what + ": " + std::to_string(bytes) + " bytes, " + std::to_string(taken) +
                      " are taken already, the limit is " + std::to_string(most),
                  Limit::memory);
}

ObjectRef Host::new_picture(const PictureOptions& options, Picture::Paper paper) {
    const std::string what = "a picture of " + std::to_string(options.width) + " x " + std::to_string(options.height) +
                             " pixels, " + std::to_string(options.depth) + " bits";
    if (!Picture::is_possible(options)) throw Refusal("cannot make " + what);
    const std::uint64_t pixels =
        std::uint64_t{static_cast<unsigned>(options.width)} * static_cast<unsigned>(options.height);
    if (pixels > options_.limits.max_pixels)
        throw Refusal(what + ": the limit is " + std::to_string(options_.limits.max_pixels) + " pixels", Limit::pixels);
    check_memory(Picture::bytes_of(options), what);
    auto picture = Picture::make(options, paper);
    if (!picture) throw Refusal("not enough memory for " + what, Limit::memory);
    return objects_.add(std::move(picture));
}

ObjectRef Host::new_picture(const PictureValue& value) {
    auto picture = Picture::of(value.options, value.pixels);
    if (!picture)
        throw Refusal("no picture of " + std::to_string(value.options.width) + " x " +
                      std::to_string(value.options.height) + " pixels, " + std::to_string(value.options.depth) +
                      " bits, has " + std::to_string(value.pixels.size) + " bytes");
    if (value.mask) picture->set_mask(new_picture(*value.mask));
    return objects_.add(std::move(picture));
}

ObjectRef Host::new_string(std::string_view bytes) {
    return new_string(bytes.size(),
                      [&](std::span<std::uint8_t> room) { std::copy(bytes.begin(), bytes.end(), room.begin()); });
}

ObjectRef Host::new_string(std::size_t length, const std::function<void(std::span<std::uint8_t>)>& fill) {
    const std::string what = "a string of " + std::to_string(length) + " bytes";
    if (length > kLongestString) throw Refusal(what + " is too long");
    check_memory(length, what);
    auto string = std::make_unique<StringObject>(length);
    fill(string->room());
    return objects_.add(std::move(string));
}

ObjectRef Host::new_integer_array(std::vector<std::int32_t> elements) {
    return objects_.add(std::make_unique<IntegerArray>(std::move(elements)));
}

ObjectRef Host::new_memory_block(std::size_t size) {
    check_memory(size, "a memory block of " + std::to_string(size) + " bytes");
    return objects_.add(std::make_unique<MemoryBlock>(size));
}

ObjectRef Host::new_folder_item(std::string path) {
    return objects_.add(std::make_unique<FolderItem>(std::move(path)));
}

ObjectRef Host::new_screen() { return objects_.add(std::make_unique<Screen>()); }

ObjectRef Host::new_instance(std::string_view class_name) {
    const RegisteredClass* cls = registry_->find_class(class_name);
    return cls ? new_instance(*cls) : ObjectRef();
}

ObjectRef Host::new_instance(const RegisteredClass& cls) {
    auto made = std::make_unique<Instance>(cls, cls.data_size);
    Instance& instance = *made;
    ObjectRef reference = objects_.add(std::move(made));
    if (reference) instance.construct();
    return reference;
}

Accounts Host::accounts() const {
    Accounts accounts;
    for (const Object* object : objects_.all()) {
        if (int* count = count_of(accounts, object->type())) ++*count;
        accounts.references += object->references();
        if (const auto* picture = dynamic_cast<const Picture*>(object)) accounts.picture_locks += picture->locks();
    }
    return accounts;
}

std::string Host::describe_live_objects() const {
    std::vector<std::string> lines;
    for (const Object* object : objects_.all()) {
        lines.push_back(std::string(name_of(object->type())) + ": " + object->describe() +
                        "; references: " + std::to_string(object->references()) + "\n");
    }
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (const std::string& line : lines) text += line;
    return text;
}

}  // namespace tarvo::host
