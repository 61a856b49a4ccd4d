#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "caller.h"
#include "kept_picture.h"
#include "picture_value.h"
#include "tarvo.h"

// An instance between calls: its data, or, of a class whose instances become pictures, its picture.
struct tarvo_object {
    explicit tarvo_object(const tarvo::host::RegisteredClass& of) : cls(of) {}

    const tarvo::host::RegisteredClass& cls;
    std::vector<std::byte> data;
    std::optional<tarvo::host::PictureValue> picture;
    tarvo::library::SharedCarried carried;  // of that picture
    std::atomic<std::int64_t> references = 1;
};

namespace tarvo::library {

// Whether instances of the class hold more than data of their own, and are kept as the pictures that they convert to.
bool is_kept_as_picture(const host::Caller& caller, const host::RegisteredClass& cls);

// Makes the instance that the object is in a call, and keeps what the call has made of it.
host::ObjectRef instance_of(host::Caller& caller, const tarvo_object& object);
void keep(host::Caller& caller, const host::ObjectRef& instance, tarvo_object& object);

}  // namespace tarvo::library
