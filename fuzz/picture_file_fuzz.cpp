// The readers of picture files. What can be read can be written and read again.

#include <span>
#include <string_view>

#include "fuzz_check.h"
#include "picture_file.h"

using namespace tarvo::host;

namespace {

constexpr std::size_t kMostPixels = std::size_t{1} << 16;

void decode(Host& host, std::span<const std::uint8_t> file, bool keep_depth) {
    const ObjectRef picture = decode_picture(host, file, {.keep_depth = keep_depth, .max_pixels = kMostPixels});
    const auto& shown = dynamic_cast<const Picture&>(*picture.get());
    const ObjectRef again = decode_picture(host, encode_picture(shown, "again.pam"), {.keep_depth = keep_depth});
    const auto& copy = dynamic_cast<const Picture&>(*again.get());
    FUZZ_CHECK(copy.width() == shown.width() && copy.height() == shown.height());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Host host;
    const Accounts before = host.accounts();
    for (const bool keep_depth : {false, true}) {
        try {
            decode(host, {data, size}, keep_depth);
        } catch (const FileError& error) {
            FUZZ_CHECK(std::string_view(error.what()).find('\n') == std::string_view::npos);
        }
    }
    FUZZ_CHECK(host.accounts() == before);
    return 0;
}
