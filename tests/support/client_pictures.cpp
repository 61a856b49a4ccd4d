#include "client_pictures.h"

#include <cstring>

#include "client_memory.h"
#include "client_picture_data.h"
#include "registry.h"

using namespace tarvo::plugin;

namespace tarvo::test {
namespace {

constexpr std::string_view kClass = "TRV_ClientPicture";

TRV_ClientPicture_Data& data_of(const ObjectRef& client) {
    return *static_cast<TRV_ClientPicture_Data*>(dynamic_cast<host::Instance&>(*client.get()).data());
}

// The class's destructor frees it.
std::uint8_t* random_memory(Random& random, std::size_t bytes) {
    std::uint8_t* const memory = new_client_memory(static_cast<std::int64_t>(bytes));
    for (std::size_t i = 0; i < bytes; ++i) memory[i] = static_cast<std::uint8_t>(random());
    return memory;
}

void append(std::vector<std::uint8_t>& all, const void* bytes, std::size_t count) {
    if (!bytes) return;
    const std::size_t end = all.size();
    all.resize(end + count);
    std::memcpy(all.data() + end, bytes, count);
}

std::size_t area(int row_bytes, int rows) {
    return static_cast<std::size_t>(row_bytes) * static_cast<std::size_t>(rows);
}

}  // namespace

ObjectRef client_in_own_memory(Session& session, Random& random, int width, int height, int depth, bool masked) {
    constexpr int kAlignment = 16, kSlack = 32;
    const ObjectRef client = session.host.new_instance(kClass);
    TRV_ClientPicture_Data& data = data_of(client);
    data.width = width;
    data.height = height;
    data.depth = depth;
    data.rowBytes = (width + 15) * (depth / 8) / kAlignment * kAlignment;
    data.buffer = random_memory(random, area(data.rowBytes, height) + kSlack);
    const auto misaligned = reinterpret_cast<std::uintptr_t>(data.buffer) % kAlignment;
    data.pixels = misaligned ? data.buffer + (kAlignment - misaligned) : data.buffer;
    std::memmove(data.pixels, data.buffer, area(data.rowBytes, height));  // the same pixels wherever the memory is
    if (!masked) return client;
    data.hasMask = 1;
    data.maskDepth = 8;
    data.maskRowBytes = width;
    data.maskPixels = random_memory(random, area(width, height));
    return client;
}

ObjectRef client_of_picture(Session& session, const ObjectRef& picture) {
    const ObjectRef client = session.host.new_instance(kClass);
    TRV_ClientPicture_Data& data = data_of(client);
    const Picture& shown = pixels(picture);
    data.width = shown.width();
    data.height = shown.height();
    data.depth = shown.depth();
    if (shown.mask()) {
        data.hasMask = 1;
        data.maskDepth = pixels(shown.mask()).depth();
    }
    data.pic = static_cast<REALpictureStruct*>(ObjectRef(picture).hand_over());
    return client;
}

bool is_client(const Value& value) {
    const ObjectRef object = object_in(value);
    const auto* const instance = dynamic_cast<const host::Instance*>(object.get());
    return instance && instance->cls().name == kClass;
}

bool client_has_mask(const ObjectRef& client) { return data_of(client).hasMask != 0; }

Size own_size(const ObjectRef& client) {
    const TRV_ClientPicture_Data& data = data_of(client);
    return data.pixels ? Size{data.width, data.height} : Size{};
}

int own_depth(const ObjectRef& client) {
    const TRV_ClientPicture_Data& data = data_of(client);
    return data.pixels ? data.depth : 0;
}

ObjectRef picture_behind(Session& session, const ObjectRef& client) {
    return ObjectRef::share(session.host.objects().find(data_of(client).pic));
}

int drop_refused_clients(Session& session) {
    int dropped = 0;
    for (const host::Object* each : session.host.objects().all()) {
        if (each->plugin_references() == 0) continue;
        auto& object = const_cast<host::Object&>(*each);  // the store's own are not const
        const ObjectRef held = ObjectRef::share(&object);
        if (!is_client(held) || own_depth(held) || picture_behind(session, held)) continue;
        session.host.objects().unlock(object);
        ++dropped;
    }
    return dropped;
}

std::vector<std::uint8_t> client_bytes(const ObjectRef& client) {
    const TRV_ClientPicture_Data& data = data_of(client);
    std::vector<std::uint8_t> bytes;
    append(bytes, &data, sizeof data);
    append(bytes, data.pixels, area(data.rowBytes, data.height));
    append(bytes, data.maskPixels, area(data.maskRowBytes, data.height));
    return bytes;
}

}  // namespace tarvo::test
