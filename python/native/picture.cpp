#include "picture.h"

#include <nanobind/stl/optional.h>

#include <climits>
#include <memory>
#include <optional>
#include <vector>

#include "errors.h"
#include "types.h"
#include "watch.h"

namespace tarvo::python {
namespace {

// A borrowed look into an object's memory, of any layout.
class Buffer {
public:
    Buffer(nb::handle object, int flags) {
        if (PyObject_GetBuffer(object.ptr(), &view_, flags) != 0) throw nb::python_error();
    }
    ~Buffer() { PyBuffer_Release(&view_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    const Py_buffer& operator*() const { return view_; }
    const Py_buffer* operator->() const { return &view_; }

private:
    Py_buffer view_{};
};

const unsigned char* pixels_of(const tarvo_picture* picture, std::ptrdiff_t& stride) {
    return tarvo_picture_pixels(picture, &stride);
}

// What a picture shows of its memory: shape and strides live as long as the view.
struct Shape {
    Py_ssize_t shape[3], strides[3];
};

int get_buffer(PyObject* object, Py_buffer* view, int flags) {
    // One that Python has made without us is empty.
    const Picture* self = picture_in(object);
    std::ptrdiff_t stride = 0;
    const unsigned char* pixels = self ? pixels_of(self->get(), stride) : nullptr;
    const char* refusal = nullptr;
    if (!pixels || tarvo_picture_has_mask(self->get()))
        refusal = "a memoryview shows a picture's own memory, and this one has to be copied: use to_array()";
    else if (flags & PyBUF_WRITABLE)
        refusal = "pictures never change: to_array(copy=True) is writable";
    else if ((flags & PyBUF_STRIDES) != PyBUF_STRIDES || (flags & PyBUF_C_CONTIGUOUS) == PyBUF_C_CONTIGUOUS ||
             (flags & PyBUF_F_CONTIGUOUS) == PyBUF_F_CONTIGUOUS ||
             (flags & PyBUF_ANY_CONTIGUOUS) == PyBUF_ANY_CONTIGUOUS)
        refusal = "the colours of a picture do not follow each other in memory: to_array(copy=True) is contiguous";
    if (refusal) {
        view->obj = nullptr;
        PyErr_SetObject(error_function("CopyNeeded").ptr(), nb::str(refusal).ptr());
        return -1;
    }
    auto* shape = new (std::nothrow) Shape{};
    if (!shape) {
        view->obj = nullptr;
        PyErr_NoMemory();
        return -1;
    }
    const Py_ssize_t height = tarvo_picture_height(self->get()), width = tarvo_picture_width(self->get());
    *shape = {{height, width, 3}, {stride, 4, 1}};
    view->buf = const_cast<unsigned char*>(pixels + 1);
    view->obj = Py_NewRef(object);
    view->len = height * width * 3;
    view->itemsize = 1;
    view->readonly = 1;
    view->ndim = 3;
    view->format = (flags & PyBUF_FORMAT) ? const_cast<char*>("B") : nullptr;
    view->shape = shape->shape;
    view->strides = shape->strides;
    view->suboffsets = nullptr;
    view->internal = shape;
    return 0;
}

void release_buffer(PyObject*, Py_buffer* view) { delete static_cast<Shape*>(view->internal); }

PyType_Slot kSlots[] = {{Py_bf_getbuffer, reinterpret_cast<void*>(&get_buffer)},
                        {Py_bf_releasebuffer, reinterpret_cast<void*>(&release_buffer)},
                        {0, nullptr}};

// What `read(options, &made, error)` has made.
template <class Read>
nb::object read_with(std::uint64_t max_pixels, bool srgb, Read read) {
    tarvo_read_options options = {};
    options.size = sizeof options;
    options.max_pixels = max_pixels;
    options.srgb = srgb;
    Watch watch{nb::none()};
    watch.put_into(options);
    tarvo_picture* made = nullptr;
    watch.run([&](tarvo_error** error) { return read(options, &made, error); });
    return new_picture(made);
}

nb::object open(const nb::bytes& path, std::uint64_t max_pixels, bool srgb) {
    return read_with(max_pixels, srgb,
                     [&](const tarvo_read_options& options, tarvo_picture** made, tarvo_error** error) {
                         return tarvo_picture_open(path.c_str(), &options, made, error);
                     });
}

nb::object decode(nb::handle bytes, std::uint64_t max_pixels, bool srgb) {
    const Buffer buffer(bytes, PyBUF_SIMPLE);
    // An empty buffer may have no address.
    const void* begin = buffer->buf ? buffer->buf : "";
    return read_with(
        max_pixels, srgb, [&](const tarvo_read_options& options, tarvo_picture** made, tarvo_error** error) {
            return tarvo_picture_decode(begin, static_cast<std::size_t>(buffer->len), &options, made, error);
        });
}

tarvo_layout layout_of(int channels) {
    switch (channels) {
        case 1: return TARVO_GREY8;
        case 3: return TARVO_RGB24;
        default: return TARVO_RGBA32;
    }
}

// Rows of uint8, height x width x channels, whose pixels follow each other.
nb::object from_rows(nb::handle array, int channels) {
    const Buffer rows(array, PyBUF_STRIDES);
    if (rows->ndim != 3 || rows->itemsize != 1 || rows->shape[2] != channels || rows->strides[2] != 1 ||
        rows->strides[1] != channels)
        throw nb::value_error("rows of pixels that follow each other are expected");
    if (rows->shape[0] > INT_MAX || rows->shape[1] > INT_MAX) throw nb::value_error("the array is too large");
    tarvo_picture* made = nullptr;
    run([&](tarvo_error** error) {
        return tarvo_picture_from_rows(rows->buf, rows->strides[0], static_cast<std::int32_t>(rows->shape[1]),
                                       static_cast<std::int32_t>(rows->shape[0]), layout_of(channels), &made, error);
    });
    return new_picture(made);
}

// A part of a picture, which shares its memory: of every `step`th row from `top` on.
nb::object part(const Picture& whole, int left, int top, int step, int width, int height) {
    std::ptrdiff_t stride = 0;
    const unsigned char* pixels = pixels_of(whole.get(), stride);
    const std::int64_t bottom = top + std::int64_t{step} * (height - 1), right = std::int64_t{left} + width;
    if (!pixels || left < 0 || top < 0 || step < 1 || width < 1 || height < 1 ||
        bottom >= tarvo_picture_height(whole.get()) || right > tarvo_picture_width(whole.get()))
        throw nb::value_error("there is no such part");
    tarvo_picture* made = nullptr;
    run([&](tarvo_error** error) {
        return tarvo_picture_wrap(
            pixels + stride * top + std::ptrdiff_t{4} * left, stride * step, width, height,
            [](void* owner) { tarvo_picture_release(static_cast<tarvo_picture*>(owner)); },
            tarvo_picture_retain(whole.get()), &made, error);
    });
    return new_picture(made);
}

void to_rows(const Picture& self, nb::handle array, const std::string& layout) {
    const Buffer rows(array, PyBUF_STRIDES | PyBUF_WRITABLE);
    const tarvo_layout to = layout == "RGB" ? TARVO_RGB24 : layout == "RGBA" ? TARVO_RGBA32 : TARVO_XRGB32;
    const Py_ssize_t channels = to == TARVO_RGB24 ? 3 : 4;
    if (rows->ndim != 3 || rows->itemsize != 1 || rows->shape[0] != tarvo_picture_height(self.get()) ||
        rows->shape[1] != tarvo_picture_width(self.get()) || rows->shape[2] != channels || rows->strides[2] != 1 ||
        rows->strides[1] != channels)
        throw nb::value_error("the array has another shape than the picture");
    run([&](tarvo_error** error) { return tarvo_picture_to_rows(self.get(), rows->buf, rows->strides[0], to, error); });
}

nb::object metadata(const Picture& self, int kind) {
    std::size_t length = 0;
    const std::uint8_t* bytes = tarvo_picture_metadata(self.get(), static_cast<tarvo_metadata>(kind), &length);
    return nb::bytes(bytes, length);
}

nb::object resolution(const Picture& self) {
    double x = 0, y = 0;
    if (!tarvo_picture_resolution(self.get(), &x, &y)) return nb::none();
    return nb::make_tuple(x, y);
}

nb::object with_metadata(const Picture& self, int kind, const nb::bytes& bytes) {
    tarvo_picture* made = nullptr;
    run([&](tarvo_error** error) {
        return tarvo_picture_with_metadata(self.get(), static_cast<tarvo_metadata>(kind), bytes.c_str(), bytes.size(),
                                           &made, error);
    });
    return new_picture(made);
}

nb::object with_resolution(const Picture& self, double x, double y) {
    tarvo_picture* made = nullptr;
    run([&](tarvo_error** error) { return tarvo_picture_with_resolution(self.get(), x, y, &made, error); });
    return new_picture(made);
}

template <class Write>
void write(std::optional<int> quality, std::uint32_t strip, Write work) {
    if (quality && (*quality < 1 || *quality > 100))
        raise_out_of_range("", "quality", "quality is " + std::to_string(*quality) + ", allowed is 1 to 100");
    tarvo_write_options options = {};
    options.size = sizeof options;
    options.jpeg_quality = quality.value_or(0);
    options.strip = strip;
    Watch watch{nb::none()};
    watch.put_into(options);
    watch.run([&](tarvo_error** error) { return work(&options, error); });
}

void save(const Picture& self, const nb::bytes& path, std::optional<int> quality, std::uint32_t strip) {
    write(quality, strip, [&](const tarvo_write_options* options, tarvo_error** error) {
        return tarvo_picture_save(self.get(), path.c_str(), options, error);
    });
}

nb::bytes encode(const Picture& self, const std::string& format, std::optional<int> quality, std::uint32_t strip) {
    std::uint8_t* bytes = nullptr;
    std::size_t length = 0;
    write(quality, strip, [&](const tarvo_write_options* options, tarvo_error** error) {
        return tarvo_picture_encode(self.get(), format.c_str(), options, &bytes, &length, error);
    });
    const std::unique_ptr<std::uint8_t, void (*)(void*)> owned(bytes, &tarvo_free);
    return nb::bytes(bytes, length);
}

}  // namespace

const std::string& Picture::sha256() const {
    const std::lock_guard<std::mutex> held(lock_);
    if (sha256_.empty()) {
        char hex[65];
        const tarvo_status status = tarvo_picture_sha256(picture_, hex);
        if (status != TARVO_OK) throw std::bad_alloc();
        sha256_ = hex;
    }
    return sha256_;
}

nb::object new_picture(tarvo_picture* owned) {
    std::unique_ptr<tarvo_picture, void (*)(tarvo_picture*)> kept(owned, &tarvo_picture_release);
    nb::object made = nb::inst_alloc(types().picture);
    new (nb::inst_ptr<Picture>(made)) Picture(kept.release());
    nb::inst_mark_ready(made);
    return made;
}

const Picture* picture_in(nb::handle value) {
    return nb::isinstance<Picture>(value) && nb::inst_ready(value) ? nb::inst_ptr<Picture>(value) : nullptr;
}

void define_picture(nb::module_& module) {
    nb::class_<Picture>(module, "Picture", nb::type_slots(kSlots), nb::is_weak_referenceable())
        .def_prop_ro(
            "width", [](const Picture& self) { return tarvo_picture_width(self.get()); }, "In pixels.")
        .def_prop_ro(
            "height", [](const Picture& self) { return tarvo_picture_height(self.get()); }, "In pixels.")
        .def_prop_ro(
            "has_mask", [](const Picture& self) { return tarvo_picture_has_mask(self.get()) != 0; },
            "Whether the picture has a mask, which files keep as alpha.")
        .def("sha256", &Picture::sha256, nb::call_guard<nb::gil_scoped_release>(),
             "SHA-256 of the size and the pixels (R, G, B and, with a mask, A), in hexadecimal digits.")
        .def("_address",
             [](const Picture& self) {
                 std::ptrdiff_t stride = 0;
                 const auto* pixels = pixels_of(self.get(), stride);
                 return nb::make_tuple(reinterpret_cast<std::uintptr_t>(pixels), stride);
             })
        .def("_part", &part)
        .def("_to_rows", &to_rows)
        .def("_metadata", &metadata)
        .def("_resolution", &resolution)
        .def("_with_metadata", &with_metadata)
        .def("_with_resolution", &with_resolution)
        .def("_save", &save, nb::arg("path"), nb::arg("quality").none(), nb::arg("strip"))
        .def("_encode", &encode, nb::arg("format"), nb::arg("quality").none(), nb::arg("strip"));
    module.def("open", &open);
    module.def("decode", &decode);
    module.def("from_rows", &from_rows);
}

}  // namespace tarvo::python
