#pragma once

// tarvo.Picture's native part.

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>

#include <mutex>
#include <string>

#include "tarvo.h"

namespace tarvo::python {

namespace nb = nanobind;

class Picture {
public:
    // Takes one reference over.
    explicit Picture(tarvo_picture* owned) : picture_(owned) {}
    ~Picture() { tarvo_picture_release(picture_); }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    tarvo_picture* get() const { return picture_; }
    // Computed once.
    const std::string& sha256() const;

private:
    tarvo_picture* picture_;
    mutable std::mutex lock_;
    mutable std::string sha256_;
};

// Returns a tarvo.Picture, which takes one reference over.
nb::object new_picture(tarvo_picture* owned);
// Returns NULL for anything but pictures.
const Picture* picture_in(nb::handle value);

void define_picture(nb::module_& module);

}  // namespace tarvo::python
