#pragma once

// Text files that appear whole or not at all.

#include <string>
#include <string_view>

#include "interrupts.h"

namespace tarvo::cli {

// Writes beside the file, and gives it its name when all has arrived. Throws CommandError.
class WholeFile {
public:
    enum class Old { kept, replaced };  // a file of that name that is there already; kept: that is an error

    WholeFile(std::string path, Old old);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    void write(std::string_view text);
    void commit();

private:
    [[noreturn]] void fail(const char* what) const;

    const std::string path_;
    const Old old_;
    std::string part_;
    int folder_ = -1;
    int descriptor_ = -1;
    bool named_ = false;  // the part file has its name
    WatchedPart watch_;
};

}  // namespace tarvo::cli
