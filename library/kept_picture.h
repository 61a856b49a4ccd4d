#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "carried.h"
#include "failure.h"
#include "host.h"
#include "image.h"
#include "picture_value.h"
#include "tarvo.h"

namespace tarvo::library {

// Null for a picture that comes of no file.
using SharedCarried = std::shared_ptr<const host::Carried>;

}  // namespace tarvo::library

struct tarvo_picture {
    explicit tarvo_picture(tarvo::host::PictureValue of, tarvo::library::SharedCarried its = nullptr)
        : value(std::move(of)), carried(std::move(its)) {}

    const tarvo::host::PictureValue value;
    const tarvo::library::SharedCarried carried;
    std::atomic<std::int64_t> references = 1;
};

namespace tarvo::library {

// Throws Failure for a picture without pixels.
tarvo_picture* new_picture(const host::Picture& picture, SharedCarried carried);

// Returns 3 channels, or 4 with a mask.
int channels_of(const host::PictureValue& picture);
// Reads the colours of a row; `out` takes as many as the picture is wide. Alpha is 255 where there is no mask.
void read_row(const host::PictureValue& picture, int y, host::Rgba* out);

// Counts of what programs hold.
template <class Counted>
Counted* retained(Counted* counted) {
    if (counted) counted->references.fetch_add(1, std::memory_order_relaxed);
    return counted;
}
template <class Counted>
void released(Counted* counted) {
    if (counted && counted->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete counted;
}

}  // namespace tarvo::library
