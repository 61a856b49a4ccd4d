#pragma once

// The host's objects and the store that knows them all. Every object is reference counted; plugins know it by its
// handle, an address that the store checks without reading through it.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "bulk_memory.h"
#include "platform.h"
#include "real_interface.h"

namespace tarvo::host {

enum class ObjectType { picture, instance, string, memory_block, integer_array, folder_item, screen };
const char* name_of(ObjectType type);

class ObjectStore;
struct RegisteredClass;

class Object {
public:
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    ObjectType type() const { return type_; }
    // The address that plugins see.
    virtual void* handle() = 0;
    int references() const { return references_; }
    // Returns the bytes of what the object holds in bulk, as long as it lives.
    std::uint64_t held_bytes() const { return held_bytes_; }
    // Describes the object in one line for people.
    virtual std::string describe() const = 0;

    // The references that plugins hold: all that no ObjectRef holds.
    int plugin_references() const { return references_ - host_references_; }

protected:
    explicit Object(ObjectType type, std::uint64_t held_bytes = 0) : type_(type), held_bytes_(held_bytes) {}

    // Gives back what the object holds, once, when nobody refers to it any more. What remains only keeps its address
    // from being given out again.
    virtual void release_contents() {}
    virtual void on_references_changed() {}

private:
    friend class ObjectStore;
    friend class ObjectRef;
    ObjectType type_;
    std::uint64_t held_bytes_;
    int references_ = 0;
    int host_references_ = 0;
    bool dying_ = false;
    ObjectStore* owner_ = nullptr;
};

// A counted reference that host code holds. It may be to nothing.
class ObjectRef {
public:
    ObjectRef() = default;
    ObjectRef(const ObjectRef& other) : ObjectRef(share(other.object_)) {}
    ObjectRef(ObjectRef&& other) noexcept : object_(other.object_) { other.object_ = nullptr; }
    ObjectRef& operator=(ObjectRef other) noexcept;
    ~ObjectRef();

    // Takes over a reference from a plugin. If plugins hold none, that is reported as misuse and a reference is added.
    static ObjectRef adopt(Object* object);
    // Adds a reference of its own.
    static ObjectRef share(Object* object);
    // Hands the reference over to a plugin and returns the handle; null for no object.
    void* hand_over();

    explicit operator bool() const { return object_ != nullptr; }
    Object* get() const { return object_; }
    Object* operator->() const { return object_; }
    void* handle() const { return object_ ? object_->handle() : nullptr; }
    friend bool operator==(const ObjectRef&, const ObjectRef&) = default;

private:
    // Takes an object for which this reference is counted already.
    explicit ObjectRef(Object* object);
    Object* object_ = nullptr;
};

// Where a picture's pixels are.
enum class Backing {
    graphics_world,    // kind 4
    bitmap_context,    // kind 8
    pixel_buffer,      // kind 10: always 32 bits, each row an allocation of its own
    drawing_commands,  // kind 1: no pixels until drawn
    refused,           // kind 2: a store that plugins do not know
};

struct PictureOptions {
    int width = 0;
    int height = 0;
    int depth = 32;  // in a graphics world any depth from 1 to 32, for tests also one that means nothing
    Backing backing = Backing::graphics_world;
    std::vector<RGBColor> colors = {};  // the colour table of depths up to 8; if empty, greys from black to white
    bool without_color_table = false;   // a picture such as no good host makes
    int row_padding = 0;                // bytes added to each row
    int dots_per_inch = 72;
    bool any_sides = false;  // for tests: sides may be 0 or less, as of a picture whose bounds a program has spoilt
};

// Stored pixels, row after row from the top. Pictures of several hosts may have the same ones, which outlive every
// host; the memory may also be a program's own, with a deleter or as an alias of what owns it.
struct SharedPixels {
    std::shared_ptr<std::uint8_t> bytes;
    std::size_t size = 0;

    // New ones, which hold anything. Throws std::bad_alloc.
    static SharedPixels of_size(std::size_t size);
};

// A picture. A new one is white. Pixels are stored big-endian, as plugins expect them.
class Picture final : public Object {
public:
    // What a new picture's pixels are; `unset` is for callers that write all of them, `noise` for tests of whether they
    // do.
    enum class Paper { white, black, unset, noise };

    // Whether any host could make such a picture: it has sides and a depth that pictures have, and not too many bytes.
    static bool is_possible(const PictureOptions& options);
    // Returns the bytes of the pixels of a possible picture.
    static std::uint64_t bytes_of(const PictureOptions& options);
    // Returns null when such a picture cannot be made.
    static std::unique_ptr<Picture> make(const PictureOptions& options, Paper paper = Paper::white);
    // Returns a graphics world or bitmap context over pixels that are there already, and stay as they are as long as
    // nobody writes to this picture. Null for other backings, and when there are too few bytes; padding behind the last
    // row is not needed. Throws std::bad_alloc.
    static std::unique_ptr<Picture> of(const PictureOptions& options, SharedPixels pixels);
    ~Picture() override;

    int width() const { return options_.width; }
    int height() const { return options_.height; }
    int depth() const { return options_.depth; }
    Backing backing() const { return options_.backing; }
    const PictureOptions& options() const { return options_; }
    // The bytes of a row that hold pixels, without padding.
    std::size_t packed_row_bytes() const;
    // The address of a row, counted from the top; null for drawing commands and refused pictures.
    std::uint8_t* row(int y);
    const std::uint8_t* row(int y) const;
    // The pixels of a graphics world or bitmap context, which live on when the picture ends; none for others.
    const SharedPixels& shared_pixels() const;
    // The entries of the colour table, 2^depth of them; empty above 8 bits and without a table.
    const std::vector<RGBColor>& colors() const { return options_.colors; }

    // The mask; empty if there is none. A mask may have any depth and, for tests, a size other than the picture's.
    const ObjectRef& mask() const { return mask_; }
    void set_mask(ObjectRef mask) { mask_ = std::move(mask); }

    // Returns the colour, 0x00RRGGBB, that a picture of drawing commands draws at a place. Unless set, it draws white.
    std::function<std::uint32_t(int x, int y)> drawing;

    // Makes locking of the pixels fail, as if the system had taken back their memory.
    void set_purged(bool purged);

    int locks() const { return locks_; }
    void* handle() override { return this; }
    std::string describe() const override;

private:
    friend struct Services;
    struct Store;
    Picture(PictureOptions options, std::unique_ptr<Store> store);
    void fill(Paper paper);
    void fill_with_noise();
    REALpictureDescription description() const;
    void release_contents() override;

    PictureOptions options_;
    std::unique_ptr<Store> store_;
    ObjectRef mask_;
    int locks_ = 0;
};

class StringObject final : public Object {
public:
    // The bytes hold anything.
    explicit StringObject(std::size_t length);
    std::string_view bytes() const;  // empty when it is dead
    std::span<std::uint8_t> room();
    void* handle() override { return &record_; }
    std::string describe() const override;

private:
    void release_contents() override {
        storage_ = {};
        record_ = {};
    }
    void on_references_changed() override { record_.references = references(); }

    BulkMemory storage_;
    REALstringStruct record_;
};

// An instance of a class that a plugin registered. Its data is zero before the constructor runs:
//
//     |  header  |  the class's plugin data  |
//     ^ handle   ^ handle + kDataOffset
class Instance final : public Object {
public:
    Instance(const RegisteredClass& cls, std::size_t data_size);
    void construct();
    const RegisteredClass& cls() const { return cls_; }
    void* data();
    void* handle() override { return block_.get(); }
    std::string describe() const override;

    static constexpr std::size_t kDataOffset = 16;

private:
    void release_contents() override;  // runs the class's destructor

    const RegisteredClass& cls_;
    std::size_t data_size_;
    std::unique_ptr<std::byte[]> block_;
};

class MemoryBlock final : public Object {
public:
    explicit MemoryBlock(std::size_t size);
    const std::span<std::uint8_t> bytes;  // they are zero at first, and stay where they are
    void* handle() override { return this; }
    std::string describe() const override;

private:
    explicit MemoryBlock(BulkMemory memory);
    void release_contents() override { memory_ = {}; }

    BulkMemory memory_;
};

class IntegerArray final : public Object {
public:
    explicit IntegerArray(std::vector<std::int32_t> values)
        : Object(ObjectType::integer_array), elements(std::move(values)) {}
    std::vector<std::int32_t> elements;
    void* handle() override { return this; }
    std::string describe() const override;

private:
    void release_contents() override { elements = {}; }
};

class FolderItem final : public Object {
public:
    explicit FolderItem(std::string where) : Object(ObjectType::folder_item), path(std::move(where)) {}
    std::string path;
    void* handle() override { return this; }
    std::string describe() const override;
};

class Screen final : public Object {
public:
    Screen() : Object(ObjectType::screen) {}
    void* handle() override { return this; }
    std::string describe() const override;
};

// All live objects by handle. A dead object's handle is not given out again soon, so that a stale one is noticed.
class ObjectStore {
public:
    ObjectStore() = default;
    ~ObjectStore() { clear(); }
    ObjectStore(const ObjectStore&) = delete;
    ObjectStore& operator=(const ObjectStore&) = delete;

    // Takes the object in and returns its first reference; empty while the store is being cleared.
    ObjectRef add(std::unique_ptr<Object> object);

    // Returns null when the address is no live object's handle. Nothing is read through it.
    Object* find(const void* handle) const;
    // Finds only objects of one class: `find<Picture>(handle)`.
    template <class T>
    T* find(const void* handle) const {
        return dynamic_cast<T*>(find(handle));
    }
    // Returns an object that died lately, whose contents are gone; null when there is none with that handle.
    const Object* find_dead(const void* handle) const;

    void lock(Object& object);
    // Drops a reference; the last one destroys the object.
    void unlock(Object& object);
    // Destroys every object, whoever refers to it. Instances go first, since their destructors may use the others.
    void clear();

    std::size_t size() const { return live_.size(); }
    // Returns what all live objects hold in bulk.
    std::uint64_t bytes() const { return bytes_; }
    // Returns all live objects, in no order.
    std::vector<const Object*> all() const;

    // At most this many dead objects are kept, so that their addresses stay taken. Each costs little without its
    // contents.
    std::size_t most_dead = 4096;
    // Called with a message when a plugin hands over a reference that none holds.
    std::function<void(const std::string&)> on_misuse;

private:
    void destroy(Object& object);

    std::unordered_map<const void*, std::unique_ptr<Object>> live_;
    std::list<std::unique_ptr<Object>> dead_;  // the one that died first comes first
    std::uint64_t bytes_ = 0;
    bool clearing_ = false;
};

}  // namespace tarvo::host
