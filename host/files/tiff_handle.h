#pragma once

// One TIFF file that libtiff reads, of bytes and not by name. What the library says goes nowhere but here.

#include <tiffio.h>

#include <exception>
#include <string>

#include "byte_source.h"

namespace tarvo::host {

class TiffHandle {
public:
    // Reads the first page's directory. Throws FileError, std::bad_alloc, and what the file throws.
    explicit TiffHandle(const BytePlaces& file);
    ~TiffHandle() { TIFFClose(tiff_); }
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    TIFF* get() const { return tiff_; }
    // A tag's number, or what stands for it.
    template <class Number>
    Number field(std::uint32_t tag, Number otherwise) const {
        Number value = otherwise;
        return TIFFGetFieldDefaulted(tiff_, tag, &value) ? value : otherwise;
    }

    // From now on warnings are errors: of pixels they tell of damage.
    void begin_pixels() { in_pixels_ = true; }
    // Throws what went wrong, unless `done` and nothing was said. So many rows were read before.
    void require(bool done, int rows = 0) const;

private:
    static int on_error(TIFF*, void* self, const char* module, const char* format, va_list arguments);
    static int on_warning(TIFF*, void* self, const char* module, const char* format, va_list arguments);
    static tmsize_t on_read(thandle_t self, void* out, tmsize_t count);
    static tmsize_t on_write(thandle_t, void*, tmsize_t) { return 0; }
    static toff_t on_seek(thandle_t self, toff_t place, int from);
    static int on_close(thandle_t) { return 0; }
    static toff_t on_size(thandle_t self) { return static_cast<TiffHandle*>(self)->file_.size(); }

    const BytePlaces& file_;
    std::uint64_t place_ = 0;
    std::exception_ptr failure_;
    bool in_pixels_ = false;
    bool ran_out_ = false;
    bool failed_ = false;
    char message_[120] = "";
    TIFF* tiff_ = nullptr;
};

}  // namespace tarvo::host
