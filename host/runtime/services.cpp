#include "services.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <sstream>

#include "drawing.h"
#include "host.h"

namespace tarvo::host {
namespace {

// One call of a service of the host that exists now.
struct Call {
    Host& host;
    const char* service;

    void complain(const std::string& what) const { host.complain(std::string(service) + ": " + what); }

    // Returns the object of a handle; null for nil, and, with a complaint, for a handle that is no such object's.
    template <class T>
    T* find(const void* handle) const {
        Object* object = host.objects().find(handle);
        T* wanted = dynamic_cast<T*>(object);
        if (!wanted && handle) complain_of(handle, object);
        return wanted;
    }

    void complain_of(const void* handle, const Object* object) const {
        const Object* dead = object ? nullptr : host.objects().find_dead(handle);
        std::ostringstream text;
        text << handle << " is ";
        if (object) {
            text << "the handle of something else: " << name_of(object->type()) << " (" << object->describe() << ")";
        } else if (dead) {
            text << "the handle of a dead " << name_of(dead->type());
        } else {
            text << "no handle";
        }
        complain(text.str());
    }

    // Finds an object to count a reference of. Strings have their own services for that, and only they may use those.
    Object* find_counted(const void* handle, bool string) const {
        Object* object = find<Object>(handle);
        if (!object || (object->type() == ObjectType::string) == string) return object;
        complain_of(handle, object);
        return nullptr;
    }

    void add_reference(const void* handle, bool string) const {
        if (Object* object = find_counted(handle, string)) host.objects().lock(*object);
    }

    // Drops a reference that a plugin holds. It cannot drop one that it does not hold.
    void drop_reference(const void* handle, bool string) const {
        Object* object = find_counted(handle, string);
        if (!object) return;
        if (object->plugin_references() > 0) {
            host.objects().unlock(*object);
        } else {
            complain(std::string("no reference to drop of the ") + name_of(object->type()) + " (" + object->describe() +
                     ")");
        }
    }

    // Returns the handle of a new object, whose first reference is the plugin's.
    template <class Handle>
    Handle* give(std::unique_ptr<Object> object) const {
        return give<Handle>(host.objects().add(std::move(object)));
    }
    template <class Handle>
    Handle* give(ObjectRef reference) const {
        return static_cast<Handle*>(reference.hand_over());
    }
};

template <std::size_t size>
struct Name {
    char text[size]{};
    consteval Name(const char (&name)[size]) { std::copy_n(name, size, text); }
};

// The entry point that the resolver gives out for a service. It counts every call and can be made to fail. Between
// hosts it does nothing and returns the neutral value.
template <Name name, auto body>
struct Gate;

template <Name name, class Result, class... Arguments, Result (*body)(const Call&, Arguments...)>
struct Gate<name, body> {
    static Result enter(Arguments... arguments) {
        static const int index = service_index(name.text);
        Host* host = Host::current();
        if (!host) return Result();
        if (!host->faults.next_call_fails(index)) {
            try {
                return body(Call{*host, name.text}, arguments...);
            } catch (const Refusal& error) {
                host->refuse(error);
            } catch (const std::bad_alloc&) {
                host->refuse(Refusal("not enough memory", Limit::memory));
            }
        }
        host->note_failed_service();
        return Result();
    }
};

template <Name name, auto body>
Service service() {
    return {name.text, reinterpret_cast<void*>(&Gate<name, body>::enter)};
}

void check_sides(long width, long height) {
    const auto is_side = [](long length) { return length >= 1 && length <= kLongestSide; };
    if (is_side(width) && is_side(height)) return;
    throw Refusal("a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                      " pixels: a side may have 1 to " + std::to_string(kLongestSide),
                  Limit::sides);
}

bool is_picture_depth(long depth) {
    constexpr long kDepths[] = {1, 2, 4, 8, 16, 24, 32};
    return std::find(std::begin(kDepths), std::end(kDepths), depth) != std::end(kDepths);
}

// The root folder, as a volume and directory.
constexpr std::int16_t kRootVolume = -1;
constexpr std::int32_t kRootDirectory = 2;

}  // namespace

// The bodies of the services. They run only while there is a host. For wrong handles they return the neutral value.
struct Services {
    // --- strings ---

    static REALstringStruct* build_string(const Call& call, const char* text, int length) {
        if (length < 0 || (length > 0 && !text)) return nullptr;
        return call.give<REALstringStruct>(
            call.host.new_string(std::string_view(text, static_cast<std::size_t>(length))));
    }

    static const char* string_c_string(const Call& call, REALstringStruct* handle) {
        const auto* string = call.find<StringObject>(handle);
        return string ? string->bytes().data() : nullptr;
    }

    static void lock_string(const Call& call, REALstringStruct* handle) { call.add_reference(handle, true); }
    static void unlock_string(const Call& call, REALstringStruct* handle) { call.drop_reference(handle, true); }

    // --- objects ---

    static void lock_object(const Call& call, REALobjectStruct* handle) { call.add_reference(handle, false); }
    static void unlock_object(const Call& call, REALobjectStruct* handle) { call.drop_reference(handle, false); }

    static REALclassRefStruct* class_reference(const Call& call, const char* name) {
        return name ? call.host.registry().class_reference(name) : nullptr;
    }

    static REALobjectStruct* new_instance_of(const Call& call, REALclassRefStruct* reference) {
        if (const RegisteredClass* cls = call.host.registry().class_of(reference)) {
            return call.give<REALobjectStruct>(call.host.new_instance(*cls));
        }
        if (reference) call.complain_of(reference, call.host.objects().find(reference));
        return nullptr;
    }

    static REALobjectStruct* new_instance_named(const Call& call, const char* name) {
        return name ? call.give<REALobjectStruct>(call.host.new_instance(name)) : nullptr;
    }

    // --- pictures ---

    static REALpictureStruct* new_picture(const Call& call, long width, long height, long depth) {
        check_sides(width, height);
        if (!is_picture_depth(depth)) return nullptr;
        const Picture::Paper paper = depth == 32 ? call.host.options_.paper : Picture::Paper::white;
        if (paper != Picture::Paper::white) call.host.made_unpainted_ = true;
        return call.give<REALpictureStruct>(call.host.new_picture(
            {.width = static_cast<int>(width), .height = static_cast<int>(height), .depth = static_cast<int>(depth)},
            paper));
    }

    static int lock_description(const Call& call, REALpictureStruct* handle, REALpictureDescription* filled) {
        auto* picture = call.find<Picture>(handle);
        if (!picture || !filled) return 0;
        *filled = picture->description();
        ++picture->locks_;
        return 1;
    }

    static int lock_description_of_kind(const Call& call, REALpictureStruct* handle, REALpictureDescription* filled,
                                        long kind) {
        const auto* picture = call.find<Picture>(handle);
        return picture && picture->description().kind == kind ? lock_description(call, handle, filled) : 0;
    }

    static void unlock_description(const Call& call, REALpictureStruct* handle) {
        auto* picture = call.find<Picture>(handle);
        if (!picture) return;
        if (picture->locks_ > 0) {
            --picture->locks_;
        } else {
            call.complain("no lock to end of the picture (" + picture->describe() + ")");
        }
    }

    static REALpictureStruct* picture_mask(const Call& call, REALpictureStruct* handle, unsigned char create) {
        auto* picture = call.find<Picture>(handle);
        if (!picture) return nullptr;
        if (!picture->mask() && create) picture->set_mask(new_mask(call.host, *picture));
        return call.give<REALpictureStruct>(ObjectRef(picture->mask()));
    }

    static void draw(const Call& call, REALpictureStruct* handle, const Rect* where, int /*transfer_mode*/) {
        auto* picture = call.find<Picture>(handle);
        if (!picture || !where) return;
        const ObjectRef held = ObjectRef::share(picture);
        if (const auto on_draw = call.host.on_draw) on_draw();
        GWorldPtr world = nullptr;
        GetGWorld(&world, nullptr);
        draw_picture(*picture, *where, GetGWorldPixMap(world));
    }

    static REALpictureStruct* picture_from_buffer(const Call& call, long width, long height, RBPixelType type,
                                                  void* pixels, long row_bytes) {
        check_sides(width, height);
        if (type != pixelTypeXRGB32 || !pixels || row_bytes < 4 * width) return nullptr;
        ObjectRef made = call.host.new_picture({.width = static_cast<int>(width), .height = static_cast<int>(height)},
                                               Picture::Paper::unset);
        if (!made) return nullptr;  // while the host ends
        auto& picture = dynamic_cast<Picture&>(*made.get());
        const auto* source = static_cast<const std::uint8_t*>(pixels);
        for (int y = 0; y < picture.height(); ++y, source += row_bytes)
            std::memcpy(picture.row(y), source, picture.packed_row_bytes());
        return call.give<REALpictureStruct>(std::move(made));
    }

    // --- other objects ---

    static REALmemoryBlockStruct* new_memory_block(const Call& call, int size) {
        if (size < 0) return nullptr;
        return call.give<REALmemoryBlockStruct>(call.host.new_memory_block(static_cast<std::size_t>(size)));
    }

    static void* memory_block_bytes(const Call& call, REALmemoryBlockStruct* handle) {
        auto* block = call.find<MemoryBlock>(handle);
        return block ? block->bytes.data() : nullptr;
    }

    static REALobjectStruct* folder_item(const Call& call, const FSSpec* file) {
        constexpr std::size_t kLongestName = sizeof file->name - 1;
        if (!file || file->vRefNum != kRootVolume || file->parID != kRootDirectory) return nullptr;
        if (file->name[0] > kLongestName) return nullptr;
        std::string path = "/";
        path.append(reinterpret_cast<const char*>(file->name) + 1, file->name[0]);
        return call.give<REALobjectStruct>(call.host.new_folder_item(std::move(path)));
    }

    static long array_upper_bound(const Call& call, void* handle) {
        const auto* array = call.find<IntegerArray>(handle);
        return array ? static_cast<long>(array->elements.size()) - 1 : 0;
    }

    static long array_element(const Call& call, REALintArrayStruct* handle, int index) {
        const auto* array = call.find<IntegerArray>(handle);
        if (!array) return 0;
        if (index >= 0 && static_cast<std::size_t>(index) < array->elements.size()) {
            return array->elements[static_cast<std::size_t>(index)];
        }
        call.complain("no element " + std::to_string(index) + " in " + array->describe());
        return 0;
    }

    // --- messages, control and the version ---

    // The callbacks are copied before they are called, because one may set another while it runs.
    static void yield(const Call& call) {
        ++call.host.yields_;
        const auto on_yield = call.host.on_yield;
        if (!on_yield) return;
        try {
            on_yield();
        } catch (const Cancelled&) {
            call.host.cancelled_ = true;
            throw;
        }
    }

    static void message_box(const Call& call, REALstringStruct* handle) {
        const auto* string = call.find<StringObject>(handle);
        if (!string) return;
        const std::string text(string->bytes());
        call.host.message_boxes_.push_back(text);
        if (const auto on_message_box = call.host.on_message_box) on_message_box(text);
    }

    static double version(const Call& call) { return call.host.version(); }

    // --- registration ---

    // A registry that hosts share is a constant.
    static void register_version(const Call& call, int version) {
        if (Registry* const registry = call.host.own_registry_.get()) {
            registry->add_plugin_version(version);
        } else {
            call.complain("nothing can be registered in this host");
        }
    }

    static void register_method(const Call& call, const REALmethodDefinition* definition) {
        add(call, definition, &Registry::add_method);
    }

    static void register_class(const Call& call, REALclassDefinition* definition) {
        add(call, definition, &Registry::add_class);
    }

    static void register_extension(const Call& call, REALclassDefinition* definition) {
        add(call, definition, &Registry::add_extension);
    }

private:
    static ObjectRef new_mask(Host& host, const Picture& picture) {
        return host.new_picture({.width = picture.width(), .height = picture.height(), .depth = host.mask_depth()},
                                Picture::Paper::black);
    }

    static Registry::MethodRecords records(const Host& host) {
        return host.reads_method_flags() ? Registry::MethodRecords::with_flags : Registry::MethodRecords::without_flags;
    }

    template <class Definition, class Adder>
    static void add(const Call& call, Definition* definition, Adder adder) {
        Registry* const registry = call.host.own_registry_.get();
        if (!registry) {
            call.complain("nothing can be registered in this host");
        } else if (!definition || !(registry->*adder)(*definition, records(call.host))) {
            call.complain("the record is incomplete or registered already");
        }
    }
};

std::span<const Service> all_services() {
    static const Service table[] = {
        service<"REALBuildString", Services::build_string>(),
        service<"StringGetCString", Services::string_c_string>(),
        service<"REALLockString", Services::lock_string>(),
        service<"REALUnlockString", Services::unlock_string>(),
        service<"REALLockObject", Services::lock_object>(),
        service<"REALUnlockObject", Services::unlock_object>(),
        service<"lockPictureDescription", Services::lock_description>(),
        service<"REALLockPictureDescription", Services::lock_description_of_kind>(),
        service<"unlockPictureDescription", Services::unlock_description>(),
        service<"newPicture", Services::new_picture>(),
        service<"REALGetPictureMask", Services::picture_mask>(),
        service<"drawPicturePrimitive", Services::draw>(),
        service<"REALBuildPictureFromBuffer", Services::picture_from_buffer>(),
        service<"newMemoryBlock", Services::new_memory_block>(),
        service<"memoryBlockGetPtr", Services::memory_block_bytes>(),
        service<"FolderItemFromFSSpec", Services::folder_item>(),
        service<"RuntimeUBound", Services::array_upper_bound>(),
        service<"RuntimeDirectReadIntArray", Services::array_element>(),
        service<"pluginObjectType", Services::class_reference>(),
        service<"CreateInstance", Services::new_instance_of>(),
        service<"PluginNewInstance", Services::new_instance_named>(),
        service<"REALYieldToRB", Services::yield>(),
        service<"RuntimeMsgBox", Services::message_box>(),
        service<"REALGetRBVersion", Services::version>(),
        service<"RegisterPluginVersion", Services::register_version>(),
        service<"PluginRegisterMethod", Services::register_method>(),
        service<"PluginRegisterClass", Services::register_class>(),
        service<"PluginRegisterClassExtension", Services::register_extension>(),
    };
    return table;
}

int service_index(std::string_view name) {
    const std::span<const Service> services = all_services();
    const auto found =
        std::find_if(services.begin(), services.end(), [&](const Service& each) { return each.name == name; });
    return found == services.end() ? -1 : static_cast<int>(found - services.begin());
}

namespace {

void* find_service(const char* name) {
    const Host* host = Host::current();
    const int index = host && name ? service_index(name) : -1;
    if (index < 0 || host->faults.hidden(name)) return nullptr;
    return all_services()[static_cast<std::size_t>(index)].function;
}

}  // namespace

void* plugin_callback(const char* name) {
    const bool asks_for_resolver = name && std::string_view(name) == "ResolverPPC";
    return asks_for_resolver ? reinterpret_cast<void*>(&find_service) : nullptr;
}

}  // namespace tarvo::host
