// Operations, their arguments and their pictures, all from the input: nothing may be written beyond a picture, no lock
// may stay behind, and no call may take for ever.

#include <algorithm>
#include <memory>
#include <vector>

#include "caller.h"
#include "fuzz_check.h"
#include "host.h"
#include "names.h"
#include "plugin_entry.h"

namespace tarvo::fuzz {
namespace {

using host::ObjectRef;
using host::Value;

// The input as numbers; zeros when it is used up.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    std::uint8_t byte() {
        if (left_ == 0) return 0;
        --left_;
        return *data_++;
    }
    template <class Number>
    Number number() {
        Number made{};
        const std::size_t count = std::min(left_, sizeof made);
        std::copy_n(data_, count, reinterpret_cast<std::uint8_t*>(&made));
        data_ += count;
        left_ -= count;
        return made;
    }
    int below(int bound) { return byte() % bound; }
    void fill(std::uint8_t* out, std::size_t count) {
        std::generate_n(out, count, [&] { return byte(); });
    }

private:
    const std::uint8_t* data_;
    std::size_t left_;
};

// A host with the plugin linked in. Results are small: the picture is not what is tried.
struct Stage {
    host::Host host{{.limits = {.max_pixels = 1 << 14}}};
    host::Caller caller{started(host)};
    int inputs = 0;

private:
    static host::Host& started(host::Host& host) {
        FUZZ_CHECK(host.start_plugin(REALPluginMain));
        return host;
    }
};

// What required behaviour leaves behind goes with its host.
Stage& stage() {
    static std::unique_ptr<Stage> current;
    if (!current || ++current->inputs > 2000) {
        current.reset();
        current = std::make_unique<Stage>();
    }
    return *current;
}

class Arguments {
public:
    Arguments(Stage& on, Input& input) : stage_(on), input_(input) {}

    Value make(const host::Type& type) {
        if (type.array) return stage_.host.new_integer_array(integers());
        switch (type.kind) {
            case host::TypeKind::integer: return integer();
            case host::TypeKind::real: return real();
            case host::TypeKind::boolean: return input_.below(2) == 1;
            case host::TypeKind::color: return host::color_of(input_.number<std::uint32_t>());
            case host::TypeKind::string: return string();
            case host::TypeKind::object: return object(type.name);
        }
        return {};
    }

private:
    // Small, or one of those that are one too many; of these one a call, whose product with others fits memory.
    std::int32_t integer() {
        constexpr std::int32_t kEdges[] = {INT32_MIN, INT32_MAX, 32767, 32768, -32768, 65536, 1 << 24, 255, 256, 257};
        const int kind = input_.below(8);
        const auto small = static_cast<std::int8_t>(input_.byte());
        if (kind != 7 || edge_used_) return small;
        edge_used_ = true;
        return kEdges[static_cast<std::uint8_t>(small) % std::size(kEdges)];
    }

    double real() {
        return input_.below(2) == 0 ? input_.number<double>() : static_cast<std::int8_t>(input_.byte()) / 8.0;
    }

    std::vector<std::int32_t> integers() {
        std::vector<std::int32_t> made(static_cast<std::size_t>(input_.below(20)));
        for (std::int32_t& each : made) each = integer();
        return made;
    }

    ObjectRef string() {
        const auto length = static_cast<std::size_t>(input_.below(64));
        return stage_.host.new_string(length, [&](std::span<std::uint8_t> room) { input_.fill(room.data(), length); });
    }

    ObjectRef object(const std::string& name) {
        const int kind = input_.below(16);
        if (kind == 0) return {};
        if (kind > 1 && host::same_name(name, "picture")) return picture(true);
        if (host::same_name(name, "MemoryBlock"))
            return stage_.host.new_memory_block(static_cast<std::size_t>(input_.below(64)));
        if (host::same_name(name, "screen")) return stage_.host.new_screen();
        if (kind == 1) return picture(true);  // of whatever class the declaration wants
        return stage_.host.new_instance(name);
    }

    ObjectRef picture(bool may_have_mask) {
        constexpr int kDepths[] = {1, 2, 4, 8, 16, 24, 32, 32};
        constexpr host::Backing kBackings[] = {host::Backing::graphics_world, host::Backing::bitmap_context,
                                               host::Backing::pixel_buffer, host::Backing::drawing_commands};
        host::PictureOptions options{.width = 1 + input_.below(24), .height = 1 + input_.below(24)};
        options.depth = kDepths[input_.below(8)];
        options.backing = kBackings[input_.below(4)];
        if (options.backing == host::Backing::pixel_buffer) options.depth = 32;
        ObjectRef made = stage_.host.new_picture(options);
        auto& shown = dynamic_cast<host::Picture&>(*made.get());
        for (int y = 0; y < shown.height() && shown.row(0); ++y) input_.fill(shown.row(y), shown.packed_row_bytes());
        if (may_have_mask && input_.below(2) == 1) shown.set_mask(picture(false));
        return made;
    }

    Stage& stage_;
    Input& input_;
    bool edge_used_ = false;
};

void make_call(Input& input) {
    Stage& on = stage();
    const auto& callables = on.caller.callables();
    const std::size_t chosen = input.number<std::uint16_t>() % callables.size();
    const host::Callable& callable = callables[chosen];
    Arguments arguments(on, input);
    std::vector<Value> values;
    if (!callable.owner.empty()) values.push_back(arguments.make(host::type_named(callable.owner)));
    for (std::size_t i = values.size(); i < callable.parameters.size(); ++i)
        values.push_back(arguments.make(callable.parameters[i].type));
    try {
        on.caller.invoke(callable, values);
    } catch (const host::CallError&) {
    }
    values.clear();
    FUZZ_CHECK(on.host.accounts().picture_locks == 0);
    on.host.clear_complaints();
    on.host.clear_message_boxes();
}

}  // namespace
}  // namespace tarvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tarvo::fuzz::Input input(data, size);
    tarvo::fuzz::make_call(input);
    return 0;
}
