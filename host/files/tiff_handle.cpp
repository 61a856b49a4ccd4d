#include "tiff_handle.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "format.h"

namespace tarvo::host {

namespace {

// Besides what a file of that size may need for one strip: for lists of strips, above all.
constexpr std::uint64_t kMostAtOnce = std::uint64_t{64} << 20;

struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

// True of a message that tells of memory which was refused, in one of many wordings; unless a file has claimed to have
// nothing, or more than it can.
bool lacks_memory(const char* message, std::uint64_t file_bytes) {
    long long count = 0;
    std::size_t bytes = 0;
    const char* const claim = std::strchr(message, '(');
    if (claim && std::sscanf(claim, "(%lld elements of %zu bytes each)", &count, &bytes) == 2) {
        const double claimed = static_cast<double>(count) * static_cast<double>(bytes);
        if (claimed == 0 || claimed > static_cast<double>(file_bytes + kMostAtOnce)) return false;
    }
    if (std::strstr(message, "open options")) return false;  // the bound of one claim
    constexpr const char* kWords[] = {"emory", "malloc", "No space", "Insertion in"};
    return std::ranges::any_of(kWords, [message](const char* word) { return std::strstr(message, word); });
}

}  // namespace

TiffHandle::TiffHandle(const BytePlaces& file) : file_(file) {
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    if (!options) throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), on_error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), on_warning, this);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(),
                                        static_cast<tmsize_t>(std::max(file.size() + 4096, kMostAtOnce)));
    // "m": nothing is mapped. A file that somebody cuts short while it is read would end the process.
    tiff_ = TIFFClientOpenExt("the file", "rm", this, on_read, on_write, on_seek, on_close, on_size, nullptr, nullptr,
                              options.get());
    if (tiff_ && !failure_) {
        // A directory may have errors that do not matter.
        failed_ = false;
        message_[0] = '\0';
        return;
    }
    if (tiff_) TIFFClose(tiff_);
    require(false);
}

void TiffHandle::require(bool done, int rows) const {
    if (failure_) std::rethrow_exception(failure_);
    if (done && !failed_) return;
    if (ran_out_) throw cut_short(rows);
    if (lacks_memory(message_, file_.size())) throw std::bad_alloc();
    throw FileError(message_[0] != '\0' ? std::string("damaged: ") + message_ : "damaged");
}

int TiffHandle::on_error(TIFF*, void* self, const char*, const char* format, va_list arguments) {
    auto& handle = *static_cast<TiffHandle*>(self);
    if (handle.message_[0] == '\0') {
        std::vsnprintf(handle.message_, sizeof handle.message_, format, arguments);
        handle.message_[std::strcspn(handle.message_, "\r\n")] = '\0';
    }
    handle.failed_ = true;
    return 1;
}

int TiffHandle::on_warning(TIFF* tiff, void* self, const char* module, const char* format, va_list arguments) {
    if (static_cast<TiffHandle*>(self)->in_pixels_) on_error(tiff, self, module, format, arguments);
    return 1;
}

// What the file throws waits for the end of the library's call.
tmsize_t TiffHandle::on_read(thandle_t self, void* out, tmsize_t count) {
    auto& handle = *static_cast<TiffHandle*>(self);
    if (handle.failure_) return 0;  // whoever has stopped the reading is not asked again
    const std::uint64_t size = handle.file_.size();
    const std::uint64_t there = size - std::min(size, handle.place_);
    const auto wanted = std::min<std::uint64_t>(there, static_cast<std::uint64_t>(std::max<tmsize_t>(count, 0)));
    try {
        if (!handle.file_.read_at(handle.place_, {static_cast<std::uint8_t*>(out), static_cast<std::size_t>(wanted)}))
            return 0;
    } catch (...) {
        handle.failure_ = std::current_exception();
        return 0;  // the library would count an error's -1 as a byte less, and write in front of its memory
    }
    handle.place_ += wanted;
    handle.ran_out_ = handle.ran_out_ || wanted < static_cast<std::uint64_t>(count);
    return static_cast<tmsize_t>(wanted);
}

toff_t TiffHandle::on_seek(thandle_t self, toff_t place, int from) {
    auto& handle = *static_cast<TiffHandle*>(self);
    const std::uint64_t start = from == SEEK_CUR ? handle.place_ : from == SEEK_END ? handle.file_.size() : 0;
    return handle.place_ = start + place;
}

}  // namespace tarvo::host
