#include "object.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "registry.h"

namespace tarvo::host {
namespace {

std::string with_unit(std::size_t count, const char* unit) { return std::to_string(count) + " " + unit; }

}  // namespace

const char* name_of(ObjectType type) {
    switch (type) {
        case ObjectType::picture: return "picture";
        case ObjectType::instance: return "instance";
        case ObjectType::string: return "string";
        case ObjectType::memory_block: return "memory block";
        case ObjectType::integer_array: return "integer array";
        case ObjectType::folder_item: return "folder item";
        case ObjectType::screen: return "screen";
    }
    return "?";
}

// --- references -----------------------------------------------------------------------------------------------------

ObjectRef::ObjectRef(Object* object) : object_(object) {
    if (object_) ++object_->host_references_;
}

ObjectRef::~ObjectRef() {
    if (!object_) return;
    --object_->host_references_;
    object_->owner_->unlock(*object_);
}

ObjectRef& ObjectRef::operator=(ObjectRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
}

ObjectRef ObjectRef::adopt(Object* object) {
    if (!object || object->plugin_references() > 0) return ObjectRef(object);
    if (const auto& report = object->owner_->on_misuse) {
        report(std::string(name_of(object->type())) + " (" + object->describe() +
               ") was handed over without a reference");
    }
    return share(object);
}

ObjectRef ObjectRef::share(Object* object) {
    if (object) object->owner_->lock(*object);
    return ObjectRef(object);
}

void* ObjectRef::hand_over() {
    if (!object_) return nullptr;
    --object_->host_references_;
    return std::exchange(object_, nullptr)->handle();
}

// --- the store ------------------------------------------------------------------------------------------------------

ObjectRef ObjectStore::add(std::unique_ptr<Object> object) {
    if (!object || clearing_) return {};
    Object& added = *object;
    live_.emplace(added.handle(), std::move(object));
    added.owner_ = this;
    bytes_ += added.held_bytes_;
    return ObjectRef::share(&added);
}

Object* ObjectStore::find(const void* handle) const {
    const auto found = live_.find(handle);
    return found == live_.end() ? nullptr : found->second.get();
}

const Object* ObjectStore::find_dead(const void* handle) const {
    const auto found =
        std::find_if(dead_.begin(), dead_.end(), [&](const auto& dead) { return dead->handle() == handle; });
    return found == dead_.end() ? nullptr : found->get();
}

void ObjectStore::lock(Object& object) {
    ++object.references_;
    object.on_references_changed();
}

void ObjectStore::unlock(Object& object) {
    --object.references_;
    object.on_references_changed();
    if (object.references_ == 0 && !object.dying_) destroy(object);
}

// The object stays known until its contents are gone, because a class's destructor calls back with its handle, and may
// add and drop references.
void ObjectStore::destroy(Object& object) {
    object.dying_ = true;
    object.release_contents();
    bytes_ -= object.held_bytes_;
    auto node = live_.extract(object.handle());
    if (most_dead == 0) return;
    try {
        dead_.push_back(std::move(node.mapped()));
    } catch (const std::bad_alloc&) {
        return;  // without memory nothing keeps the address from being given out again
    }
    if (dead_.size() > most_dead) dead_.pop_front();
}

void ObjectStore::clear() {
    clearing_ = true;
    std::vector<const void*> instances;
    for (const auto& [handle, object] : live_) {
        if (object->type() == ObjectType::instance) instances.push_back(handle);
    }
    for (const void* handle : instances) {
        if (Object* instance = find(handle)) destroy(*instance);
    }
    // The objects that are left refer to each other: none may be freed before all have dropped their references.
    for (const auto& [handle, object] : live_) object->dying_ = true;
    for (const auto& [handle, object] : live_) object->release_contents();
    live_.clear();
    dead_.clear();
    bytes_ = 0;
    clearing_ = false;
}

std::vector<const Object*> ObjectStore::all() const {
    std::vector<const Object*> objects;
    for (const auto& [handle, object] : live_) objects.push_back(object.get());
    return objects;
}

// --- objects --------------------------------------------------------------------------------------------------------

StringObject::StringObject(std::size_t length) : Object(ObjectType::string, length), storage_(length + 2), record_{} {
    auto* storage = reinterpret_cast<char*>(storage_.data());
    storage[0] = static_cast<char>(std::min<std::size_t>(length, 255));
    storage[length + 1] = '\0';
    record_ = {0, static_cast<std::int32_t>(length), storage};
}

std::span<std::uint8_t> StringObject::room() { return {storage_.data() + 1, bytes().size()}; }

std::string_view StringObject::bytes() const {
    return {REALstringStruct::CString(&record_), static_cast<std::size_t>(REALstringStruct::Length(&record_))};
}

std::string StringObject::describe() const { return with_unit(bytes().size(), "bytes"); }

Instance::Instance(const RegisteredClass& cls, std::size_t data_size)
    : Object(ObjectType::instance),
      cls_(cls),
      data_size_(data_size),
      block_(std::make_unique<std::byte[]>(kDataOffset + data_size)) {}

void* Instance::data() { return block_.get() + kDataOffset; }

namespace {

using LifeFunction = void (*)(REALobjectStruct* instance);

void call_if_any(void* function, void* instance) {
    if (function) reinterpret_cast<LifeFunction>(function)(static_cast<REALobjectStruct*>(instance));
}

}  // namespace

void Instance::construct() { call_if_any(cls_.constructor, handle()); }

void Instance::release_contents() {
    call_if_any(cls_.destructor, handle());
    constexpr int kScrubbed = 0xDD;  // makes no plausible size or address, if someone still reads it
    std::memset(data(), kScrubbed, data_size_);
}

std::string Instance::describe() const { return cls_.name; }

MemoryBlock::MemoryBlock(std::size_t size) : MemoryBlock(BulkMemory(size)) {
    std::memset(bytes.data(), 0, bytes.size());
}

MemoryBlock::MemoryBlock(BulkMemory memory)
    : Object(ObjectType::memory_block, memory.size()),
      bytes(memory.data(), memory.size()),
      memory_(std::move(memory)) {}

std::string MemoryBlock::describe() const { return with_unit(bytes.size(), "bytes"); }

std::string IntegerArray::describe() const { return with_unit(elements.size(), "elements"); }

std::string FolderItem::describe() const { return path; }

std::string Screen::describe() const { return "main screen"; }

}  // namespace tarvo::host
