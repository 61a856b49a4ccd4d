#pragma once

// The operating system's calls, as readers and writers of files use them.

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "file_error.h"

namespace tarvo::host {

// Makes a call, and makes it again as long as signals break it off.
template <class Call>
auto retried(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

// Returns an error "WHAT: REASON", the reason being that of the last call.
inline FileError system_error(const char* what) { return FileError(std::string(what) + ": " + std::strerror(errno)); }

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() { close(); }

    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }
    // Returns false when what was written may not have arrived. It cannot be tried again: the number is free anyway.
    bool close() {
        const int number = std::exchange(number_, -1);
        return number < 0 || ::close(number) == 0;
    }

private:
    int number_ = -1;
};

}  // namespace tarvo::host
