#include "snapshot.h"

#include <algorithm>

#include "client_pictures.h"
#include "registry.h"

namespace tarvo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <class Range>
Bytes copied(const Range& range) {
    const auto* const first = reinterpret_cast<const std::uint8_t*>(range.data());
    return Bytes(first, first + range.size() * sizeof(*range.data()));
}

bool is_black(const ObjectRef& mask) {
    return std::ranges::all_of(all_bytes(mask), [](std::uint8_t byte) { return byte == 0; });
}

// The picture that the object is or is backed by; null for other objects.
const Picture* shown_picture(Session& session, const ObjectRef& object) {
    return dynamic_cast<const Picture*>(is_client(object) ? picture_behind(session, object).get() : object.get());
}

Bytes picture_bytes(const Picture& picture, bool with_mask) {
    Bytes bytes;
    if (picture.row(0)) {
        const std::size_t count = picture.packed_row_bytes() + static_cast<std::size_t>(picture.options().row_padding);
        for (int y = 0; y < picture.height(); ++y) bytes.insert(bytes.end(), picture.row(y), picture.row(y) + count);
    }
    if (with_mask && picture.mask()) {
        const Bytes mask = picture_bytes(pixels(picture.mask()), false);
        bytes.insert(bytes.end(), mask.begin(), mask.end());
    }
    return bytes;
}

Bytes own_bytes(const ObjectRef& object) {
    if (is_client(object)) return client_bytes(object);
    if (auto* const instance = dynamic_cast<host::Instance*>(object.get()))
        return copied(std::span(static_cast<const std::uint8_t*>(instance->data()), instance->cls().data_size));
    if (const auto* const string = dynamic_cast<const host::StringObject*>(object.get()))
        return copied(string->bytes());
    if (const auto* const block = dynamic_cast<const host::MemoryBlock*>(object.get())) return copied(block->bytes);
    if (const auto* const array = dynamic_cast<const host::IntegerArray*>(object.get())) return copied(array->elements);
    return {};
}

}  // namespace

Snapshot::Snapshot(Session& session, const Value& value) : session_(session), object_(object_in(value)) {
    if (!object_) return;
    const Picture* const picture = shown_picture(session_, object_);
    had_mask_ = picture && picture->mask();
    bytes_ = bytes_now();
}

Bytes Snapshot::bytes_now() const {
    Bytes bytes = own_bytes(object_);
    if (const Picture* const picture = shown_picture(session_, object_)) {
        const Bytes stored = picture_bytes(*picture, had_mask_);
        bytes.insert(bytes.end(), stored.begin(), stored.end());
    }
    return bytes;
}

bool Snapshot::unchanged() const {
    if (!object_) return true;
    const Picture* const picture = shown_picture(session_, object_);
    if (picture && picture->mask() && !had_mask_ && !is_black(picture->mask())) return false;
    return bytes_now() == bytes_;
}

}  // namespace tarvo::test
