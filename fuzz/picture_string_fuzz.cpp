// Any bytes as a picture string: what is read is written again and must be what it was, and nothing may stay behind.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz_check.h"
#include "host.h"
#include "picture_string.h"
#include "plugin_entry.h"

using namespace tarvo::plugin;

namespace tarvo::fuzz {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The one host of the process, the plugin linked in.
host::Host& fuzz_host() {
    static host::Host& host = []() -> host::Host& {
        static host::Host made;
        FUZZ_CHECK(made.start_plugin(REALPluginMain));
        return made;
    }();
    return host;
}

host::ObjectRef read(const host::ObjectRef& string) {
    auto* const made = TRV_ConvertToPicture(static_cast<REALstringStruct*>(string.handle()));
    return host::ObjectRef::adopt(fuzz_host().objects().find(made));
}

Bytes write(const host::ObjectRef& picture) {
    auto* const made = TRV_ConvertToString(static_cast<REALpictureStruct*>(picture.handle()));
    const host::ObjectRef string = host::ObjectRef::adopt(fuzz_host().objects().find(made));
    FUZZ_CHECK(static_cast<bool>(string));
    const std::string_view text = dynamic_cast<const host::StringObject&>(*string.get()).bytes();
    return {text.begin(), text.end()};
}

// What a string becomes on its way through a picture: any flag but 0 is 1, and 16 bits hold the upper five of each
// colour.
Bytes settled(Bytes bytes) {
    const PictureStringHeader header = PictureStringHeader::read(bytes.data());
    header.write(bytes.data());
    if (header.depth != 16) return bytes;
    const auto colors = bytes.begin() + static_cast<std::ptrdiff_t>(PictureStringHeader::kBytes);
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(header.mask_offset());
    std::transform(colors, end, colors, [](std::uint8_t level) { return static_cast<std::uint8_t>(level & 0xF8); });
    return bytes;
}

// Few strings are as long as their headers say: here is the one that is, unless it is too long to be worth a try.
Bytes fitted(Bytes bytes) {
    constexpr std::uint64_t kLongest = 1 << 16;
    if (bytes.size() < PictureStringHeader::kBytes) return {};
    const std::uint64_t length = PictureStringHeader::read(bytes.data()).length();
    bytes.resize(length <= kLongest ? static_cast<std::size_t>(length) : 0);
    return bytes;
}

void run(const Bytes& bytes) {
    host::Host& host = fuzz_host();
    const auto before = host.accounts();
    {
        const host::ObjectRef string = host.new_string({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        if (const host::ObjectRef picture = read(string)) FUZZ_CHECK(write(picture) == settled(bytes));
    }
    FUZZ_CHECK(host.accounts() == before);
    FUZZ_CHECK(host.complaints().empty());
}

}  // namespace
}  // namespace tarvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tarvo::fuzz::Bytes bytes = data ? tarvo::fuzz::Bytes(data, data + size) : tarvo::fuzz::Bytes();
    tarvo::fuzz::run(bytes);
    tarvo::fuzz::run(tarvo::fuzz::fitted(bytes));
    return 0;
}
