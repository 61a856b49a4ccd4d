#pragma once

// The stand-in host: what the REALbasic runtime is to a plugin, on today's Linux. It loads plugins, gives them every
// service by name, owns all objects that they see, and counts everything.
//
//     Host host;                                            // version 2010 unless told otherwise
//     host.load_plugin("libTarvoGraphics.so");
//     ObjectRef photo = host.new_picture({.width = 640, .height = 480});
//
// A host that loads plugins is the host of its thread for as long as it lives, and there is one such host at a time. A
// host outlives every ObjectRef of its objects.
//
// For calls on many threads, what a plugin registers is read once and is a constant from then on. Every call has a host
// of its own, which costs next to nothing; pictures live outside of hosts as PictureValues, and share their pixels:
//
//     static const Registry registry = Host::registry_of(REALPluginMain);     // of a plugin in the same image, see
//     below static const Callables callables(registry);                             // declarations, parsed (caller.h)
//
//     PictureValue contrast(const PictureValue& photo) {                      // on any thread
//         Host host(registry, {.paper = Picture::Paper::unset});
//         const Host::Entered entered(host);                                  // the host of this thread until the end
//         host.on_yield = [] { if (...) throw Cancelled(); };                 // the call below throws Cancelled, then
//         Caller caller(host, callables);
//         const Value result = caller.call_on(host.new_picture(photo), "TRV_AdjustContrast", arguments);
//         return PictureValue::of(dynamic_cast<Picture&>(*std::get<ObjectRef>(result).get()));
//     }
//
// Everything of the host's objects goes before `entered`: values of a call are declared after it. Hosts may be entered
// while others are, such as from `on_yield`; plugins keep the code of their last error for each thread, so whoever
// makes calls there keeps it for the outer one. A plugin that is to be started this way is linked into the image that
// has the host (targets tarvo_plugin_objects and tarvo_host_call, and the property TARVO_ONE_IMAGE of what links them,
// which takes the platform's objects instead of its library).

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "arithmetic_state.h"
#include "object.h"
#include "picture_value.h"
#include "real_interface.h"
#include "registry.h"
#include "resource_limits.h"

namespace tarvo::host {

// Thrown when the host cannot do what it is asked for: a plugin does not load, a picture cannot be made.
class HostError : public LimitedError {
public:
    using LimitedError::LimitedError;
};

// What no host makes, or not within its limits, or not with the memory that there is.
class Refusal : public HostError {
public:
    using HostError::HostError;
};

// Thrown by `on_yield`, it ends the operation that yields. Nothing else may catch it: the caller gets it (see Caller).
class Cancelled {};

class PluginLibrary;

// Counts of all that the host holds now.
struct Accounts {
    int pictures = 0;  // with masks
    int instances = 0;
    int strings = 0;
    int memory_blocks = 0;
    int arrays = 0;
    int folder_items = 0;
    int picture_locks = 0;  // locks of descriptions that have not ended
    int references = 0;     // those to all objects together

    friend bool operator==(const Accounts&, const Accounts&) = default;
};

// Makes services fail, or hides them, so that a plugin's answers can be tested. Names are look-up names, such as
// "newPicture". A failed service gives its neutral value (null, 0) and does nothing; a hidden one is not found by
// the resolver, which a plugin that has cached the entry point will not notice.
class Faults {
public:
    static constexpr int kNever = 0;

    // The service's n-th call from now on fails (n counts from 1), or that call and all after it. Replaces what was
    // asked of the service before; kNever takes it back. Throws HostError for a name that is no service's.
    void fail_at(std::string_view service, int n, bool from_then_on = false);
    // Hides the service. Throws HostError for a name that is no service's.
    void hide(std::string_view service);
    // Takes back everything that was asked for; counts stay.
    void clear();

    // Whether a service that was asked to fail has failed since the last fail_at.
    bool happened() const { return happened_; }
    // How often a service was called since this host began, failed calls included.
    int calls(std::string_view service) const;

    // Called by the services themselves: counts the call and returns whether it is to fail.
    bool next_call_fails(int service_index);
    bool hidden(std::string_view service) const;

private:
    struct Record {
        int calls = 0;
        int fails_at = kNever;  // the call that fails, of those counted in `calls`
        bool from_then_on = false;
        bool hidden = false;
    };
    Record& record(int service_index);
    const Record* find_record(int service_index) const;

    std::vector<Record> records_;  // one for each service, by index, once one was used
    bool happened_ = false;
};

struct HostOptions {
    double version = 2010.0;
    // The depth of the masks that the host makes. Tests ask for others.
    int mask_depth = 32;
    Limits limits = {};
    // What operations make pictures of 32 bits on, which they write all over unless a service fails (see
    // `paper_may_show`). Other pictures are white, since not every operation writes to every depth.
    Picture::Paper paper = Picture::Paper::white;
};

class Host {
public:
    // A host that loads plugins. Throws HostError when there is such a host, or the thread has any.
    explicit Host(HostOptions options = {});
    // A host in which a plugin that has started already can be called, and none registers anything. It has a platform
    // state of its own, and keeps no dead objects.
    explicit Host(const Registry& shared, HostOptions options = {});
    Host(Registry&& shared, HostOptions options = {}) = delete;
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Starts a plugin and returns what it registers. Only once for each plugin: it must not run meanwhile. Throws
    // HostError when the plugin refuses to.
    static Registry registry_of(REALpluginMain entry);

    // Makes a host, and its platform state, the calling thread's while this lives, with the usual arithmetic.
    class Entered {
    public:
        explicit Entered(Host& host);
        ~Entered();
        Entered(const Entered&) = delete;
        Entered& operator=(const Entered&) = delete;

    private:
        Host* host_before_;
        PlatformState* platform_before_;
        UsualArithmetic arithmetic_;
    };

    // The calling thread's host; null when it has none.
    static Host* current();

    // --- plugins ---

    // Opens the library and calls its entry point. Returns false when the plugin refused this host. A library stays
    // loaded for the hosts that follow. With `private_copy` a copy of the file is loaded, in which nothing is left of
    // an earlier host, such as cached entry points and records changed for an old host. Throws HostError.
    bool load_plugin(const std::string& path, bool private_copy = false);
    // The same for an entry point that is linked into the program.
    bool start_plugin(REALpluginMain entry);
    const Registry& registry() const { return *registry_; }
    double version() const { return options_.version; }
    // Versions below 5.9 read method records without their flags.
    bool reads_method_flags() const { return version() >= 5.9; }
    int mask_depth() const { return options_.mask_depth; }

    // --- objects ---

    // The longest string: its record has 31 bits for the length.
    static constexpr std::size_t kLongestString = std::numeric_limits<std::int32_t>::max();

    // Throws Refusal when such a picture cannot be made.
    ObjectRef new_picture(const PictureOptions& options, Picture::Paper paper = Picture::Paper::white);
    // A picture with the value's pixels, and a mask with its mask's. Throws Refusal when there is no such picture.
    ObjectRef new_picture(const PictureValue& value);
    // Throws Refusal, also for more bytes than kLongestString.
    ObjectRef new_string(std::string_view bytes);
    // As `new_string`, of bytes that `fill` writes where the string has them.
    ObjectRef new_string(std::size_t length, const std::function<void(std::span<std::uint8_t>)>& fill);
    ObjectRef new_integer_array(std::vector<std::int32_t> elements);
    ObjectRef new_memory_block(std::size_t size);
    ObjectRef new_folder_item(std::string path);
    ObjectRef new_screen();
    // Makes an instance of a registered class and runs its constructor; empty when there is no such class.
    ObjectRef new_instance(std::string_view class_name);
    ObjectRef new_instance(const RegisteredClass& cls);

    // Throws Refusal when the limits leave no room for so many bytes more, which `what` takes ("a string").
    void check_memory(std::uint64_t bytes, const std::string& what) const;
    // The first thing since the last call of `clear_refusal` that plugins wanted and the host could not make.
    const std::optional<Refusal>& refusal() const { return refusal_; }
    void clear_refusal() { refusal_.reset(); }
    void refuse(const Refusal& error) {
        if (!refusal_) refusal_ = error;
    }

    ObjectStore& objects() { return objects_; }
    const ObjectStore& objects() const { return objects_; }
    Accounts accounts() const;
    // Returns a line for each live object, with its type, its size or class and its references, for failed tests.
    std::string describe_live_objects() const;

    // --- what plugins show, and when they let others run ---

    const std::vector<std::string>& message_boxes() const { return message_boxes_; }
    void clear_message_boxes() { message_boxes_.clear(); }
    // Called for each message box and each yield, which are recorded too. Both may throw.
    std::function<void(const std::string&)> on_message_box;
    std::function<void()> on_yield;
    int yields() const { return yields_; }
    // Whether, since the last `watch_paper`, a service failed and a picture was made on a paper other than white: an
    // operation may have given it back as it was. `use_white_paper` is for making the call again.
    bool paper_may_show() const { return made_unpainted_ && service_failed_; }
    void watch_paper() { made_unpainted_ = service_failed_ = false; }
    void note_failed_service() { service_failed_ = true; }
    void use_white_paper() { options_.paper = Picture::Paper::white; }
    // Whether an operation was ended by Cancelled.
    bool cancelled() const { return cancelled_; }
    // Called before a picture of drawing commands is drawn. It may throw.
    std::function<void()> on_draw;

    // Describes, in plain words, each handle or value that was not what a service wanted. Such a call did nothing.
    const std::vector<std::string>& complaints() const { return complaints_; }
    void complain(std::string text) { complaints_.push_back(std::move(text)); }
    void clear_complaints() { complaints_.clear(); }

    Faults faults;

private:
    friend struct Services;
    Host(HostOptions options, const Registry* shared);

    struct StateEnd {
        void operator()(PlatformState* state) const { PlatformDisposeState(state); }
    };

    HostOptions options_;
    std::unique_ptr<PlatformState, StateEnd> platform_;  // null for the process's own
    ObjectStore objects_;
    std::unique_ptr<Registry> own_registry_;  // null in a host that shares one
    const Registry* registry_;
    bool loads_ = false;
    std::vector<std::string> message_boxes_;
    std::vector<std::string> complaints_;
    std::optional<Refusal> refusal_;
    int yields_ = 0;
    bool cancelled_ = false;
    bool made_unpainted_ = false;
    bool service_failed_ = false;
    std::vector<std::unique_ptr<PluginLibrary>> plugins_;
};

}  // namespace tarvo::host
