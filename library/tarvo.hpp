#ifndef TARVO_HPP
#define TARVO_HPP

// Tarvo Graphics for C++17 and later: tarvo.h with values and exceptions. Nothing here is in the library itself.
//
//     tarvo::Picture photo = tarvo::Picture::open("photo.jpg");
//     photo.call("TRV_AdjustContrast", nullptr, tarvo::Color{0x808080}, 1.6, 1.6, 1.6).picture().save("out.png");
//     tarvo::apply("Stretch(fit(200))", photo).picture().save("small.png");
//
// What fails throws tarvo::Error. All values move, and copies share what they hold. An object that was moved from, or
// that was made empty, holds nothing. The rules of tarvo.h hold.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "tarvo.h"

namespace tarvo {

class Error : public std::runtime_error {
public:
    // Takes the error over.
    explicit Error(tarvo_error* error) : Error(error, Parts{}) { tarvo_error_free(error); }
    Error(tarvo_status status, const std::string& message) : std::runtime_error(message), status_(status) {}
    // What an error tells that belongs to something else.
    static Error copy_of(const tarvo_error* error) { return Error(error, Parts{}); }

    tarvo_status status() const { return status_; }
    std::int32_t code() const { return code_; }
    const std::string& operation() const { return operation_; }
    const std::string& argument() const { return argument_; }
    // Parts of the message.
    const std::string& reason() const { return reason_; }
    const std::string& refusal() const { return refusal_; }
    const std::string& file() const { return file_; }
    tarvo_limit limit() const { return limit_; }

private:
    struct Parts {};
    Error(const tarvo_error* error, Parts)
        : std::runtime_error(tarvo_error_message(error)),
          status_(tarvo_error_status(error)),
          code_(tarvo_error_code(error)),
          limit_(tarvo_error_limit(error)),
          operation_(tarvo_error_operation(error)),
          argument_(tarvo_error_argument(error)),
          reason_(tarvo_error_reason(error)),
          refusal_(tarvo_error_refusal(error)),
          file_(tarvo_error_file(error)) {}

    tarvo_status status_;
    std::int32_t code_ = 0;
    tarvo_limit limit_ = TARVO_NO_LIMIT;
    std::string operation_, argument_, reason_, refusal_, file_;
};

namespace detail {

// `work(&error)` calls a function of the library.
template <class Work>
void check(Work work) {
    tarvo_error* error = nullptr;
    const tarvo_status status = work(&error);
    if (error) throw Error(error);
    if (status != TARVO_OK) throw Error(status, "failed");
}

using Note = std::function<void(tarvo_note, const std::string&)>;

// What a program wants to be asked and told. Its functions may throw: the exception waits until the library has
// returned.
class Callbacks {
public:
    template <class Given>
    explicit Callbacks(const Given& given) : stops_(given.yield), note_(given.note) {}

    template <class Options>
    void put_into(Options& options) {
        if (stops_) options.yield = &ask;
        if (note_) options.note = &tell;
        options.context = this;
    }
    void put_into(tarvo_write_options& options, std::function<void(tarvo_part_file, int, const char*)> part_file) {
        part_file_ = std::move(part_file);
        if (part_file_) options.part_file = &tell_of_part_file;
    }
    template <class Work>
    void check(Work work) {
        try {
            detail::check(work);
        } catch (...) {
            rethrow();
            throw;
        }
    }
    void rethrow() const {
        if (thrown_) std::rethrow_exception(thrown_);
    }

private:
    static int ask(void* context) {
        auto* const self = static_cast<Callbacks*>(context);
        bool stops = true;
        if (!self->thrown_) self->guarded([&] { stops = self->stops_(); });
        return stops ? 1 : 0;
    }
    static void tell(void* context, tarvo_note kind, const char* text) {
        auto* const self = static_cast<Callbacks*>(context);
        if (!self->thrown_) self->guarded([&] { self->note_(kind, text); });
    }
    static void tell_of_part_file(void* context, tarvo_part_file now, int folder, const char* name) {
        auto* const self = static_cast<Callbacks*>(context);
        self->guarded([&] { self->part_file_(now, folder, name); });
    }
    template <class Work>
    void guarded(Work work) {
        try {
            work();
        } catch (...) {
            thrown_ = std::current_exception();
        }
    }

    const std::function<bool()> stops_;
    const Note note_;
    std::function<void(tarvo_part_file, int, const char*)> part_file_;
    std::exception_ptr thrown_;
};

// A counted reference.
template <class Counted, Counted* (*retain)(Counted*), void (*release)(Counted*)>
class Reference {
public:
    Reference() = default;
    explicit Reference(Counted* owned) : counted_(owned) {}
    Reference(const Reference& other) : counted_(other.counted_ ? retain(other.counted_) : nullptr) {}
    Reference(Reference&& other) noexcept : counted_(std::exchange(other.counted_, nullptr)) {}
    Reference& operator=(Reference other) noexcept {
        std::swap(counted_, other.counted_);
        return *this;
    }
    ~Reference() { release(counted_); }

    Counted* get() const { return counted_; }
    explicit operator bool() const { return counted_ != nullptr; }

private:
    Counted* counted_ = nullptr;
};

}  // namespace detail

struct Color {
    std::uint32_t rgb = 0;  // 0x00RRGGBB
};

// The library's options; `yield` stops the work by returning true. What `yield` and `note` throw leaves the call.
struct ReadOptions {
    bool keep_depth = false;
    std::uint64_t max_pixels = 0, max_memory = 0;
    std::function<bool()> yield = {};
    detail::Note note = {};
    bool srgb = false;
    std::string draft_for = {};  // the call that will be made first; empty for none
};

struct WriteOptions {
    int jpeg_quality = 0;
    tarvo_compression compression = TARVO_COMPRESSION_NORMAL;
    std::uint32_t strip = 0;
    std::function<bool()> yield = {};
    detail::Note note = {};
    std::function<void(tarvo_part_file, int, const char*)> part_file = {};
    std::uint64_t max_memory = 0;
};

struct CallOptions {
    int yield_pixels = 0;
    std::function<bool()> yield = {};
    int threads = 1;
    bool read_files = false;
    std::uint64_t max_pixels = 0, max_memory = 0;
    detail::Note note = {};
    bool client_pictures = false;
};

class Result;
class Value;

class Picture {
public:
    Picture() = default;
    // Takes one reference over.
    explicit Picture(tarvo_picture* owned) : reference_(owned) {}

    static Picture from_rows(const void* pixels, std::ptrdiff_t stride, int width, int height, tarvo_layout layout) {
        return made([&](tarvo_picture** picture, tarvo_error** error) {
            return tarvo_picture_from_rows(pixels, stride, width, height, layout, picture, error);
        });
    }
    // Without a copy. `release` is called once, when nothing needs the memory any more, and must not throw.
    static Picture wrap(const void* xrgb, std::ptrdiff_t stride, int width, int height,
                        std::function<void()> release = {}) {
        // The library has it as soon as it is called, and calls it on every way.
        auto context = std::make_unique<std::function<void()>>(std::move(release));
        return made([&](tarvo_picture** picture, tarvo_error** error) {
            return tarvo_picture_wrap(xrgb, stride, width, height, &call_release, context.release(), picture, error);
        });
    }
    static Picture open(const std::string& path, const ReadOptions& options = {}) {
        return read(options, [&](const tarvo_read_options* how, tarvo_picture** picture, tarvo_error** error) {
            return tarvo_picture_open(path.c_str(), how, picture, error);
        });
    }
    static Picture decode(const void* bytes, std::size_t length, const ReadOptions& options = {}) {
        return read(options, [&](const tarvo_read_options* how, tarvo_picture** picture, tarvo_error** error) {
            return tarvo_picture_decode(bytes, length, how, picture, error);
        });
    }

    void save(const std::string& path, const WriteOptions& options = {}) const {
        write(options, [&](const tarvo_write_options* how, tarvo_error** error) {
            return tarvo_picture_save(get(), path.c_str(), how, error);
        });
    }
    std::vector<std::uint8_t> encode(const std::string& format, const WriteOptions& options = {}) const {
        struct File {
            ~File() { tarvo_free(bytes); }
            std::uint8_t* bytes = nullptr;
            std::size_t length = 0;
        } file;
        write(options, [&](const tarvo_write_options* how, tarvo_error** error) {
            return tarvo_picture_encode(get(), format.c_str(), how, &file.bytes, &file.length, error);
        });
        return {file.bytes, file.bytes + file.length};
    }

    int width() const { return tarvo_picture_width(get()); }
    int height() const { return tarvo_picture_height(get()); }
    int depth() const { return tarvo_picture_depth(get()); }
    bool has_mask() const { return tarvo_picture_has_mask(get()) != 0; }

    // What the file carried of one kind; empty for none.
    std::vector<std::uint8_t> metadata(tarvo_metadata kind) const {
        std::size_t length = 0;
        const std::uint8_t* const bytes = tarvo_picture_metadata(get(), kind, &length);
        return {bytes, bytes + length};
    }
    // The same pixels with other bytes of one kind; with none, without it.
    Picture with_metadata(tarvo_metadata kind, const std::vector<std::uint8_t>& bytes) const {
        return made([&](tarvo_picture** picture, tarvo_error** error) {
            return tarvo_picture_with_metadata(get(), kind, bytes.data(), bytes.size(), picture, error);
        });
    }
    // In dots an inch; 0 and 0 for none.
    Picture with_resolution(double x, double y) const {
        return made([&](tarvo_picture** picture, tarvo_error** error) {
            return tarvo_picture_with_resolution(get(), x, y, picture, error);
        });
    }

    void to_rows(void* pixels, std::ptrdiff_t stride, tarvo_layout layout) const {
        detail::check([&](tarvo_error** error) { return tarvo_picture_to_rows(get(), pixels, stride, layout, error); });
    }
    // The stored pixels, x, R, G, B, as long as the picture lives; null unless it is 32 bits deep.
    const std::uint8_t* pixels(std::ptrdiff_t* stride = nullptr) const { return tarvo_picture_pixels(get(), stride); }
    std::string sha256() const {
        char hex[65];
        detail::check([&](tarvo_error**) { return tarvo_picture_sha256(get(), hex); });
        return hex;
    }

    // Calls an operation on the picture.
    template <class... Arguments>
    Result call(const std::string& operation, Arguments&&... arguments) const;

    tarvo_picture* get() const { return reference_.get(); }
    explicit operator bool() const { return static_cast<bool>(reference_); }

private:
    static void call_release(void* context) {
        const std::unique_ptr<std::function<void()>> release(static_cast<std::function<void()>*>(context));
        if (*release) (*release)();
    }

    template <class Make>
    static Picture made(Make make) {
        tarvo_picture* picture = nullptr;
        detail::check([&](tarvo_error** error) { return make(&picture, error); });
        return Picture(picture);
    }
    template <class Read>
    static Picture read(const ReadOptions& options, Read work) {
        tarvo_read_options how = {};
        how.size = sizeof how;
        how.keep_depth = options.keep_depth ? 1 : 0;
        how.srgb = options.srgb ? 1 : 0;
        how.draft_for = options.draft_for.empty() ? nullptr : options.draft_for.c_str();
        how.max_pixels = options.max_pixels;
        how.max_memory = options.max_memory;
        detail::Callbacks callbacks(options);
        callbacks.put_into(how);
        tarvo_picture* picture = nullptr;
        callbacks.check([&](tarvo_error** error) { return work(&how, &picture, error); });
        Picture made(picture);
        callbacks.rethrow();
        return made;
    }
    template <class Write>
    static void write(const WriteOptions& options, Write work) {
        tarvo_write_options how = {};
        how.size = sizeof how;
        how.jpeg_quality = options.jpeg_quality;
        how.compression = options.compression;
        how.max_memory = options.max_memory;
        how.strip = options.strip;
        detail::Callbacks callbacks(options);
        callbacks.put_into(how);
        callbacks.put_into(how, options.part_file);
        callbacks.check([&](tarvo_error** error) { return work(&how, error); });
        callbacks.rethrow();
    }

    detail::Reference<tarvo_picture, tarvo_picture_retain, tarvo_picture_release> reference_;
};

// An instance of a class. Copies are the same instance.
class Object {
public:
    Object() = default;
    // Takes one reference over.
    explicit Object(tarvo_object* owned) : reference_(owned) {}
    explicit Object(const std::string& class_name) : class_name_(class_name) {
        tarvo_object* object = nullptr;
        detail::check([&](tarvo_error** error) { return tarvo_object_new(class_name.c_str(), &object, error); });
        reference_ = Reference(object);
    }

    // Calls a method, reads a property, or sets it with an argument. The name has its class in front,
    // "TRV_Rectangle.Area", unless the object was made by its class's name.
    template <class... Arguments>
    Result call(const std::string& member, Arguments&&... arguments) const;

    // The class's name as it is registered.
    std::string class_name() const { return tarvo_object_class(get()); }
    tarvo_object* get() const { return reference_.get(); }
    explicit operator bool() const { return static_cast<bool>(reference_); }

private:
    using Reference = detail::Reference<tarvo_object, tarvo_object_retain, tarvo_object_release>;
    Reference reference_;
    std::string class_name_;
};

class Rectangle : public Object {
public:
    Rectangle(int left, int top, int width, int height);
};

// An argument's value. It keeps what it points to.
class Value {
public:
    Value() = default;
    Value(std::nullptr_t) {}
    Value(int integer) {
        value_.type = TARVO_INTEGER;
        value_.as.integer = integer;
    }
    Value(double real) {
        value_.type = TARVO_REAL;
        value_.as.real = real;
    }
    Value(bool boolean) {
        value_.type = TARVO_BOOLEAN;
        value_.as.boolean = boolean ? 1 : 0;
    }
    Value(Color color) {
        value_.type = TARVO_COLOR;
        value_.as.color = color.rgb;
    }
    Value(Picture picture) : picture_(std::move(picture)) {
        value_.type = picture_ ? TARVO_PICTURE : TARVO_NIL;
        value_.as.picture = picture_.get();
    }
    Value(Object object) : object_(std::move(object)) {
        value_.type = object_ ? TARVO_OBJECT : TARVO_NIL;
        value_.as.object = object_.get();
    }
    Value(std::string bytes) : bytes_(std::make_shared<const std::string>(std::move(bytes))) {
        value_.type = TARVO_BYTES;
        value_.as.bytes = {bytes_->data(), bytes_->size()};
    }
    Value(const char* text) : Value(std::string(text)) {}
    Value(std::vector<std::int32_t> integers)
        : integers_(std::make_shared<const std::vector<std::int32_t>>(std::move(integers))) {
        value_.type = TARVO_INTEGERS;
        value_.as.integers = {integers_->data(), integers_->size()};
    }

    const tarvo_value& get() const { return value_; }

private:
    tarvo_value value_ = {};
    Picture picture_;
    Object object_;
    std::shared_ptr<const std::string> bytes_;
    std::shared_ptr<const std::vector<std::int32_t>> integers_;
};

// A value for the next place, or, with a name, for the parameter of that name.
class Argument {
public:
    template <class Given, class = std::enable_if_t<std::is_constructible_v<Value, Given>>>
    Argument(Given&& given) : value_(std::forward<Given>(given)) {}
    Argument(std::string name, Value value) : name_(std::move(name)), value_(std::move(value)) {}

    // Points into this.
    tarvo_argument get() const { return {name_.empty() ? nullptr : name_.c_str(), value_.get()}; }

private:
    std::string name_;
    Value value_;
};

// What a call gives.
class Result {
public:
    // Takes the result over.
    explicit Result(tarvo_result* owned) : result_(owned, &tarvo_result_release) {}

    // Return what the operation returns, or throw when it is of another type.
    Picture picture() const { return Picture(tarvo_picture_retain(returned(TARVO_PICTURE).picture)); }
    Object object() const { return Object(tarvo_object_retain(returned(TARVO_OBJECT).object)); }
    std::int32_t integer() const { return returned(TARVO_INTEGER).integer; }
    double real() const { return returned(TARVO_REAL).real; }
    bool boolean() const { return returned(TARVO_BOOLEAN).boolean != 0; }
    Color color() const { return {returned(TARVO_COLOR).color}; }
    // As long as the result lives.
    std::string_view bytes() const {
        const tarvo_bytes& bytes = returned(TARVO_BYTES).bytes;
        return {static_cast<const char*>(bytes.data), bytes.length};
    }
    bool is_nil() const { return value().type == TARVO_NIL; }

    const tarvo_value& value() const { return *tarvo_result_value(result_.get()); }
    // What came back in an argument; null when there is none of that name.
    const tarvo_value* output(const std::string& name) const {
        return tarvo_result_output(result_.get(), name.c_str());
    }
    // The names of the arguments that came back, in order.
    std::vector<std::string> outputs() const {
        std::vector<std::string> names;
        while (const char* const name = tarvo_result_output_name(result_.get(), names.size())) names.push_back(name);
        return names;
    }
    // What the operation returns, or what came back in an argument of that name, as people read it.
    std::string text() const { return text_of(nullptr); }
    std::string text(const std::string& output) const { return text_of(output.c_str()); }
    std::int32_t code() const { return tarvo_result_code(result_.get()); }
    // What is wrong with it; nothing for a good one.
    std::optional<Error> defect() const {
        const tarvo_error* const error = tarvo_result_defect(result_.get());
        return error ? std::optional(Error::copy_of(error)) : std::nullopt;
    }
    std::string operation() const { return tarvo_result_operation(result_.get()); }
    double milliseconds() const { return tarvo_result_milliseconds(result_.get()); }
    tarvo_result* get() const { return result_.get(); }

private:
    std::string text_of(const char* output) const {
        const std::unique_ptr<char, void (*)(void*)> text(tarvo_result_text(result_.get(), output), &tarvo_free);
        if (!text) throw Error(TARVO_USE, "there is no such output");
        return text.get();
    }
    decltype(tarvo_value::as) returned(tarvo_type type) const {
        if (value().type != type) throw Error(TARVO_USE, "the result is of another type");
        return value().as;
    }

    std::unique_ptr<tarvo_result, void (*)(tarvo_result*)> result_;
};

namespace detail {

template <class Call>
Result called(const CallOptions& options, Call call) {
    tarvo_call_options how = {};
    how.size = sizeof how;
    how.yield_pixels = options.yield_pixels;
    how.threads = options.threads;
    how.read_files = options.read_files ? 1 : 0;
    how.max_pixels = options.max_pixels;
    how.max_memory = options.max_memory;
    how.client_pictures = options.client_pictures ? 1 : 0;
    Callbacks callbacks(options);
    callbacks.put_into(how);
    tarvo_result* result = nullptr;
    callbacks.check([&](tarvo_error** error) { return call(&how, &result, error); });
    Result made(result);
    callbacks.rethrow();
    return made;
}

}  // namespace detail

// Calls an operation on `self`, which may be nullptr: call("TRV_MakeGradient", nullptr, {300, 200, Color{0},
// Color{0xFF}}).
inline Result call(const std::string& operation, const Value& self, const std::vector<Argument>& arguments = {},
                   const CallOptions& options = {}) {
    std::vector<tarvo_argument> plain;
    for (const Argument& argument : arguments) plain.push_back(argument.get());
    return detail::called(options, [&](const tarvo_call_options* how, tarvo_result** result, tarvo_error** error) {
        return tarvo_call(operation.c_str(), &self.get(), plain.data(), plain.size(), how, result, error);
    });
}

// Calls what a text says, on a value that may be empty.
inline Result apply_on(const std::string& text, const Value& self, const CallOptions& options = {}) {
    return detail::called(options, [&](const tarvo_call_options* how, tarvo_result** result, tarvo_error** error) {
        return tarvo_apply_on(text.c_str(), &self.get(), how, result, error);
    });
}

// The same on a picture that may be empty.
inline Result apply(const std::string& text, const Picture& picture = {}, const CallOptions& options = {}) {
    return apply_on(text, picture, options);
}

// Finds what is wrong with such a text, before any work, on an object of that class, or on nothing. Returns the class
// of the picture that comes of it, or "".
inline std::string check(const std::string& text, const std::string& on = "picture") {
    const char* gives = nullptr;
    detail::check([&](tarvo_error** error) {
        return tarvo_check(text.c_str(), on.empty() ? nullptr : on.c_str(), &gives, error);
    });
    return gives ? gives : "";
}

// Finds what would keep a picture from being saved under that name.
inline void check_output(const std::string& path) {
    detail::check([&](tarvo_error** error) { return tarvo_check_output(path.c_str(), error); });
}

template <class... Arguments>
Result Picture::call(const std::string& operation, Arguments&&... arguments) const {
    return tarvo::call(operation, *this, {Argument(std::forward<Arguments>(arguments))...});
}

template <class... Arguments>
Result Object::call(const std::string& member, Arguments&&... arguments) const {
    return tarvo::call(class_name_.empty() ? member : class_name_ + "." + member, *this,
                       {Argument(std::forward<Arguments>(arguments))...});
}

inline Rectangle::Rectangle(int left, int top, int width, int height) : Object("TRV_Rectangle") {
    call("left", left);
    call("top", top);
    call("width", width);
    call("height", height);
}

// What an operation's code means; "" for 0.
inline std::string code_message(std::int32_t code) { return tarvo_code_message(code); }

inline std::string version() { return tarvo_version(); }
// All operations, classes and errors as JSON.
inline std::string description() {
    const char* text = tarvo_description();
    if (!text) throw Error(TARVO_MEMORY, "not enough memory");
    return text;
}

}  // namespace tarvo

#endif
