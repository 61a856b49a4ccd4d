#pragma once

// The stand-in host: what the REALbasic runtime is to a plugin, on today's Linux. It loads plugins, gives them every
// service by name, owns all objects that they see, and counts everything.
//
//     Host host;                                            // version 2010 unless told otherwise
//     host.load_plugin("libTarvoGraphics.so");
//     ObjectRef photo = host.new_picture({.width = 640, .height = 480});
//
// There is one host at a time, on one thread. A host outlives every ObjectRef of its objects.

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "object.h"
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

    std::vector<Record> records_;  // one for each service, by index, up to the last that was used
    bool happened_ = false;
};

struct HostOptions {
    double version = 2010.0;
    // The depth of the masks that the host makes. Tests ask for others.
    int mask_depth = 32;
    Limits limits = {};
};

class Host {
public:
    explicit Host(HostOptions options = {});
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The host that exists now; null between hosts.
    static Host* current();

    // --- plugins ---

    // Opens the library and calls its entry point. Returns false when the plugin refused this host. A library stays
    // loaded for the hosts that follow. With `private_copy` a copy of the file is loaded, in which nothing is left of
    // an earlier host, such as cached entry points and records changed for an old host. Throws HostError.
    bool load_plugin(const std::string& path, bool private_copy = false);
    // The same for an entry point that is linked into the program.
    bool start_plugin(REALpluginMain entry);
    const Registry& registry() const { return registry_; }
    double version() const { return options_.version; }
    // Versions below 5.9 read method records without their flags.
    bool reads_method_flags() const { return version() >= 5.9; }
    int mask_depth() const { return options_.mask_depth; }

    // --- objects ---

    // The longest string: its record has 31 bits for the length.
    static constexpr std::size_t kLongestString = std::numeric_limits<std::int32_t>::max();

    // Throws Refusal when such a picture cannot be made.
    ObjectRef new_picture(const PictureOptions& options, Picture::Paper paper = Picture::Paper::white);
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
    // Called before a picture of drawing commands is drawn. It may throw.
    std::function<void()> on_draw;

    // Describes, in plain words, each handle or value that was not what a service wanted. Such a call did nothing.
    const std::vector<std::string>& complaints() const { return complaints_; }
    void complain(std::string text) { complaints_.push_back(std::move(text)); }
    void clear_complaints() { complaints_.clear(); }

    Faults faults;

private:
    friend struct Services;

    HostOptions options_;
    ObjectStore objects_;
    Registry registry_;
    std::vector<std::string> message_boxes_;
    std::vector<std::string> complaints_;
    std::optional<Refusal> refusal_;
    int yields_ = 0;
    std::vector<std::unique_ptr<PluginLibrary>> plugins_;
};

}  // namespace tarvo::host
